/// How a client and its calls behave.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>

#include <fokrazo/cancellation.h>
#include <fokrazo/fixed_paths.h>

namespace vesk {

/// Which answers a client keeps. By default none. They serve the whole process, also after it has changed its
/// user.
struct CacheOptions {
  /// The maximum number of answers; 0 turns the cache off.
  size_t entries = 0;
  /// The maximum size of all kept objects, in bytes.
  size_t bytes = 8 << 20;
  /// How long an object, and the answer that there is none, is kept.
  std::chrono::milliseconds found{60'000};
  std::chrono::milliseconds notFound{10'000};
};

/// For a client. Nothing is taken from the environment.
struct ClientOptions {
  /// The daemon's socket.
  std::string socketPath = paths::kDaemonSocket;
  /// The deadline of calls that set none: see CallOptions.
  std::chrono::milliseconds deadline{10'000};
  /// The maximum number of connections, 1 to 64.
  unsigned int sessions = 8;
  /// A connection that was not used for this time is closed by a later call, or by Client::closeIdle.
  std::chrono::milliseconds idle{10'000};
  /// The user that the daemon must run as; empty accepts any.
  std::optional<uid_t> trustedPeer = 0;
  /// Refuse a daemon that runs in this very process. For modules, which the daemon may load too.
  bool refuseOwnProcess = false;
  /// Have the daemon check this process on each connection: see LocalRpcSession::authenticateProcess.
  bool authenticateProcess = false;
  CacheOptions cache;
};

/// For one call.
struct CallOptions {
  /// The maximum duration of the whole call: waiting for a free connection, connecting, every piece of the
  /// request and the reply, and a second attempt. Signals do not extend it. When it is over, nothing is sent.
  /// Empty: the client's.
  std::optional<std::chrono::milliseconds> deadline;
  /// Lets another thread end the call; must outlive it. May be null.
  const Cancellation* cancellation = nullptr;
  /// Try even if the daemon failed a moment ago.
  bool evenIfAway = false;
  /// Called by lookups of many objects after each one, in the caller's thread. Must not throw.
  std::function<void(size_t done, size_t all)> progress;
};

}  // namespace vesk
