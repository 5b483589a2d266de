// Defines the callbacks from lower rooms into higher ones. The only file that uses all rooms of util.

#include "util/hook/hooks.h"

#include <fokrazo/log.h>
#include <fokrazo/properties.h>
#include <fokrazo/propnames.h>
#include "util/log/log_internal.h"
#include "util/setting/host_variables.h"
#include "util/sink/sinks.h"

namespace vesk {
namespace {

__attribute__((format(printf, 5, 6))) void logDebug(const char* channel, const char* file, int line,
                                                    const char* function, const char* format, ...) {
  const auto logger = Logger::GetThreadPrivateLogger(channel);
  if (!logger) return;
  va_list args;
  va_start(args, format);
  LoggerTree::log(*logger, Logger::Debug, file, line, function, format, args);
  va_end(args);
}

ThreadPolicy threadPolicy() {
  Properties& properties = *Props(false, false);
  ThreadPolicy policy;
  policy.stackSize = properties.getInt(PN::VESKD_STACKSIZE_CLIENT_THREADS, 0);
  policy.usesPriorities = properties.getBool(PN::VESKD_USE_THREAD_PRIORITY, false);
  return policy;
}

std::string selinuxLibrary() {
  return Props(false, false)->getString(PN::LIBSELINUX_NAME);
}

}  // namespace

const Hooks kHooks = {
    logDebug,                   //
    openSinks,                  //
    closeSinks,                 //
    writeToMemory,              //
    threadPolicy,               //
    selinuxLibrary,             //
    hostVariables,              //
    Logger::ReconfigureLevels,  //
};

}  // namespace vesk
