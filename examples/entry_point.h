/// What surrounds the tasks of both modules. Their callers are C programs: nothing may be thrown at them.
#pragma once

#include <fokrazo.h>

#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <memory>

namespace example {

/// The host's own user, about whom the daemon is never asked: when root logs in, programs ask all sources,
/// and that must not wait for the daemon.
constexpr char kRoot[] = "root";

/// The module's client, created with `options()` by the first task and never destroyed: handlers of atexit
/// and destructors of thread keys ask, too. Not a plain static: its guard, held by another thread of the
/// parent, would let a forked child wait for ever.
template <class Options>
vesk::Client& clientOf(Options options) {
  static std::atomic<vesk::Client*> client{nullptr};
  if (vesk::Client* const made = client.load(std::memory_order_acquire)) return *made;
  auto own = std::make_unique<vesk::Client>(options());
  vesk::Client* first = nullptr;
  return *(client.compare_exchange_strong(first, own.get()) ? own.release() : first);
}

/// Thrown to end a task with an answer other than success.
struct Failure {
  vesk::Answer answer;
};

[[noreturn]] inline void fail(vesk::ValidationResult result) {
  throw Failure{vesk::answerOf(result)};
}

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
  } catch (const vesk::CallException& error) {
    return error.status().answer();
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
