/// What the tree of loggers asks of the sinks; see Hooks. Internal.
#pragma once

#include <cstdarg>

namespace vesk {

void openSinks();
void closeSinks();
void writeToMemory(const char* format, va_list args) __attribute__((format(printf, 1, 0)));

}  // namespace vesk
