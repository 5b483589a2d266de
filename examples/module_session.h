/// Shared by the two modules: a session that distinguishes "not found" from every other failure, and a
/// wrapper that turns a task's exceptions into answers.
#pragma once

#include <fokrazo.h>

#include <pthread.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <string>

namespace example {

/// The daemon's socket. Fixed, because modules run inside logins.
constexpr char kSocket[] = "/var/velmora/daemon";

/// Thrown to end a task with an answer other than success.
struct Failure {
  vesk::Answer answer;
};

[[noreturn]] inline void fail(vesk::ValidationResult result) {
  throw Failure{vesk::answerOf(result)};
}

inline void succeedOrFail(vesk::ValidationResult result) {
  if (result != vesk::VR_SUCCESS) fail(result);
}

/// A module's session. Accepts only a daemon that runs as root. Thread-safety and fork: as LocalRpcSession.
class ModuleSession {
 public:
  ModuleSession() { m_session.setTrustedPeer(0); }

  /// Runs `task` with the connected session and returns its result.
  /// @throws Failure this process is the daemon
  /// @throws what the session throws
  template <class Task>
  auto with(Task task) {
    m_session.reConnect(false);
    refuseOwnProcess();
    return task(m_session);
  }

  /// Looks up one object. LocalRpcSession's lookups report some failures of the daemon as "not found", which
  /// could change a file's owner or refuse a login. So this sends the request itself and examines the result.
  /// `flags` are those of LocalRpcSession's lookups.
  /// @throws Failure there is no such object, or the lookup failed
  template <class Key>
  vesk::ADObject find(vesk::DSObjectType type, vesk::KeyKind kind, const Key& key, int flags) {
    Lookup request(vesk::IPC_OP_GET_OBJECT, type, kind, key, flags);
    vesk::IPCReply reply;
    succeedOrFail(ask(request, reply, &vesk::LocalRpcSession::executeWithRetry));
    return objectOf(reply);
  }

  /// Start a listing and advance it. If the connection is lost, the listing ends.
  /// @throws Failure the daemon refuses, or "not found" at the end
  void startListing(vesk::DSObjectType type) {
    vesk::IPCRequest request(vesk::IPC_OP_START_LIST);
    for (const int field : {static_cast<int>(type), 0, 0}) request += field;
    vesk::IPCReply reply;
    succeedOrFail(ask(request, reply, &vesk::LocalRpcSession::executeWithRetry));
  }

  vesk::ADObject next(vesk::DSObjectType type) {
    Lookup request(vesk::IPC_OP_GET_OBJECT2, type, vesk::KeyName, std::string(vesk::NEXT_ENTRY),
                   vesk::UNIX_ONLY);
    vesk::IPCReply reply;
    // Sent twice, it would skip an entry.
    const vesk::ValidationResult result = ask(request, reply, &vesk::LocalRpcSession::execute);
    const bool isEnd = result != vesk::VR_SUCCESS && m_session.statusCode() == vesk::END_OF_LIST;
    succeedOrFail(isEnd ? vesk::VR_NO_MORE : result);
    return objectOf(reply);
  }

  /// Whether the daemon is never asked for a name. NEXT_ENTRY is special in a lookup. "root" belongs to the
  /// host: when root logs in, programs ask all sources for groups, and that must not wait for the daemon.
  static bool isReserved(const std::string& name) { return name == vesk::NEXT_ENTRY || name == "root"; }

 private:
  struct Lookup : vesk::IPCRequest {
    template <class Key>
    Lookup(vesk::IPC_OPCODE opcode, vesk::DSObjectType type, vesk::KeyKind kind, const Key& key, int flags)
        : IPCRequest(opcode) {
      *this += type;
      *this += flags & vesk::UNIX_ONLY ? vesk::UnixObjects : vesk::AllObjects;
      *this += kind;
      *this += (flags & vesk::CHECK_AD_FIRST) != 0;
      *this += (flags & vesk::GROUP_MEMBERSHIP) != 0;
      *this += key;
    }
  };

  using Carrier = void (vesk::LocalRpcSession::*)(vesk::IPCRequest&, vesk::IPCReply&, bool);

  /// Makes one exchange and returns the result from the reply.
  vesk::ValidationResult ask(vesk::IPCRequest& request, vesk::IPCReply& reply, Carrier carry) {
    return with([&](vesk::LocalRpcSession& session) {
      (session.*carry)(request, reply, false);
      return session.updateVRErrInfo(reply);
    });
  }

  static vesk::ADObject objectOf(vesk::IPCReply& reply) {
    vesk::ADObject object = reply.getADObject();
    if (object.isEmpty()) fail(vesk::VR_NOT_FOUND);
    return object;
  }

  /// If the daemon looks up a name, the module would make it wait for itself.
  void refuseOwnProcess() {
    ucred peer = {};
    socklen_t size = sizeof peer;
    if (getsockopt(m_session.socket(), SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0 || peer.pid == getpid())
      fail(vesk::VR_DAEMON_NOT_RUNNING);
  }

  vesk::LocalRpcSession m_session{kSocket, false, false};
};

/// Marks the thread as inside a module and disables its cancellation: a cancellation is an exception that
/// must not be caught, and it would unwind through C functions.
class Inside {
 public:
  Inside() {
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &m_cancelState);
    ++depth();
  }
  ~Inside() {
    --depth();
    pthread_setcancelstate(m_cancelState, nullptr);
  }
  Inside(const Inside&) = delete;
  Inside& operator=(const Inside&) = delete;

  /// False if the library, inside a module, has indirectly called a module again.
  bool isFirst() const { return depth() == 1; }

 private:
  static int& depth() {
    thread_local int depth = 0;
    return depth;
  }

  int m_cancelState;
};

/// The answer to the exception being handled.
inline vesk::Answer currentAnswer() noexcept {
  try {
    throw;
  } catch (const Failure& failure) {
    return failure.answer;
  } catch (...) {
    return vesk::answerOfCurrentException();
  }
}

/// Runs a module's task. Does not throw; preserves errno.
template <class Task>
vesk::Answer answer(Task task) noexcept {
  const Inside inside;
  if (!inside.isFirst()) return vesk::answerOf(vesk::VR_DAEMON_NOT_RUNNING);
  const int error = errno;
  vesk::Answer result = vesk::answerOf(vesk::VR_SUCCESS);
  try {
    task();
  } catch (...) {
    result = currentAnswer();
  }
  errno = error;
  return result;
}

}  // namespace example
