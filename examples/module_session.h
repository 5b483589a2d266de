/// What the two modules of these folders have in common: a session that tells "not found" from every other
/// failure, and the frame in which a module's task runs so that nothing comes out of it but an answer.
#pragma once

#include <fokrazo.h>

#include <fcntl.h>
#include <pthread.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <string>

namespace example {

/// The one socket that modules speak to. They run inside logins, so they take no path from anywhere else.
constexpr char kSocket[] = "/var/velmora/daemon";

/// Thrown where a task has its answer and it is not success.
struct Failure {
  vesk::Answer answer;
};

[[noreturn]] inline void fail(vesk::ValidationResult result) {
  throw Failure{vesk::answerOf(result)};
}

inline void succeedOrFail(vesk::ValidationResult result) {
  if (result != vesk::VR_SUCCESS) fail(result);
}

/// A session of the modules.
/// Thread-safety and fork: as LocalRpcSession.
class ModuleSession {
 public:
  /// Runs `task` with the connected session and returns what it returns, unless the peer was or has become
  /// somebody who is not to be believed.
  /// @throws Failure, and what the session throws
  template <class Task>
  auto with(Task task) {
    m_session.reConnect(false);
    checkPeer();
    auto result = task(m_session);
    checkPeer();  // the session may have made a new connection
    return result;
  }

  /// Looks up one object. LocalRpcSession's own lookups report some failures of the daemon as "not found",
  /// and a file's owner or a login must not depend on that: so this sends their request itself and has a look
  /// at the result. `flags` are those of LocalRpcSession's lookups.
  /// @throws Failure there is no such object, or the daemon cannot say
  template <class Key>
  vesk::ADObject find(vesk::DSObjectType type, vesk::KeyKind kind, const Key& key, int flags) {
    Lookup request(vesk::IPC_OP_GET_OBJECT, type, kind, key, flags);
    vesk::IPCReply reply;
    succeedOrFail(ask(request, reply, &vesk::LocalRpcSession::executeWithRetry));
    return objectOf(reply);
  }

  /// Start a listing and advance it. A connection that is lost meanwhile ends it.
  /// @throws Failure refused; at its end, "not found"
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
    // Sent twice it would lose an entry.
    const vesk::ValidationResult result = ask(request, reply, &vesk::LocalRpcSession::execute);
    const bool isEnd = result != vesk::VR_SUCCESS && m_session.statusCode() == vesk::END_OF_LIST;
    succeedOrFail(isEnd ? vesk::VR_NO_MORE : result);
    return objectOf(reply);
  }

  /// Whether the daemon is never asked for a name. One has a meaning of its own in a lookup. The other is the
  /// host's, of which programs ask all sources of groups when root logs in: that must not wait for the
  /// daemon.
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

  /// One exchange, and the result that its reply begins with.
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

  /// Believes root alone, and never waits for this very process, which is the daemon then. Keeps the
  /// connection from programs that this one starts.
  void checkPeer() {
    ucred peer = {};
    socklen_t size = sizeof peer;
    if (getsockopt(m_session.socket(), SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0 || peer.pid == getpid())
      fail(vesk::VR_DAEMON_NOT_RUNNING);
    if (peer.uid != 0) fail(vesk::VR_PROCESS_AUTH_FAILED);
    fcntl(m_session.socket(), F_SETFD, FD_CLOEXEC);
  }

  vesk::LocalRpcSession m_session{kSocket, false, false};
};

/// While this is there, the thread is inside a module and cannot be cancelled: a cancellation is an exception
/// that must not be caught, and would pass through functions of C.
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

  /// Whether this is the thread's only one. Otherwise something that the library called has come back here.
  bool isFirst() const { return depth() == 1; }

 private:
  static int& depth() {
    thread_local int depth = 0;
    return depth;
  }

  int m_cancelState;
};

/// The answer to what a `catch (...)` has caught.
inline vesk::Answer currentAnswer() noexcept {
  try {
    throw;
  } catch (const Failure& failure) {
    return failure.answer;
  } catch (...) {
    return vesk::answerOfCurrentException();
  }
}

/// Runs a module's task. Nothing is thrown, and errno is what it was.
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
