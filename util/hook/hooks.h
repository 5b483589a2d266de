/// Callbacks from lower rooms into higher ones. Internal.
///
/// Includes only point down. But a mutex that cannot be locked throws, a throw is logged, and the log takes
/// locks. To break such cycles the lower room calls through this table, a constant in util/wiring/wiring.cpp
/// that is complete before any code runs.
#pragma once

#include <cstdarg>
#include <map>
#include <string>

namespace vesk {

class Properties;

/// The policy for new threads.
struct ThreadPolicy {
  int stackSize = 0;            // bytes; 0 or less: the system's default
  bool usesPriorities = false;  // whether threads may have real-time priorities
};

struct Hooks {
  // The log, for rooms below it.
  /// Logs a message (printf) at DEBUG on `channel`; `file`, `line` and `function` are the source position.
  void (*logDebug)(const char* channel, const char* file, int line, const char* function, const char* format,
                   ...) __attribute__((format(printf, 5, 6)));

  // The sinks, for the log.
  /// Called once, when the tree of loggers is created, with the tree's lock held.
  void (*openSinks)();
  /// Called when logging ends for good, with the tree's lock held.
  void (*closeSinks)();
  /// Offers a message to the memory log. Does not consume `args`.
  void (*writeToMemory)(const char* format, va_list args);

  // The configuration, for rooms below it.
  /// The configured policy for new threads.
  ThreadPolicy (*threadPolicy)();
  /// The configured file name of libselinux; empty if not configured.
  std::string (*selinuxLibrary)();

  // For the configuration.
  /// The values of the `$` variables that the host's settings define, by name.
  std::map<std::string, std::string> (*hostVariables)();
  /// Called after each load: applies the configuration to the log.
  void (*configurationLoaded)(Properties& properties);
};

extern const Hooks kHooks;

}  // namespace vesk

/// Logs at DEBUG from a room below the log.
#define FOKRAZO_HOOK_DEBUG(channel, ...) \
  ::vesk::kHooks.logDebug(channel, __FILE__, __LINE__, __func__, __VA_ARGS__)
