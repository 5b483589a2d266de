// Writes the values in memory to a configuration file, and keeps the rest of its text.
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <set>

#include <fokrazo/log.h>
#include <fokrazo/properties.h>
#include "util/file/file_io.h"
#include "util/file/replacement_file.h"
#include "util/properties/property_line.h"
#include "util/thread/clock.h"
#include "util/thread/pause.h"

namespace vesk {

namespace {

constexpr char kLogger[] = "util.properties";
constexpr time_t kStaleLockSeconds = 60;
constexpr mode_t kLockFileMode = 0200;
constexpr mode_t kMode = 0644;

boost::shared_ptr<Logger> logger() {
  return getLogger(kLogger, false);
}

bool readPropertyFile(const std::string& path, std::string& text) {
  return readWholeFile(path, 0, text, kMaxPropertyFile);
}

/// Whether a list is read from the file that the raw value names.
bool refersToFile(std::string raw) {
  PropertySyntax::removeEscapes(raw);
  return PropertySyntax::isFileReference(raw);
}

/// Waits briefly for a recent lock file, and removes a stale one. Returns true if another attempt is
/// worthwhile; otherwise false with errno.
bool waitOrBreakLock(const std::string& lockPath) {
  struct stat info;
  if (::stat(lockPath.c_str(), &info) != 0) return errno == ENOENT;
  if (dayclock::now() - info.st_atime > kStaleLockSeconds)
    return ::remove(lockPath.c_str()) == 0 || errno == ENOENT;
  pause::forMilliseconds(kLockPauseMilliseconds);
  return true;
}

}  // namespace

/// The lock file of one save, released at the end of the scope.
class Properties::LockFile {
 public:
  explicit LockFile(const std::string& path) : m_path(path + ".lock") {
    VESK_LOG(logger(), Debug, "Create lock file %s", m_path.c_str());
    m_descriptor = createLockFile(m_path);
    const int error = errno;
    if (!isHeld()) VESK_LOG_SYSERR(logger(), Error, error, "Unable to create lock file %s", m_path.c_str());
  }
  ~LockFile() {
    if (!isHeld()) return;
    VESK_LOG(logger(), Debug, "Remove lock file %s", m_path.c_str());
    if (releaseLockFile(m_path, m_descriptor) != 0)
      VESK_LOG(logger(), Debug, "Unable to remove lock file %s", m_path.c_str());
  }
  LockFile(const LockFile&) = delete;
  LockFile& operator=(const LockFile&) = delete;

  bool isHeld() const { return m_descriptor >= 0; }
  /// Does not remove the file; a later save will find it stale.
  void leave() {
    ::close(m_descriptor);
    m_descriptor = -1;
  }

 private:
  const std::string m_path;
  int m_descriptor;
};

/// Builds the new text of a file from the old one and the values in memory.
class Properties::Saver {
 public:
  Saver(Properties& properties, const std::string& text)
      : m_properties(properties), m_text(text), m_lines(text) {}

  /// Returns false, with a log message, if a key in memory cannot be written to any file. The caller holds
  /// the properties' lock, which the compiler does not recognise here.
  bool run(std::string& out) FOKRAZO_NO_THREAD_SAFETY_ANALYSIS {
    std::string line;
    std::string extra;
    bool afterEmpty = false;
    while (!m_lines.atEnd() && m_lines.position() < m_text.size()) {
      m_begin = m_lines.position();
      readLogicalLine(m_lines, line, extra, false);
      m_end = m_lines.position();
      m_last = m_out.size();
      const bool empty = line.empty();
      if (isComment(line)) {
        takeComment(line);
      } else if (!empty) {
        takeLine(line);
      } else if (!afterEmpty) {
        copyLine();
      }
      afterEmpty = empty;
    }
    const std::string last = cutOpenEnd();
    for (const auto& entry : m_properties.m_table)
      if (m_written.count(entry.first) == 0) writeProperty(entry);
    out = std::move(m_out += last);
    return !m_hasBadKey;
  }

