/// Short pauses between two attempts. Internal: tests replace the sleep by a function of their own, so that
/// no test waits, and can act while the library "sleeps".
#pragma once

#include <atomic>

namespace vesk {
namespace pause {

/// Called instead of sleeping; null except in tests.
extern std::atomic<void (*)(long milliseconds)> replacement;

/// Thread::sleep: a cancellation point at both ends. A signal may cut it short.
void forMilliseconds(long milliseconds);

}  // namespace pause
}  // namespace vesk
