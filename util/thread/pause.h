/// The library's own short pauses between two attempts. Internal: tests put a function of theirs in the place
/// of the sleep, so that no test waits and each can act while the library "sleeps".
#pragma once

#include <atomic>

namespace vesk {
namespace pause {

/// Called instead of sleeping; null but in tests.
extern std::atomic<void (*)(long milliseconds)> replacement;

/// Thread::sleep: a cancellation point at both ends. A signal may cut it short.
void forMilliseconds(long milliseconds);

}  // namespace pause
}  // namespace vesk
