#include <fokrazo/file_util.h>

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "util/error/throw.h"
#include "util/file/open_file.h"

namespace vesk {

namespace {

constexpr char kSource[] = "lrpc/session";  // the name in logs, kept for compatibility

void require(bool worked, long result) {
  if (!worked) FOKRAZO_THROW_CALL_FAILED(static_cast<int>(result), errno);
}

}  // namespace

std::string readFile(std::string path) {
  struct stat status;
  const int rc = stat(path.c_str(), &status);
  require(rc == 0, rc);
  std::string bytes(static_cast<size_t>(status.st_size), '\0');
  const UniqueFd file = openFile(path);
  require(static_cast<bool>(file), file.get());
  errno = 0;  // a short read is not a system error
  const ssize_t count = read(file.get(), bytes.data(), bytes.size());
  require(count == status.st_size, count);
  return bytes;
}

}  // namespace vesk
