#include <fokrazo/file_logging.h>

#include <poll.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <new>
#include <string_view>
#include <utility>

#include <fokrazo/log.h>
#include <fokrazo/log_cache.h>
#include <fokrazo/properties.h>
#include <fokrazo/propnames.h>
#include "util/file/file_io.h"
#include "util/file/open_file.h"
#include "util/file/unique_fd.h"
#include "util/log/log_internal.h"
#include "util/sink/log_backups.h"
#include "util/sink/log_text.h"
#include "util/sink/syslog_line.h"
#include "util/thread/thread_internal.h"

namespace vesk {
namespace {

constexpr mode_t kEverybody = 0666;
constexpr size_t kStreamBuffer = 8192;

constexpr int kMaxBackups = 9999;  // each rotation checks all of them

constexpr int kMaxMessagesPerFlush = 512;
constexpr unsigned int kCachePerMessage = 1024;

struct Opened {
  UniqueFd file;
  struct stat status {};
};

// Checks the open file's type, and how it was found.
bool isAcceptable(const struct stat& status, bool throughLinkOfRoot) {
  if (S_ISREG(status.st_mode) && status.st_nlink > 1) {
    errno = EMLINK;  // it may be another user's file under the log's name
    return false;
  }
  errno = ENXIO;
  return S_ISREG(status.st_mode) || S_ISCHR(status.st_mode) ||
         (S_ISFIFO(status.st_mode) && throughLinkOfRoot);
}

// Another user's link, FIFO or socket in place of the log is an error; never blocks.
Opened openForAppending(const char* path) {
  constexpr unsigned kOptions = Open::Append | Open::Create;
  Opened opened{openFile(path, kOptions | Open::Unfollowed, kEverybody)};
  struct stat link {};
  if (!opened.file && errno == ELOOP) {
    const bool isTrusted =
        lstat(path, &link) == 0 && S_ISLNK(link.st_mode) && (link.st_uid == 0 || link.st_uid == geteuid());
    if (isTrusted)
      opened.file = openFile(path, kOptions, kEverybody);
    else
      errno = ELOOP;
  }
  if (!opened.file) return opened;
  const bool throughLinkOfRoot = S_ISLNK(link.st_mode) && link.st_uid == 0;
  if (fstat(opened.file.get(), &opened.status) != 0 || !isAcceptable(opened.status, throughLinkOfRoot))
    return Opened();
  if (S_ISREG(opened.status.st_mode)) fchmod(opened.file.get(), kEverybody);
  return opened;
}

// Blocks SIGPIPE, and discards a pending one, so that a pipe without a reader does not end the program.
class SigpipeBlocked {
 public:
  SigpipeBlocked() {
    sigset_t pending;
    sigemptyset(&m_pipe);
    sigaddset(&m_pipe, SIGPIPE);
    sigpending(&pending);
    m_wasPending = sigismember(&pending, SIGPIPE) == 1;
    pthread_sigmask(SIG_BLOCK, &m_pipe, &m_before);
  }
  ~SigpipeBlocked() {
    constexpr timespec kNoWait{0, 0};
    if (!m_wasPending) sigtimedwait(&m_pipe, nullptr, &kNoWait);
    pthread_sigmask(SIG_SETMASK, &m_before, nullptr);
  }
  SigpipeBlocked(const SigpipeBlocked&) = delete;
  SigpipeBlocked& operator=(const SigpipeBlocked&) = delete;

