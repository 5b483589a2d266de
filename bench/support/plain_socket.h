/// One exchange with the library's framing and pattern of system calls, written by hand: a 4-byte length and
/// the message in two sends, a poll before every receive, non-blocking descriptors. Failures end the process.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace bench {

/// Ends the process with the system's text for errno.
[[noreturn]] void die(const char* what);
/// Pins the process to one processor; -1 means all.
void pinTo(int cpu);

/// Returns a non-blocking descriptor that is connected to `path`.
int connectTo(const std::string& path);
void sendFrame(int fd, const char* message, size_t size);
/// Returns false at the end of the stream. Grows `bytes` to hold the message; `size` becomes its length.
bool receiveFrame(int fd, std::vector<char>& bytes, size_t& size);
/// The same in two steps. Ends the process at the end of the stream.
size_t receiveLength(int fd);
void receiveBytes(int fd, char* bytes, size_t size);

/// A session's checks before each request: same process, same descriptor, nothing to read.
void checkConnection(int fd);

}  // namespace bench
