/// The process's memory log, for the other sinks. Internal.
#pragma once

#include <string>

#include <boost/shared_ptr.hpp>

#include <fokrazo/circular_buffer.h>
#include <fokrazo/log.h>
#include "util/log/log_internal.h"

namespace vesk {

/// The process's memory log; empty before the tree of loggers is made and after Logger::close.
boost::shared_ptr<CircularBuffer>& gCircularBuffer() FOKRAZO_REQUIRES(gLogMessageProtect());

/// The memory log's level in a configuration. An illegal one counts as INFO, with a warning to `logger`.
int memoryLevel(const std::string& text, const boost::shared_ptr<Logger>& logger);

/// For the child of a fork, see inForkedChild: if another thread was writing an entry, it is incomplete, so
/// the ring is emptied.
void memoryLogInChild(bool intact);

}  // namespace vesk