 private:
  // A comment with a property that has yet to be written becomes that property.
  void takeComment(std::string& line) FOKRAZO_REQUIRES(m_properties.mutex) {
    line.erase(0, line.find_first_not_of("#!"));
    std::string key;
    std::string value;
    const bool wanted = getPropertyFromLine(line, key, value) && isAwaited(key);
    const bool isCut = (!wanted || isOpenEnd()) && cutComment();
    if (!wanted || isCut) return copyLine();
    writeProperty(*m_properties.m_table.find(key));
    m_written.insert(key);
  }

  void takeLine(const std::string& line) FOKRAZO_REQUIRES(m_properties.mutex) {
    std::string key;
    std::string value;
    if (!getPropertyFromLine(line, key, value)) return copyLine();
    if (!isAwaited(key)) return commentLineOut();
    const auto held = m_properties.m_table.find(key);
    m_properties.expandEnvVariables(value);
    Property own;
    own.set(value);
    if (means(own, held->second)) {
      copyLine();
    } else {
      writeProperty(*held);
    }
    m_written.insert(key);
  }

  /// Whether the key has a value that has not been written yet.
  bool isAwaited(const std::string& key) const FOKRAZO_REQUIRES(m_properties.mutex) {
    return m_properties.m_table.count(key) != 0 && m_written.count(key) == 0;
  }

  /// Whether the current lines are the last ones and end in a backslash with nothing to continue.
  bool isOpenEnd() const { return m_end == m_text.size() && isEscaped(m_text); }

  /// For readers a comment ends with its physical line. If a later line of the current comment is a property
  /// that would override a written one, or that can only be at the end of the file, ends the comment before
  /// that line. Returns whether it did.
  bool cutComment() FOKRAZO_REQUIRES(m_properties.mutex) {
    TextLines lines(m_text, m_begin);
    std::string line;
    std::string extra;
    std::string key;
    std::string value;
    readLogicalLine(lines, line, extra, true);
    while (lines.position() < m_end) {
      const size_t begin = lines.position();
      readLogicalLine(lines, line, extra, true);
      if (!getPropertyFromLine(line, key, value) || (isAwaited(key) && !isOpenEnd())) continue;
      m_lines.goBack(m_end = begin);
      return true;
    }
    return false;
  }

  // Equal values may be different lists in raw form, and in rewriting mode their dollar signs may or may not
  // be references.
  bool means(const Property& own, const Property& held) const FOKRAZO_REQUIRES(m_properties.mutex) {
    if (own.value() != held.value()) return false;
    if (!held.raw() || *own.raw() == *held.raw()) return true;
    const bool marked = !m_properties.m_expandVariables && held.value().find('$') != std::string::npos;
    return !marked && refersToFile(*own.raw()) == refersToFile(*held.raw()) &&
           splitList(*own.raw()) == splitList(*held.raw());
  }

  /// Copies the current physical lines unchanged.
  void copyLine() { m_out.append(m_text, m_begin, m_end - m_begin); }

  void commentLineOut() {
    for (size_t begin = m_begin; begin < m_end;) {
      const size_t newline = std::min(m_text.find('\n', begin), m_end - 1);
      m_out += "# ";
      m_out.append(m_text, begin, newline + 1 - begin);
      begin = newline + 1;
    }
  }

  void writeProperty(const Table::value_type& entry) FOKRAZO_REQUIRES(m_properties.mutex) {
    std::string line;
    if (!makeLine(entry.first, entry.second, line)) {
      VESK_LOG(logger(), Error, "No line of a property file can hold the key '%s'", entry.first.c_str());
      m_hasBadKey = true;
      return;
    }
    endLastLine();
    m_out += line + '\n';
  }

  /// Makes the output end in a newline that no backslash escapes.
  void endLastLine() {
    if (m_out.empty()) return;
    if (m_out.back() == '\n') m_out.pop_back();
    m_out += isEscaped(m_out) ? "\n\n" : "\n";
  }

