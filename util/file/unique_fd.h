/// Owner of one file descriptor. Internal.
#pragma once

#include <cerrno>
#include <utility>

namespace vesk {

/// Closes its descriptor when destroyed, without changing errno. Belongs to one thread.
class UniqueFd {
 public:
  UniqueFd() = default;
  /// Takes ownership of `fd`; -1 means none.
  explicit UniqueFd(int fd) : m_fd(fd) {}
  UniqueFd(UniqueFd&& other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}
  UniqueFd& operator=(UniqueFd&& other) noexcept {
    std::swap(m_fd, other.m_fd);
    return *this;
  }
  ~UniqueFd() {
    const int error = errno;
    close();
    errno = error;
  }

  explicit operator bool() const { return m_fd >= 0; }
  int get() const { return m_fd; }
  /// Passes ownership of the descriptor to the caller.
  int release() { return std::exchange(m_fd, -1); }
  /// As close(2), but not a cancellation point, because destructors call it. Returns 0 without a descriptor.
  int close();

 private:
  int m_fd = -1;
};

/// The same file under a number above 2: a program that has closed its standard streams must not write its
/// output there. Close-on-exec. Empty, with errno, if there is no descriptor left.
UniqueFd aboveStandardStreams(UniqueFd fd);

}  // namespace vesk
