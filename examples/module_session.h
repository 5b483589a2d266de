/// What the two modules share: a session that distinguishes "not found" from every other failure, and a frame
/// for a module's task that turns every exception into an answer.
#pragma once

#include <fokrazo.h>

#include <pthread.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <string>

namespace example {

/// The one socket that modules use. They run inside logins, so they accept a path from nowhere else.
constexpr char kSocket[] = "/var/velmora/daemon";

/// Ends a task with an answer that is not success.
struct Failure {
  vesk::Answer answer;
};

[[noreturn]] inline void fail(vesk::ValidationResult result) {
  throw Failure{vesk::answerOf(result)};
}

inline void succeedOrFail(vesk::ValidationResult result) {
  if (result != vesk::VR_SUCCESS) fail(result);
}

/// A session of the modules, which talks only to a daemon of root.
/// Thread-safety and fork: as LocalRpcSession.
class ModuleSession {
 public:
  ModuleSession() { m_session.setTrustedPeer(0); }

  /// Runs `task` with the connected session and returns what it returns.
  /// @throws Failure this very process is the daemon
  /// @throws what the session throws
  template <class Task>
  auto with(Task task) {
    m_session.reConnect(false);
    refuseOwnProcess();
    return task(m_session);
  }

  /// Looks up one object. LocalRpcSession's own lookups report some failures of the daemon as "not found",
  /// and a file's owner or a login must not depend on that. So this sends the request itself and examines the
  /// result. `flags` are those of LocalRpcSession's lookups.
  /// @throws Failure there is no such object, or the daemon cannot say
  template <class Key>
  vesk::ADObject find(vesk::DSObjectType type, vesk::KeyKind kind, const Key& key, int flags) {
    Lookup request(vesk::IPC_OP_GET_OBJECT, type, kind, key, flags);
    vesk::IPCReply reply;
    succeedOrFail(ask(request, reply, &vesk::LocalRpcSession::executeWithRetry));
    return objectOf(reply);
  }

  /// Start a listing and advance it. If the connection is lost, the listing ends.
  /// @throws Failure refused; at the end, "not found"
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

  /// Whether the daemon is never asked for a name. NEXT_ENTRY has a meaning of its own in a lookup. "root" is
  /// the host's: programs ask all sources of groups when root logs in, and that must not wait for the daemon.
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

  /// Makes one exchange and returns the result in its reply.
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

  /// The daemon's own lookups of names come back to it through a module: it would wait for itself.
  void refuseOwnProcess() {
    ucred peer = {};
    socklen_t size = sizeof peer;
    if (getsockopt(m_session.socket(), SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0 || peer.pid == getpid())
      fail(vesk::VR_DAEMON_NOT_RUNNING);
  }

  vesk::LocalRpcSession m_session{kSocket, false, false};
};

/// Marks the thread as inside a module, where it cannot be cancelled: a cancellation is an exception that
/// must not be caught, and would pass through functions of C.
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

  /// Whether this is the thread's only mark. If not, something that the library called has called a module.
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

/// Runs a module's task. Throws nothing and keeps errno.
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
