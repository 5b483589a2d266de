#include <fokrazo/file_util.h>

#include <dirent.h>
#include <fcntl.h>
#include <regex.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <fstream>
#include <memory>

#include <fokrazo/log.h>
#include <fokrazo/selinux_context.h>
#include "util/error/throw.h"
#include "util/file/file_io.h"

using vesk::BadDataException;
using vesk::IOException;
using vesk::kBlockSize;
using vesk::kPermissionBits;
using vesk::Open;
using vesk::openFile;
using vesk::SystemException;
using vesk::throwCallFailed;
using vesk::UniqueFd;

namespace {

constexpr char kSource[] = "util/file_util";
constexpr char kLogger[] = "util.file";
constexpr int kMaxLinks = 100;
constexpr mode_t kNewFileMode = 0666;  // minus the umask

// Failures to create a temporary file have the code -1.
[[noreturn]] void throwNoTempFile(int error) {
  FOKRAZO_THROW_CALL_FAILED(-1, error);
}

struct stat statOf(const char* path) {
  struct stat info;
  if (::stat(path, &info) != 0) throwCallFailed(errno);
  return info;
}

struct Owner {
  unsigned uid;
  unsigned gid;
};

// Sets the mode of a new temporary file, and its owner unless null. On failure removes the file and throws.
void finishTempFile(UniqueFd& fd, const char* name, unsigned mode, const Owner* owner) {
  if (::fchmod(fd.get(), mode) == 0 && (!owner || ::fchown(fd.get(), owner->uid, owner->gid) == 0)) return;
  const int error = errno;
  fd.close();
  ::unlink(name);
  throwNoTempFile(error);
}

int openTempFile(char* templ, int mode, const Owner* owner, std::ofstream& out) {
  UniqueFd fd = vesk::openTemporaryFile(templ);
  if (!fd) throwNoTempFile(errno);
  finishTempFile(fd, templ, mode, owner);
  // By name: in a directory with the sticky bit, other users cannot replace it.
  try {
    out.open(templ, std::ios::out | std::ios::trunc);
  } catch (...) {  // no memory for the stream
    ::unlink(templ);
    throw;
  }
  return fd.close();
}

bool failWithoutPath(std::string& out) {
  out.clear();
  return false;
}

// Replaces the path of a link with that of its target. Returns false if the link cannot be read.
bool followLink(std::string& path) {
  std::string target(PATH_MAX - 1, '\0');
  const ssize_t length = ::readlink(path.c_str(), target.data(), target.size());
  if (length < 1) {
    VESK_LOG_TO(kLogger, Debug, "Failed to read the symlink path '%s' (errno=%d)", path.c_str(), errno);
    return false;
  }
  target.resize(length);
  VESK_LOG_TO(kLogger, Trace, "Value for symlink '%s' is '%s'", path.c_str(), target.c_str());
  path.erase(target[0] == '/' ? 0 : path.rfind('/') + 1);
  path += target;
  return true;
}

void removeLink(const std::string& path) {
  struct stat info;
  if (::lstat(path.c_str(), &info) != 0 || !S_ISLNK(info.st_mode)) return;
  VESK_LOG_TO(kLogger, Debug, "Symlink file:'%s' is pre-existence, should delete it first\n", path.c_str());
  if (::remove(path.c_str()) == 0) return;
  const int error = errno;
  FOKRAZO_THROW_ERRNO(SystemException, "vesk::SystemException", error, error,
                      "Failed to delete symlink file:'%s'\n", path.c_str());
}

/// A compiled pattern, freed with the object.
class Pattern {
 public:
  explicit Pattern(const std::string& text) {
    const int error = ::regcomp(&m_compiled, text.c_str(), REG_EXTENDED);
    if (error == 0) return;
    char message[512];  // more would not fit into an exception
    ::regerror(error, &m_compiled, message, sizeof message);
    FOKRAZO_THROW(BadDataException, "BadDataException", error, "CopyFiles: Error compiling pattern: %s",
                  message);
  }
  ~Pattern() { ::regfree(&m_compiled); }
  Pattern(const Pattern&) = delete;
  Pattern& operator=(const Pattern&) = delete;

  bool matches(const char* name) const {
    regmatch_t match;
    return ::regexec(&m_compiled, name, 1, &match, REG_NOTBOL | REG_NOTEOL) == 0;
  }

 private:
  regex_t m_compiled;
};

}  // namespace

int MoveFile(const std::string& from, const std::string& to) {
  if (::rename(from.c_str(), to.c_str()) == 0) return 0;
  const int error = errno;
  FOKRAZO_THROW_ERRNO(IOException, "vesk::IOException", error, error, "Move %s to %s failed", from.c_str(),
                      to.c_str());
}

int renameFile(std::string from, std::string to) {
  if (from == to) return 0;
  const int result = ::rename(from.c_str(), to.c_str());
  if (result == 0) {
    RestoreFileSELinuxLabel(to);
    return 0;
  }
  const int error = errno;
  VESK_LOG_TO(kLogger, Info, "Unable to rename \"%s\" to \"%s\".", from.c_str(), to.c_str());
  fprintf(stderr, "Unable to rename \"%s\" to \"%s\".\n", from.c_str(), to.c_str());
  errno = error;
  return result;
}

