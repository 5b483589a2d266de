/// Reading what a child process writes, within a time.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

namespace cli {

/// As pipe2 with O_CLOEXEC, but leaves the standard streams alone. False with errno if there is no pipe.
bool openPipe(int ends[2]);
/// Reads into `text`, which is empty, until the other end is closed or the time is over, and keeps the first
/// `size` bytes. Returns whether it was closed.
bool readWithin(int fd, std::chrono::steady_clock::time_point end, std::string& text, size_t size);
/// Waits for a child to end, and kills it when the time is over. Returns its wait status, empty if it was
/// killed.
std::optional<int> reap(pid_t child, std::chrono::steady_clock::time_point end);

}  // namespace cli
