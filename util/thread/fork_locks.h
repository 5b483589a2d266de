/// The library's locks across a fork. Internal.
///
/// A fork copies every lock as it is at that moment, together with what another thread has half changed under
/// it, but not that thread. So each fork of the process, the program's own included, first takes all the
/// locks named here. The parent releases them afterwards; the child gets fresh ones.
///
/// A fork waits only a short time: a lock may be held over slow work, such as a write to a stalled log. For a
/// lock that it did not get in time, the child abandons what the lock guards instead of touching it: see
/// inForkedChild.
#pragma once

#include <fokrazo/mutex.h>

namespace vesk {

/// The locks that exist once per process, in the order in which they are taken, outermost first. A thread
/// that holds one of them may take those further down.
enum class ForkOrder {
  SpawnedChildren,   // held while the library itself forks
  LoginRecords,      //
  PropertiesMaking,  // Properties::gPropMtx
  Properties,        // Properties::mutex of the process's configuration
  SelinuxModule,     // taken while the configuration is saved
  SelinuxLabels,     //
  Settings,          // SettingStore::gMapLock
  WorkQueues,        // the registry of named queues
  Loggers,           // gNamedLoggersProtect
  LogMessages,       // gLogMessageProtect
  LogFile,           // FileLogging::mutex of the process's log file
  Syslog,            // the C library's connection to syslog
  ProgramName,       // this one and the rest are held for a few instructions only
  RandomNumbers,
  ActiveThreads,
  RunningThreads,
  Count
};

/// The lock at that place, if it is not part of another object. Any thread, at any time.
Mutex& forkedLock(ForkOrder place);
/// Assigns the place to a lock that is part of another object, and returns it. Called each time before the
/// lock is taken, so that there is no moment at which a fork could overlook it. The lock must outlive the
/// process's last fork.
Mutex& heldOverFork(ForkOrder place, Mutex& mutex);

/// What a child does about the state under one lock. `intact` is false if the fork did not get the lock: then
/// the state may be half changed, and the function replaces it without reading it.
using ForkedChild = void (*)(bool intact);
/// Registers `function` to be called in each child, once all locks are fresh; one function for each place. It
/// must not wait for anything.
void inForkedChild(ForkOrder place, ForkedChild function);

/// Whether this process, or an ancestor since the last exec, was made by a fork while there were other
/// threads. Then a lock of the C library that no fork resets may be held for ever: that of syslog, and that
/// of the time zone.
bool isChildOfThreads();

}  // namespace vesk
