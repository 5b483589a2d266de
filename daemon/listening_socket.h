/// The socket that clients connect to.
#pragma once

#include <sys/stat.h>

#include <string>

#include "daemon/descriptor.h"

namespace brondalt {

/// A listening unix-domain socket and its file, to which every user may connect (mode 0666).
/// The file appears under its name only when it listens and has its mode: it is created as NAME.new and then
/// renamed, also by replace().
class ListeningSocket {
 public:
  /// The longest path, which leaves room for the suffix of a new file.
  static const size_t kLongestPath;

  /// Replaces a socket file without a listener, but nothing else. @throws Error the path is empty or too long
  /// or in use, or a system call fails
  explicit ListeningSocket(std::string path);
  /// Removes the file, unless another one has replaced it.
  ~ListeningSocket();
  ListeningSocket(const ListeningSocket&) = delete;
  ListeningSocket& operator=(const ListeningSocket&) = delete;

  /// Non-blocking; changes with replace().
  int fd() const { return m_fd.get(); }

  /// Replaces the socket, as a restarted daemon would; there is a listener at any moment. Returns the old
  /// descriptor; closing it disconnects the clients that wait to be accepted.
  /// @throws Error nothing has changed
  Descriptor replace();
  /// Stops listening and removes the file.
  void close();

 private:
  std::string m_path;
  Descriptor m_fd;
  struct stat m_file = {};  // of the file when it was created
};

}  // namespace brondalt
