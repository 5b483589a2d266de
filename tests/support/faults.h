/// Failures of the system on demand, for programs that are linked with test_faults: there the library's own
/// calls come by here.
#pragma once

#include <atomic>
#include <string>

namespace testsupport {

/// Kinds of calls, each counted by itself.
enum class Call {
  Allocate,  ///< operator new, malloc and calloc, and what liblber is asked for
  Open,      ///< whatever makes a descriptor
  Close,
  Read,
  Write,
  Inspect,  ///< stat and its like, lists of names
  Change,   ///< whatever changes names, modes and sizes; locks, fsync
  Wait,     ///< poll, waitpid
  Count
};

/// While it lives, the nth call of one kind fails by its thread, or with `lasting` that one and all behind
/// it. The error is as in errno; with kShort a transfer moves one byte alone, and nothing else fails. A
/// failed close has closed. One at a time in a thread.
class Fault {
 public:
  static constexpr int kShort = -1;

  Fault(Call call, unsigned nth, int error, bool lasting = false);
  ~Fault();
  Fault(const Fault&) = delete;
  Fault& operator=(const Fault&) = delete;

  /// Whether there were that many calls while the thread's latest one lived.
  static bool struck();
};

/// While it lives, a timer of the system's interrupts the process some ten thousand times a second, by a
/// signal that restarts no call.
class Interruptions {
 public:
  Interruptions();
  ~Interruptions();
  Interruptions(const Interruptions&) = delete;
  Interruptions& operator=(const Interruptions&) = delete;

  /// How many have come so far.
  static unsigned long count();
};

/// The name of a kind, for the traces of a test.
std::string nameOf(Call call);

}  // namespace testsupport