  /// A line that ends the file with a backslash must stay the last.
  std::string cutOpenEnd() {
    if (!isEscaped(m_out)) return std::string();
    const std::string last = m_out.substr(m_last);
    m_out.erase(m_last);
    return last;
  }

  // Uses the old text if it can be read back unchanged from one line.
  bool makeLine(const std::string& key, const Property& property, std::string& line)
      FOKRAZO_REQUIRES(m_properties.mutex) {
    std::string head;
    if (!putPropertyToLine(head, key, std::string(), true)) return false;
    if (property.raw()) {
      std::string text = *property.raw();
      m_properties.unexpandEnvVariables(text);
      for (const std::string& form : {text, restoreSpecials(text)}) {
        line = head + form;
        if (readsBack(line, *property.raw())) return true;
      }
    }
    return putPropertyToLine(line, key, property.value(), m_properties.m_expandVariables);
  }

  bool readsBack(const std::string& line, const std::string& raw) FOKRAZO_REQUIRES(m_properties.mutex) {
    std::string key;
    std::string value;
    if (!isSingleLine(line) || !getPropertyFromLine(line, key, value)) return false;
    m_properties.expandEnvVariables(value);
    return value == raw;
  }

  Properties& m_properties;
  const std::string& m_text;
  TextLines m_lines;
  size_t m_begin = 0;  // the current physical lines
  size_t m_end = 0;
  size_t m_last = 0;  // start of their output
  std::set<std::string, StringCaseLessThan> m_written;
  std::string m_out;
  bool m_hasBadKey = false;
};

int Properties::saveProperty(const std::string& path) {
  Lock lock(mutex);
  LockFile lockFile(path);
  return lockFile.isHeld() ? saveUnder(lockFile, path) : -1;
}

int Properties::update(const std::string& path, const std::function<bool(Properties&)>& change) {
  Properties file(false);
  Lock lock(file.mutex);  // disables cancellation until the lock file is removed
  LockFile lockFile(path);
  if (!lockFile.isHeld()) return -1;
  std::string text;
  if (!readPropertyFile(path, text)) {
    VESK_LOG(logger(), Error, "Unable to open config file %s", path.c_str());
    return -1;
  }
  file.parse(text, false);
  return change(file) ? file.saveUnder(lockFile, path) : 0;
}

int Properties::saveUnder(LockFile& lockFile, const std::string& path) {
  ReplacementFile next(path);
  if (!openFile(path, Open::Regular)) {
    VESK_LOG(logger(), Error, "Unable to open config file %s", path.c_str());
    lockFile.leave();
    return -1;
  }
  if (!next.openShared()) {
    VESK_LOG(logger(), Error, "Unable to open temporary config file %s", next.name().c_str());
    lockFile.leave();
    return -1;
  }
  // Read under the lock, because other writers may have changed the file.
  std::string text;
  if (!readPropertyFile(path, text)) {
    VESK_LOG(logger(), Error, "Unable to open config file %s", path.c_str());
    return -1;
  }
  m_expansionLeft = kMaxExpansion;
  std::string newText;
  if (!Saver(*this, text).run(newText)) return -1;
  if (!next.write(newText, kMode) || !next.sync() || !next.replaceAndLabel()) {
    const int error = errno;
    VESK_LOG_SYSERR(logger(), Error, error, "Unable to write config file %s", path.c_str());
    return -1;
  }
  m_modified = false;
  return 0;
}

int Properties::createLockFile(const std::string& lockPath) {
  for (int attempt = 0; attempt < kLockAttempts; attempt++) {
    UniqueFd descriptor = openFile(lockPath, Open::Write | Open::CreateNew, kLockFileMode);
    if (descriptor) return descriptor.release();
    if (errno != EEXIST || !waitOrBreakLock(lockPath)) return -1;
  }
  errno = EEXIST;
  return -1;
}

int Properties::releaseLockFile(const std::string& lockPath, int descriptor) {
  const bool closed = ::close(descriptor) == 0;
  const bool removed = ::remove(lockPath.c_str()) == 0;
  return closed && removed ? 0 : -1;
}

}  // namespace vesk
