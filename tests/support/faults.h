/// System failures on demand, for programs linked with test_faults: there the library's own calls pass
/// through here.
#pragma once

#include "tests/support/prelude.h"

namespace testsupport {

/// Kinds of calls, each counted separately.
enum class Call {
  Allocate,  ///< operator new, malloc and calloc, and liblber's allocations
  Open,      ///< every call that makes a descriptor
  Close,
  Read,
  Write,
  Inspect,  ///< stat and its relatives, directory listings
  Change,   ///< changes of names, modes and sizes; locks, fsync
  Wait,     ///< poll, waitpid
  Count
};

/// During its lifetime the nth call of one kind by its thread fails, with `lasting` also all later ones.
/// `error` is the errno; with kShort a transfer moves a single byte instead, and nothing else fails. A failed
/// close still closes. One object at a time per thread.
class Fault {
 public:
  static constexpr int kShort = -1;

  Fault(Call call, unsigned nth, int error, bool lasting = false);
  ~Fault();
  Fault(const Fault&) = delete;
  Fault& operator=(const Fault&) = delete;

  /// Whether the thread's latest fault was reached.
  static bool struck();
};

/// During its lifetime a timer interrupts the process some ten thousand times a second, with a signal that
/// restarts no call.
class Interruptions {
 public:
  Interruptions();
  ~Interruptions();
  Interruptions(const Interruptions&) = delete;
  Interruptions& operator=(const Interruptions&) = delete;

  /// How many interruptions there have been so far.
  static unsigned long count();
};

/// The name of a kind, for a test's traces.
std::string nameOf(Call call);

}  // namespace testsupport