 private:
  sigset_t m_pipe;
  sigset_t m_before;
  bool m_wasPending;
};

// Sends lines for the log file to syslog, without the prefix that syslog adds itself.
void sendToSyslog(const std::string& lines) {
  constexpr std::string_view kPrefixEnd = "]: ";
  for (size_t begin = 0, end; begin < lines.size(); begin = end + 1) {
    end = std::min(lines.find('\n', begin), lines.size());
    const std::string line = lines.substr(begin, end - begin);
    const size_t prefix = line.find(kPrefixEnd);
    writeSyslog(LOG_INFO, line.c_str() + (prefix == std::string::npos ? 0 : prefix + kPrefixEnd.size()));
  }
}

// Whether the pipe accepts a line within a short time.
bool isWritable(int pipe) {
  constexpr int kMaxWait = 100;  // milliseconds
  pollfd state{pipe, POLLOUT, 0};
  return poll(&state, 1, kMaxWait) == 1 && (state.revents & POLLERR) == 0;
}

unsigned int megabytes(int count) {
  return count > static_cast<int>(UINT_MAX >> 20) ? UINT_MAX : static_cast<unsigned int>(count) << 20;
}

}  // namespace

/// The text of a message for a file without a cache: of any length, not yet escaped.
class FileLogging::Line {
 public:
  Line(const char* format, va_list args) __attribute__((format(printf, 2, 0))) {
    va_list again;
    va_copy(again, args);
    m_length = std::max(vsnprintf(m_short, sizeof m_short, format, args), 0);
    if (m_length >= sizeof m_short) formatLong(format, again);
    va_end(again);
    const size_t formatLength = strlen(format);
    m_endsLine = m_length > 0 && text()[m_length - 1] == '\n' && format[formatLength - 1] == '\n';
  }

  /// Without a final newline from the format.
  size_t length() const { return m_endsLine ? m_length - 1 : m_length; }
  bool endsLine() const { return m_endsLine; }
  const char* text() const { return m_long ? m_long.get() : m_short; }

 private:
  // Cuts the text if there is no memory.
  void formatLong(const char* format, va_list args) __attribute__((format(printf, 2, 0))) {
    m_long.reset(new (std::nothrow) char[m_length + 1]);
    if (m_long)
      vsnprintf(m_long.get(), m_length + 1, format, args);
    else
      m_length = sizeof m_short - 1;
  }

  char m_short[LogCache::kLongestText + 1];
  std::unique_ptr<char[]> m_long;
  size_t m_length;
  bool m_endsLine;
};

/// What a log call does after `mutex` is released, because it may take long.
struct FileLogging::Afterwards {
  std::string unwritten;                // lines for syslog
  std::string notice;                   // about the file itself, for syslog
  std::unique_ptr<LogBackups> rotated;  // to be compressed

