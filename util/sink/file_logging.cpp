#include <fokrazo/file_logging.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include <fokrazo/log.h>
#include <fokrazo/log_cache.h>
#include <fokrazo/properties.h>
#include <fokrazo/propnames.h>
#include "util/file/file_io.h"
#include "util/file/unique_fd.h"
#include "util/log/log_internal.h"
#include "util/sink/log_backups.h"
#include "util/sink/sink_internal.h"
#include "util/thread/threads_api.h"

namespace vesk {
namespace {

constexpr mode_t kEverybody = 0666;
constexpr size_t kStreamBuffer = 8192;

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
  const CancelKeptOff cancelKeptOff;
  closeLog();
  m_cache.reset();
}

int FileLogging::init(const char* path) {
  return init(path, Settings::read());
}

int FileLogging::init(const char* path, const Settings& settings) {
  Lock lock(mutex);
  closeLog();
  m_path = path;
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
  closeLog();
  m_cache.reset();
}

bool FileLogging::isOpened() {
  Lock lock(mutex);
  return m_file != nullptr;
}

int FileLogging::openLog(bool force) {
  if (m_file != nullptr && !force) {
    if (m_cache) m_cache->setFileFP(m_file);
    return 0;
  }
  closeLog();
  return openFile();
}

// In place of the one that is open; that one stays if it fails.
int FileLogging::openFile() {
  // A cache is written as it stands, in one write.
  const bool cached = m_settings.cacheSize > 0;
  auto buffer = cached ? nullptr : std::make_unique<char[]>(kStreamBuffer);
  UniqueFd file = openForAppending(m_path.c_str());
  FILE* const opened = file ? fdopen(file.get(), "a") : nullptr;
  if (opened == nullptr) return errno;
  file.release();
  setvbuf(opened, buffer.get(), cached ? _IONBF : _IOFBF, cached ? 0 : kStreamBuffer);
  closeFile();
  m_file = opened;
  m_streamBuffer = std::move(buffer);
  if (m_cache) m_cache->setFileFP(m_file);
  return 0;
}

// What could not be written is lost.
void FileLogging::closeLog() {
  flushCache();
  if (m_cache) forgetCache();
  closeFile();
}

void FileLogging::closeFile() {
  if (m_cache) m_cache->setFileFP(nullptr);
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
  const std::string_view prefix = whenAndWho();
  if (m_cache && m_cache->isActive()) {
    if (m_cache->room() < prefix.size() + LogCache::kLongestText + 1) flushCache();
    m_cache->append(prefix.data(), prefix.size());
    m_cache->vsappend(format, args);
    m_cache->append('\n');
    if (flushDue) flushCache();
    return true;
  }
  if (m_file == nullptr) return false;
  if (!flushDue) {
    printLine(prefix.data(), format, args);
    return true;
  }
  writeForGood([&] {
    va_list copy;
    va_copy(copy, args);
    printLine(prefix.data(), format, copy);
    va_end(copy);
    fflush(m_file);
  });
  return true;
}

void FileLogging::printLine(const char* prefix, const char* format, va_list args) {
  fputs(prefix, m_file);
  vfprintf(m_file, format, args);
  fputc('\n', m_file);
}

// Until this process notices a rotation, it goes on writing into the old file. Another process may have
// compressed and removed that one: then the same is written once more, into the new file. False if there is
// none.
template <class Write>
bool FileLogging::writeForGood(Write write) {
  constexpr int kAttempts = 3;
  write();
  for (int attempt = 1; isRemoved(); ++attempt) {
    if (attempt == kAttempts || openFile() != 0) return false;
    write();
  }
  return true;
}

bool FileLogging::isRemoved() const {
  struct stat status;
  return m_settings.zipBackup && m_file != nullptr && fstat(fileno(m_file), &status) == 0 &&
         status.st_nlink == 0;
}

// What could not be written stays for the next time, as far as the cache has room.
void FileLogging::flushCache() {
  if (!m_cache || m_cache->isEmpty()) return;
  if (writeForGood([this] { m_cache->write(); })) forgetCache();
}

void FileLogging::forgetCache() {
  m_cache->setFileFP(nullptr);
  m_cache->flush();
  m_cache->setFileFP(m_file);
}

void FileLogging::flushFromNowOn() {
  Lock lock(mutex);
  flushCache();
  m_settings.flushFrequency = 1;
}

void FileLogging::forgetAfterFork() {
  if (m_cache) forgetCache();
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
  flushCache();
  const UniqueFd turn(::open(m_path.c_str(), O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (turn && !tryLock(turn.get()) && !isFarTooLarge(turn.get())) {
    // Somebody else rotates. To leave a file that has been rotated already takes no lock.
    if (!leadsTo(m_path, fileno(m_file))) openFile();
    return;
  }
  LogBackups backups(m_path, m_settings.maxCount, m_settings.zipBackup);
  // Not if another process has rotated meanwhile; its new file has a lock of its own.
  if (leadsTo(m_path, turn.get()) && checkFileSizeByPath() && m_settings.maxCount >= 1)
    backups.takeLog(turn.get());
  openFile();
  backups.compress();
}

// Who holds the lock of a file so large is not rotating it: whoever can write the log can lock it.
bool FileLogging::isFarTooLarge(int file) const {
  constexpr off_t kTimes = 4;
  constexpr off_t kLeast = 1 << 20;  // bytes
  struct stat status;
  return fstat(file, &status) == 0 && status.st_size >= std::max(kTimes * m_settings.maxSize, kLeast);
}

}  // namespace vesk
