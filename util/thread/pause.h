/// Short pauses between attempts. Internal. Tests replace the sleep with a function, to act while the library
/// "sleeps".
#pragma once

#include <atomic>

namespace vesk {
namespace pause {

/// Called instead of sleeping; null except in tests.
extern std::atomic<void (*)(long milliseconds)> replacement;

/// Thread::sleep, with cancellation points at both ends. A signal may interrupt it.
void forMilliseconds(long milliseconds);

}  // namespace pause
}  // namespace vesk