  void carryOut() {
    sendToSyslog(unwritten);
    if (!notice.empty()) writeSyslog(LOG_ERR, notice.c_str());
    if (rotated) rotated->compress();
  }
};

FileLogging::Settings FileLogging::Settings::read() {
  Properties& properties = *Props(false, false);
  Settings settings;
  const std::string maxSize = properties.getString(PN::LOGGER_FILE_MAXSIZE);
  if (!maxSize.empty()) settings.maxSize = megabytes(atoi(maxSize.c_str()));
  const int maxCount = properties.getInt(PN::LOGGER_FILE_MAXCOUNT, -1);
  if (maxCount >= 0) settings.maxCount = std::min(maxCount, kMaxBackups);
  settings.zipBackup = properties.getBool(PN::LOGGER_FILE_ZIP_BACKUP, false);
  const int frequency = properties.getInt(PN::LOGGER_FILE_FLUSH_FREQUENCY, -1);
  if (frequency >= 0) {
    settings.flushFrequency = std::min(frequency, kMaxMessagesPerFlush);
    settings.cacheSize = frequency < 2 ? 0 : settings.flushFrequency * kCachePerMessage;
  }
  return settings;
}

FileLogging::FileLogging() : m_unflushed(0), m_isPipe(false), m_isGone(false), m_isFailureReported(false) {}

FileLogging::FileLogging(const char* path) : FileLogging() {
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
  m_writeError = 0;
  m_isFailureReported = false;
  const int error = openLog(false);
  if (error == 0) makeCache();
  return error;
}

// A pipe is written line by line, without delay.
void FileLogging::makeCache() {
  if (m_settings.cacheSize == 0 || m_isPipe) {
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

// Replaces the open file, which stays open on failure.
int FileLogging::openFile() {
  Opened opened = openForAppending(m_path.c_str());
  const bool isPipe = S_ISFIFO(opened.status.st_mode);
  if (!opened.file) return errno;
  // A cache is written with a single write.
  const bool cached = m_settings.cacheSize > 0 && !isPipe;
  auto buffer = cached ? nullptr : std::make_unique<char[]>(kStreamBuffer);
  FILE* const stream = fdopen(opened.file.get(), "a");
  if (stream == nullptr) return errno;
  opened.file.release();
  setvbuf(stream, buffer.get(), cached ? _IONBF : _IOFBF, cached ? 0 : kStreamBuffer);
  closeFile();
  m_file = stream;
  m_isPipe = isPipe;
  m_isGone = false;
  m_streamBuffer = std::move(buffer);
  if (m_cache) m_cache->setFileFP(m_file);
  return 0;
}

// Unwritten text is lost.
void FileLogging::closeLog() {
  flushCache();
  if (m_cache) forgetCache();
  closeFile();
}

void FileLogging::closeFile() {
  if (m_cache) m_cache->setFileFP(nullptr);
  if (m_file == nullptr) return;
  const SigpipeBlocked sigpipeBlocked;
  fclose(m_file);
  m_file = nullptr;
}

void FileLogging::log(const char* format, va_list args) {
  Afterwards afterwards;
  {
    Lock lock(mutex);
    logLocked(format, args, afterwards);
  }
  afterwards.carryOut();
}

bool FileLogging::logIfOpened(const char* format, va_list args) {
  Afterwards afterwards;
  bool isTaken = false;
  {
    Lock lock(mutex);
    if (m_file == nullptr) return false;
    if (m_isGone && (!isFlushDue() || openFile() != 0)) return false;
    va_list copy;
    va_copy(copy, args);
    isTaken = logLocked(format, copy, afterwards);
    va_end(copy);
    afterwards.unwritten = takeUnwritten();
  }
  afterwards.carryOut();
  return isTaken;
}

bool FileLogging::isFlushDue() {
  if (!m_isPipe && static_cast<int>(++m_unflushed) < m_settings.flushFrequency) return false;
  m_unflushed = 0;
  return true;
}

// Returns false if the line was not accepted.
bool FileLogging::logLocked(const char* format, va_list args, Afterwards& afterwards) {
  const bool flushDue = isFlushDue();
  const bool isTaken = writeLine(flushDue, format, args);
  afterwards.notice = takeNotice();
  if (isTaken && flushDue && !m_isGone) afterwards.rotated = rotate();
  return isTaken;
}

bool FileLogging::writeLine(bool flushDue, const char* format, va_list args) {
  const std::string_view prefix = timeAndProcess();
  if (m_cache && m_cache->isActive()) {
    char text[LogCache::kLongestText + 1];
    const size_t length = formatEscaped(text, sizeof text, format, args);
    if (m_cache->room() < prefix.size() + length + 1) flushCache();
    m_cache->append(prefix.data(), prefix.size());
    m_cache->append(text, length);
    m_cache->append('\n');
    if (flushDue) flushCache();
    return true;
  }
  if (m_file == nullptr || (m_isPipe && !isWritable(fileno(m_file)))) return false;
  const Line line(format, args);
  if (!flushDue) {
    printLine(line);
    if (ferror(m_file)) noteFailedWrite(errno);
    return true;
  }
  const std::unique_ptr<SigpipeBlocked> sigpipeBlocked(m_isPipe ? new SigpipeBlocked : nullptr);
  return writeForGood([&]() FOKRAZO_REQUIRES(mutex) {
    printLine(line);
    fflush(m_file);
  });
}

void FileLogging::printLine(const Line& line) {
  const std::string_view prefix = timeAndProcess();
  fwrite(prefix.data(), 1, prefix.size(), m_file);
  appendEscaped(line.text(), line.length(),
                [file = m_file](const char* part, size_t length) { fwrite(part, 1, length, file); });
  if (line.endsLine()) fputc('\n', m_file);
  fputc('\n', m_file);
}

// Until this process notices a rotation, it writes to the old file, which another process may have compressed
// and removed; or the directory may be gone. Then writes again, to a new file. Returns false if none can be
// created.
template <class Write>
bool FileLogging::writeForGood(Write write) {
  constexpr int kAttempts = 3;
  write();
  int error = errno;
  for (int attempt = 1; isRemoved(); ++attempt) {
    m_isGone = attempt == kAttempts || openFile() != 0;
    if (m_isGone) return false;
    write();
    error = errno;
  }
  if (m_file == nullptr || m_isPipe) return true;
  m_writeError = 0;
  if (ferror(m_file)) noteFailedWrite(error);
  return true;
}

void FileLogging::noteFailedWrite(int error) {
  m_writeError = error != 0 ? error : EIO;
  clearerr(m_file);
}

// What syslog is to be told about the file; empty if it knows already.
std::string FileLogging::takeNotice() {
  if ((m_writeError != 0) == m_isFailureReported) return {};
  m_isFailureReported = m_writeError != 0;
  std::string text = m_isFailureReported ? "Log messages are lost: cannot write " + m_path + ": "
                                         : "Log messages are no longer lost: can write " + m_path;
  // The text is the thread's own. NOLINTNEXTLINE(concurrency-mt-unsafe)
  if (m_isFailureReported) text += strerror(m_writeError);
  std::string notice;
  appendEscaped(text.data(), text.size(),
                [&](const char* part, size_t length) { notice.append(part, length); });
  return notice;
}

bool FileLogging::isRemoved() const {
  struct stat status;
  return m_file != nullptr && fstat(fileno(m_file), &status) == 0 && status.st_nlink == 0;
}

// Keeps unwritten text for the next time, as far as the cache has room.
bool FileLogging::flushCache() {
  if (!m_cache || m_cache->isEmpty()) return true;
  if (!writeForGood([this]() FOKRAZO_REQUIRES(mutex) { m_cache->write(); })) return false;
  forgetCache();
  return true;
}

// Takes the cached text of a removed file.
std::string FileLogging::takeUnwritten() {
  if (!m_isGone || !m_cache) return {};
  std::string lines(m_cache->content());
  forgetCache();
  return lines;
}

void FileLogging::forgetCache() {
  m_cache->setFileFP(nullptr);
  m_cache->flush();
  m_cache->setFileFP(m_file);
}

void FileLogging::flushFromNowOn() {
  std::string unwritten;
  {
    Lock lock(mutex);
    flushCache();
    m_settings.flushFrequency = 1;
    unwritten = takeUnwritten();
  }
  sendToSyslog(unwritten);
}

// Takes no lock: there is no other thread.
void FileLogging::forgetAfterFork() FOKRAZO_NO_THREAD_SAFETY_ANALYSIS {
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
  if (const std::unique_ptr<LogBackups> rotated = rotate()) rotated->compress();
}

// Returns the backups to compress; null if the file was not rotated.
std::unique_ptr<LogBackups> FileLogging::rotate() {
  if (!checkFileSizeByFP()) return nullptr;
  flushCache();
  UniqueFd turn = vesk::openFile(m_path, Open::Write);
  if (turn && !tryLock(turn.get()) && !isFarTooLarge(turn.get())) {
    // Another process is rotating. Once it has moved the file, a new one can be opened without the lock.
    if (!leadsTo(m_path, fileno(m_file))) openFile();
    return nullptr;
  }
  auto backups = std::make_unique<LogBackups>(m_path, m_settings.maxCount, m_settings.zipBackup);
  // Unless another process has rotated meanwhile; its new file has its own lock.
  if (leadsTo(m_path, turn.get()) && checkFileSizeByPath() && m_settings.maxCount >= 1)
    backups->takeLog(std::move(turn));
  openFile();
  return backups;
}

// Whether the file is so large that the lock's holder cannot be rotating it: anyone who can write the log can
// lock it.
bool FileLogging::isFarTooLarge(int file) const {
  constexpr off_t kTimes = 4;
  constexpr off_t kMinSize = 1 << 20;  // bytes
  struct stat status;
  return fstat(file, &status) == 0 && status.st_size >= std::max(kTimes * m_settings.maxSize, kMinSize);
}

}  // namespace vesk
