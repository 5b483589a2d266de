/// Ownership of one file descriptor.
#pragma once

#include <unistd.h>

#include <string>
#include <utility>

#include "daemon/error.h"

namespace brondalt {

/// Closes its descriptor when destroyed. Move-only.
class Descriptor {
 public:
  Descriptor() = default;
  /// Takes ownership of `fd`; -1 means none.
  explicit Descriptor(int fd) : m_fd(fd) {}
  /// As above, for the result of a system call. @throws Error "what: text of errno" if `fd` is negative
  Descriptor(int fd, const std::string& what) : m_fd(fd) {
    if (fd < 0) throwSystemError(what);
  }
  Descriptor(Descriptor&& other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(m_fd, other.m_fd);
    return *this;
  }
  ~Descriptor() {
    if (m_fd >= 0) close(m_fd);
  }

  int get() const { return m_fd; }
  explicit operator bool() const { return m_fd >= 0; }

 private:
  int m_fd = -1;
};

}  // namespace brondalt
