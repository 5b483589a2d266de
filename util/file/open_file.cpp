#include "util/file/open_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

namespace vesk {
namespace {

struct OptionFlags {
  Open::Option option;
  int flags;
};

constexpr OptionFlags kOptionFlags[] = {
    {Open::Write, O_WRONLY},        {Open::ReadWrite, O_RDWR},           {Open::Append, O_WRONLY | O_APPEND},
    {Open::Create, O_CREAT},        {Open::CreateNew, O_CREAT | O_EXCL}, {Open::Truncate, O_TRUNC},
    {Open::Unfollowed, O_NOFOLLOW}, {Open::Directory, O_DIRECTORY},      {Open::Location, O_PATH},
};

int flagsOf(unsigned options) {
  int flags = O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  for (const OptionFlags& row : kOptionFlags)
    if (options & row.option) flags |= row.flags;
  return flags;
}

bool isRegular(const UniqueFd& fd) {
  struct stat info;
  if (::fstat(fd.get(), &info) != 0) return false;
  if (S_ISREG(info.st_mode)) return true;
  errno = S_ISDIR(info.st_mode) ? EISDIR : EINVAL;
  return false;
}

}  // namespace

UniqueFd openFile(const std::string& path, unsigned options, mode_t mode) {
  return openFileAt(AT_FDCWD, path.c_str(), options, mode);
}

UniqueFd openFileAt(int directory, const char* name, unsigned options, mode_t mode) {
  UniqueFd fd = aboveStandardStreams(UniqueFd(::openat(directory, name, flagsOf(options), mode)));
  return fd && (options & Open::Regular) && !isRegular(fd) ? UniqueFd() : std::move(fd);
}

UniqueFd openTemporaryFile(char* name) {
  return aboveStandardStreams(UniqueFd(::mkostemp(name, O_CLOEXEC)));
}

bool isNeverRegular(int error) {
  return error == ELOOP || error == ENXIO || error == ENODEV;
}

}  // namespace vesk
