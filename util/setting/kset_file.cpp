#include "util/setting/kset_file.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "util/error/throw.h"
#include "util/file/file_io.h"

namespace vesk {
namespace {

constexpr char kSource[] = "util/setting";
constexpr char kDCPrefix[] = "dc.";

}  // namespace

bool isRootUser() {
  return ::geteuid() == 0;
}

bool isDCSetting(const char* name) {
  return strncmp(name, kDCPrefix, strlen(kDCPrefix)) == 0;
}

bool isForeign(const std::string& path, const struct stat& status, const std::string& dataDir) {
  const std::string userDir = dataDir + kUserDir;
  return isRootUser() && status.st_uid != 0 && path.compare(0, userDir.size(), userDir) == 0;
}

void throwFileFailure(int error, const char* literal, const std::string& path) {
  FOKRAZO_THROW_ERRNO(IOException, "IOException", error, error, literal, path.c_str());
}

void openReplacement(ReplacementFile& file) {
  if (!file.openUnique()) throwFileFailure(errno, kCannotOpen, file.name());
}

void commitReplacement(ReplacementFile& file, const std::string& path) {
  if (!file.sync()) throwFileFailure(errno, kCannotWrite, file.name());
  if (!file.replace()) throwFileFailure(errno, "Cannot rename file to %s", path);
}

void removeFile(const std::string& path) {
  if (::unlink(path.c_str()) == 0 || errno == ENOENT || errno == ENOTDIR) return;
  throwFileFailure(errno, "Cannot remove file %s", path);
}

std::vector<std::string> listKSetDirectory(const std::string& dir) {
  std::vector<std::string> names;
  const UniqueFd directory = openFile(dir, Open::Directory);
  if (directory && listDirectory(directory, names)) return names;
  const int error = errno;
  FOKRAZO_THROW_ERRNO(NotFoundException, "NotFoundException", error, error, "Cannot open directory %s",
                      dir.c_str());
}

}  // namespace vesk
