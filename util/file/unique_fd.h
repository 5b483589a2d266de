/// Owner of one file descriptor. Internal.
#pragma once

#include <cerrno>
#include <utility>

namespace vesk {

/// Closes its descriptor when destroyed, without changing errno. Belongs to one thread.
class UniqueFd {
 public:
  UniqueFd() = default;
  /// Takes over `fd`; -1 is none.
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
  /// Returns the descriptor, which the caller then owns.
  int release() { return std::exchange(m_fd, -1); }
  /// As the system's call, but not a cancellation point, because destructors call it. 0 if there is no
  /// descriptor.
  int close();

 private:
  int m_fd = -1;
};

}  // namespace vesk
