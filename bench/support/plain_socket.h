/// One exchange with the daemon's framing and pattern of system calls, written by hand: a length of 4 bytes
/// and the message in two sends, a poll in front of every receive, descriptors that do not block. Failures
/// end the process.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace bench {

/// Ends the process with the system's text for errno.
[[noreturn]] void die(const char* what);
/// Keeps the process on one processor; -1 gives it all of them.
void pinTo(int cpu);

/// A descriptor connected to that path, non-blocking.
int connectTo(const std::string& path);
void sendFrame(int fd, const char* message, size_t size);
/// False at the end of the stream. `bytes` is grown to hold the message; `size` is its length.
bool receiveFrame(int fd, std::vector<char>& bytes, size_t& size);
/// The same in two steps. Ends the process at the end of the stream.
size_t receiveLength(int fd);
void receiveBytes(int fd, char* bytes, size_t size);

/// What a session asks before each request: is it still this process, and still that descriptor?
void checkConnection(int fd);

}  // namespace bench
