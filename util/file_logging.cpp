#include "util/include/file_logging.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

#include "util/include/log.h"
#include "util/include/log_cache.h"
#include "util/include/log_gzip.h"
#include "util/include/properties.h"
#include "util/include/propnames.h"
#include "util/include/unique_fd.h"

namespace vesk {
namespace {

constexpr mode_t kEverybody = 0666;
constexpr unsigned int kStreamBuffer = 8192;

constexpr int kMostBackups = 9999;  // each rotation looks for every one of them

constexpr int kMostMessagesPerFlush = 512;
constexpr unsigned int kCachePerMessage = 1024;

// Whether a symbolic link may be followed: nobody but root and the process's own user made it.
bool isTrustedLink(const char* path) {
  struct stat status;
  return lstat(path, &status) == 0 && S_ISLNK(status.st_mode) &&
         (status.st_uid == 0 || status.st_uid == geteuid());
}

// A stranger's link, FIFO or socket in place of the log gives an error, never a wait.
UniqueFd openForAppending(const char* path) {
  constexpr int kFlags = O_WRONLY | O_APPEND | O_CREAT | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  UniqueFd file(::open(path, kFlags | O_NOFOLLOW, kEverybody));
  if (!file && errno == ELOOP && isTrustedLink(path)) file = UniqueFd(::open(path, kFlags, kEverybody));
  if (!file) return file;
  struct stat status;
  if (fstat(file.get(), &status) != 0) return UniqueFd();
  if (S_ISREG(status.st_mode)) {
    fchmod(file.get(), kEverybody);
  } else if (!S_ISCHR(status.st_mode)) {
    errno = ENXIO;
    return UniqueFd();
  }
  return file;
}

unsigned int megabytes(int count) {
  return count > static_cast<int>(UINT_MAX >> 20) ? UINT_MAX : static_cast<unsigned int>(count) << 20;
}

bool fileExists(const std::string& path) {
  struct stat ignored;
  return lstat(path.c_str(), &ignored) == 0;
}

}  // namespace

FileLogging::Settings FileLogging::Settings::read() {
  Properties& properties = *Props(false, false);
  Settings settings;
  const std::string maxSize = properties.getString(PN::LOGGER_FILE_MAXSIZE);
  if (!maxSize.empty()) settings.maxSize = megabytes(atoi(maxSize.c_str()));
  const int maxCount = properties.getInt(PN::LOGGER_FILE_MAXCOUNT, -1);
  if (maxCount >= 0) settings.maxCount = std::min(maxCount, kMostBackups);
  settings.zipBackup = properties.getBool(PN::LOGGER_FILE_ZIP_BACKUP, false);
  const int frequency = properties.getInt(PN::LOGGER_FILE_FLUSH_FREQUENCY, -1);
  if (frequency >= 0) {
    settings.flushFrequency = std::min(frequency, kMostMessagesPerFlush);
    settings.cacheSize = frequency < 2 ? 0 : settings.flushFrequency * kCachePerMessage;
  }
  return settings;
}

FileLogging::FileLogging() = default;

FileLogging::FileLogging(const char* path) {
  init(path);
}

FileLogging::~FileLogging() {
  m_cache.reset();
  closeLog();
}

int FileLogging::init(const char* path) {
  return init(path, Settings::read());
}

int FileLogging::init(const char* path, const Settings& settings) {
  Lock lock(mutex);
  m_path = path;
  closeLog();
  m_settings = settings;
  const int error = openLog(false);
  if (error == 0) makeCache();
  return error;
}

void FileLogging::makeCache() {
  if (m_settings.cacheSize == 0) {
    m_cache.reset();
  } else if (m_cache) {
    m_cache->reconfigure(m_settings.cacheSize, m_file);
  } else {
    m_cache = std::make_unique<LogCache>(m_settings.cacheSize, m_file);
  }
}

void FileLogging::open(bool force) {
  Lock lock(mutex);
  openLog(force);
}

void FileLogging::close() {
  Lock lock(mutex);
  closeLog();
}

void FileLogging::destroy() {
  Lock lock(mutex);
  m_cache.reset();
  closeLog();
}

bool FileLogging::isOpened() {
  Lock lock(mutex);
  return m_file != nullptr;
}

int FileLogging::openLog(bool force) {
  if (m_file == nullptr || force) {
    closeLog();
    UniqueFd file = openForAppending(m_path.c_str());
    if (!file) return errno;
    m_file = fdopen(file.get(), "a");
    if (m_file == nullptr) return errno;
    file.release();
    const size_t size = std::max(kStreamBuffer, m_settings.cacheSize + 1);
    m_streamBuffer = std::make_unique<char[]>(size);
    setvbuf(m_file, m_streamBuffer.get(), _IOFBF, size);
  }
  if (m_cache) m_cache->setFileFP(m_file);
  return 0;
}

void FileLogging::closeLog() {
  if (m_cache) {
    m_cache->flush();
    m_cache->setFileFP(nullptr);
  }
  if (m_file != nullptr) fclose(m_file);
  m_file = nullptr;
}

void FileLogging::log(const char* format, va_list args) {
  Lock lock(mutex);
  logLocked(format, args);
}

bool FileLogging::logIfOpened(const char* format, va_list args) {
  Lock lock(mutex);
  if (m_file == nullptr) return false;
  logLocked(format, args);
  return true;
}

void FileLogging::logLocked(const char* format, va_list args) {
  const bool flushDue = ++m_unflushed >= m_settings.flushFrequency;
  if (flushDue) m_unflushed = 0;
  if (writeLine(flushDue, format, args) && flushDue) fileRotate();
}

// False if there is nothing to write to.
bool FileLogging::writeLine(bool flushDue, const char* format, va_list args) {
  char prefix[512];
  const int length = BuildMessagePrefix(prefix, sizeof prefix, "");
  if (m_cache && m_cache->isActive()) {
    m_cache->append(prefix, std::min<size_t>(length, sizeof prefix - 1));
    m_cache->vsappend(format, args);
    m_cache->append('\n');
    if (flushDue) m_cache->flush();
    return true;
  }
  if (m_file == nullptr) return false;
  fputs(prefix, m_file);
  vfprintf(m_file, format, args);
  fputc('\n', m_file);
  if (flushDue) fflush(m_file);
  return true;
}

void FileLogging::flushFromNowOn() {
  Lock lock(mutex);
  if (m_cache) m_cache->flush();
  m_settings.flushFrequency = 1;
}

void FileLogging::forgetAfterFork() {
  if (!m_cache) return;
  m_cache->setFileFP(nullptr);
  m_cache->flush();
  m_cache->setFileFP(m_file);
}

bool FileLogging::checkFileSizeByFP() {
  struct stat status;
  return m_file != nullptr && fstat(fileno(m_file), &status) == 0 &&
         static_cast<unsigned long long>(status.st_size) >= m_settings.maxSize;
}

bool FileLogging::checkFileSizeByPath() {
  struct stat status;
  return stat(m_path.c_str(), &status) == 0 &&
         static_cast<unsigned long long>(status.st_size) >= m_settings.maxSize;
}

void FileLogging::fileRotate() {
  if (!checkFileSizeByFP()) return;
  const UniqueFd turn(::open(m_path.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (turn && flock(turn.get(), LOCK_EX | LOCK_NB) != 0 && !isFarTooLarge(turn.get())) return;
  closeLog();
  if (isAtPath(turn.get()) && checkFileSizeByPath() && m_settings.maxCount >= 1) {
    shiftBackups();
    moveToFirstBackup();
  }
  openLog(true);
}

// Not if another process has rotated meanwhile; its new file has a lock of its own.
bool FileLogging::isAtPath(int file) const {
  struct stat held, named;
  return fstat(file, &held) == 0 && stat(m_path.c_str(), &named) == 0 && held.st_dev == named.st_dev &&
         held.st_ino == named.st_ino;
}

// Who holds the lock of a file so large is not rotating it: whoever can write the log can lock it.
bool FileLogging::isFarTooLarge(int file) const {
  constexpr off_t kTimes = 4;
  struct stat status;
  return fstat(file, &status) == 0 && status.st_size / kTimes >= static_cast<off_t>(m_settings.maxSize);
}

std::string FileLogging::backupName(int number) const {
  return m_path + "." + std::to_string(number) + (m_settings.zipBackup ? ".gz" : "");
}

void FileLogging::shiftBackups() {
  for (int number = m_settings.maxCount; number >= 1; --number) {
    const std::string name = backupName(number);
    if (!fileExists(name)) continue;
    if (number == m_settings.maxCount)
      remove(name.c_str());
    else
      rename(name.c_str(), backupName(number + 1).c_str());
  }
}

// A log that is to be compressed is first taken away from the other processes that write it: of two that
// rotate at once, one finds nothing to compress.
void FileLogging::moveToFirstBackup() {
  if (!m_settings.zipBackup) {
    rename(m_path.c_str(), backupName(1).c_str());
    return;
  }
  const std::string taken = m_path + ".rotated." + std::to_string(getpid());
  if (rename(m_path.c_str(), taken.c_str()) != 0) return;
  gzip(taken.c_str(), backupName(1).c_str());
  remove(taken.c_str());
}

}  // namespace vesk
