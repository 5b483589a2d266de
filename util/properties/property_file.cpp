#include "util/properties/property_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <istream>

#include "util/file/file_io.h"

namespace vesk {

namespace {

constexpr size_t kBlockSize = 16 * 1024;

}  // namespace

UniqueFd openPlainFile(const char* path) {
  UniqueFd fd(::open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  if (!fd) return fd;
  struct stat info;
  if (::fstat(fd.get(), &info) != 0) return UniqueFd();
  if (S_ISREG(info.st_mode)) return fd;
  errno = S_ISDIR(info.st_mode) ? EISDIR : EINVAL;
  return UniqueFd();
}

bool readBounded(int fd, std::string& text) {
  struct stat info;
  if (::fstat(fd, &info) == 0 && info.st_size < static_cast<off_t>(kMaxPropertyFile))
    text.reserve(info.st_size);
  return readAll(fd, text, kMaxPropertyFile);
}

bool readBounded(std::istream& stream, std::string& text) {
  char block[kBlockSize];
  while (stream.good() && text.size() <= kMaxPropertyFile) {
    stream.read(block, sizeof block);
    text.append(block, stream.gcount());
  }
  return stream.eof() && !stream.bad();
}

}  // namespace vesk