off_t GetFileSize(const char* path) {
  return statOf(path).st_size;
}

off_t GetFileSize(const std::string& path) {
  return GetFileSize(path.c_str());
}

int GetPerms(const char* path) {
  return statOf(path).st_mode & kPermissionBits;
}

int GetPerms(const std::string& path) {
  return GetPerms(path.c_str());
}

int mkstemp(std::string& templ) {
  std::string name = templ;
  UniqueFd fd = vesk::openTemporaryFile(name.data());
  if (fd) {
    templ = name;
    return fd.release();
  }
  const int error = errno;
  ::unlink(templ.c_str());
  errno = error;
  return -1;
}

int mkstemp(std::string& templ, unsigned mode, unsigned uid, unsigned gid) {
  UniqueFd fd(mkstemp(templ));
  if (fd) {
    const Owner owner{uid, gid};
    finishTempFile(fd, templ.c_str(), mode, &owner);
  }
  return fd.release();
}

int OpenTempFile(char* templ, int mode, std::ofstream& out) {
  return openTempFile(templ, mode, nullptr, out);
}

int OpenTempFile(char* templ, int mode, unsigned uid, unsigned gid, std::ofstream& out) {
  const Owner owner{uid, gid};
  return openTempFile(templ, mode, &owner, out);
}

bool GetSymLinkPath(const char* path, std::string& out, int depth) {
  std::string current = path ? path : "";
  for (; depth <= kMaxLinks; ++depth) {
    struct stat info;
    if (::lstat(current.c_str(), &info) != 0) {
      VESK_LOG_TO(kLogger, Info, "Path '%s' does not exist!", current.c_str());
      return failWithoutPath(out);
    }
    if (!S_ISLNK(info.st_mode)) {
      out = current;
      return true;
    }
    if (!followLink(current)) return failWithoutPath(out);
  }
  VESK_LOG_TO(kLogger, Warn, "Detected a potential circular sym link in %s!", current.c_str());
  return failWithoutPath(out);
}

int GetFreeSpaceSize(const char* path, unsigned long long& kilobytes) {
  struct statvfs64 info;
  const int result = ::statvfs64(path, &info);
  if (result == 0) {
    kilobytes = (static_cast<unsigned long long>(info.f_bfree) >> 10) * info.f_frsize;
    return 0;
  }
  const int error = errno;
  VESK_LOG_SYSERR(vesk::Logger::GetThreadPrivateLogger(kLogger), Warn, error,
                  "statfs return (%d). Cannot detect free disk space.", result);
  return error;
}

int GetFreeSpaceSize(const std::string& path, unsigned long long& kilobytes) {
  return GetFreeSpaceSize(path.c_str(), kilobytes);
}

std::string ReadFile(const std::string& path, int* mode) {
  const UniqueFd fd = openFile(path);
  std::string content;
  struct stat info;
  if (!fd || !vesk::readAll(fd.get(), content)) throwCallFailed(errno);
  if (mode && ::fstat(fd.get(), &info) != 0) throwCallFailed(errno);
  if (mode) *mode = info.st_mode & kPermissionBits;
  return content;
}

void WriteFile(const std::string& path, const std::string& content, int* mode) {
  UniqueFd fd = openFile(path, Open::Write | Open::Create | Open::Truncate, kNewFileMode);
  if (!fd || !vesk::writeAll(fd.get(), content)) throwCallFailed(errno);
  if (mode && ::fchmod(fd.get(), *mode) != 0) throwCallFailed(errno);
  if (fd.close() != 0) throwCallFailed(errno);
}

void CopyFile(const std::string& from, const std::string& to) {
  removeLink(to);
  const UniqueFd source = openFile(from);
  if (!source) return;
  const UniqueFd target = openFile(to, Open::Write | Open::Create | Open::Unfollowed, kNewFileMode);
  if (!target || vesk::isSameFile(source.get(), target.get()) || ::ftruncate(target.get(), 0) != 0) return;
  std::string block(kBlockSize, '\0');
  for (ssize_t got; (got = vesk::readSome(source.get(), block.data(), kBlockSize)) > 0;) {
    block.resize(got);
    if (!vesk::writeAll(target.get(), block)) return;
    block.resize(kBlockSize);
  }
}

int CopyFiles(const std::string& fromDir, const std::string& toDir, const std::string& pattern) {
  const Pattern compiled(pattern);
  std::unique_ptr<DIR, int (*)(DIR*)> directory(::opendir(fromDir.c_str()), ::closedir);
  if (!directory) throwCallFailed(errno);
  while (const dirent* entry = ::readdir(directory.get()))
    if (compiled.matches(entry->d_name)) CopyFile(fromDir + "/" + entry->d_name, toDir + "/" + entry->d_name);
  return ::closedir(directory.release());
}
