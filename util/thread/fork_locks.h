/// The locks of the process over a fork. Internal.
///
/// A fork copies locks as they are, and with them what another thread has half changed: the child could wait
/// for ever for threads that it does not have. So every fork, by whomever, first takes all the locks that are
/// named here; the parent gives them back, and the child goes on with fresh ones.
#pragma once

#include <fokrazo/mutex.h>

namespace vesk {

/// The locks of which the process has one each, in the order in which they are taken, outermost first. Who
/// holds one of them may take those behind it.
enum class ForkOrder {
  SpawnedChildren,   // held by a fork of the library's own
  LoginRecords,      //
  PropertiesMaking,  // Properties::gPropMtx
  Properties,        // of the process's configuration
  SelinuxModule,     // taken by who saves the configuration
  SelinuxLabels,     //
  Settings,          // gMapLock
  WorkQueues,        // the registry of named queues
  Loggers,           // gNamedLoggersProtect
  LogMessages,       // gLogMessageProtect
  LogFile,           // FileLogging::mutex
  ProgramName,       // from here on what is held for a few instructions
  RandomNumbers,
  ActiveThreads,
  RunningThreads,
  Count
};

/// Has the locks taken by forks, from the first call on. It waits while another thread forks, so it comes
/// before whatever is made once, which would else stay half made in the child for ever. From any thread.
void keepLocksOverFork();
/// Names one of them, and gives it back. It must outlive the process's last fork. From any thread; the lock
/// need not be held.
Mutex& heldOverFork(ForkOrder place, Mutex& mutex);
/// The lock of that place where it belongs to nothing else, made when it is first asked for.
template <ForkOrder place>
Mutex& forkedLock() {
  keepLocksOverFork();
  static Mutex& mutex = heldOverFork(place, *new Mutex);
  return mutex;
}

}  // namespace vesk
