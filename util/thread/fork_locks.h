/// The library's locks across forks. Internal.
///
/// A fork copies locks and half-changed data of other threads, but not those threads. So each fork of the
/// process, including the program's own, first takes all the locks listed here. The parent releases them
/// afterwards; the child gets new ones.
///
/// A fork waits only briefly, because a lock may be held during slow work, such as a write to a stalled log.
/// If the fork did not get a lock in time, the child abandons the data that the lock guards: see
/// inForkedChild.
#pragma once

#include <fokrazo/mutex.h>

namespace vesk {

/// The process-wide locks, in locking order, outermost first. A thread that holds one of them may take those
/// further down.
enum class ForkOrder {
  SpawnedChildren,   // held while the library forks
  LoginRecords,      //
  PropertiesMaking,  // Properties::gPropMtx
  Properties,        // Properties::mutex of the process's configuration
  SelinuxModule,     // taken while the configuration is saved
  SelinuxLabels,     //
  Settings,          // settingsMutex
  WorkQueues,        // the registry of named queues
  Loggers,           // gNamedLoggersProtect
  LogMessages,       // gLogMessageProtect
  LogFile,           // FileLogging::mutex of the process's log file
  Syslog,            // the C library's connection to syslog
  ProgramName,       // this and the rest are held only for a few instructions
  Clients,           // the sessions and the caches of all clients
  RandomNumbers,
  Count
};

/// The lock at that place, if it is not part of another object. Thread-safe.
Mutex& forkedLock(ForkOrder place);
/// Assigns the place to a lock that is part of another object, and returns it. Call it each time before
/// taking the lock, so that no fork can miss it. The lock must outlive the process's last fork.
Mutex& heldOverFork(ForkOrder place, Mutex& mutex);

/// Repairs the state under one lock in the child. If `intact` is false, the fork did not get the lock: the
/// state may be half changed and must be replaced without reading it.
using ForkedChild = void (*)(bool intact);
/// Registers the function to call in each child after the locks are renewed; one per place. It must not
/// block.
void inForkedChild(ForkOrder place, ForkedChild function);

/// Whether this process, or an ancestor since the last exec, was forked from a process with other threads.
/// Then the C library's locks for syslog and the time zone, which no fork resets, may be held forever.
bool isChildOfThreads();

}  // namespace vesk
