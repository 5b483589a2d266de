/// The configuration file: one object for the whole process, read from /etc/velmora/velmora.conf at first
/// use.
#pragma once

#include <algorithm>
#include <functional>
#include <iosfwd>
#include <list>
#include <map>
#include <memory>
#include <string>

#include <boost/shared_ptr.hpp>

#include <fokrazo/export.h>
#include <fokrazo/mutex.h>
#include <fokrazo/property_syntax.h>
#include <fokrazo/strutil.h>
#include <fokrazo/thread_annotations.h>

namespace vesk {

class Logger;

/// Orders property keys by bytes, ignoring the case of ASCII letters, whatever the locale.
struct StringCaseLessThan {
  /// Whether `a` comes before `b`.
  bool operator()(const std::string& a, const std::string& b) const {
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
      return static_cast<unsigned char>(asciiLower(x)) < static_cast<unsigned char>(asciiLower(y));
    });
  }
};

/// One value, in two forms.
class FOKRAZO_API Property {
 public:
  /// Without quotes and escapes, as lookups return it.
  const std::string& value() const { return m_value; }
  /// With quotes and escapes, but with variables replaced; lists are made from this form. Null if only an
  /// earlier load had the key.
  const std::string* raw() const { return !m_hasRaw ? nullptr : m_raw ? m_raw.get() : &m_value; }
  /// Sets both.
  void set(const std::string& raw);
  /// Marks the value as that of an earlier load: raw() is null from then on.
  void forgetRaw() { m_hasRaw = false; }

 private:
  std::string m_value;
  std::unique_ptr<std::string> m_raw;  // null if it equals the value, as usual
  bool m_hasRaw = false;
};

/// The keys and values of one file. Keys ignore case; the first spelling is kept.
///
/// A program that only reads the file loads it with expansion, which replaces `$` variables. A program that
/// changes it loads it without expansion (rewriting mode): values keep their references to variables, marked
/// until saveProperty, so that unchanged lines are written back as they were.
///
/// Thread-safety: every operation takes the object's lock; a reader sees either the old file or the new one,
/// never a mixture. A bad file does not throw: the error is logged ("util.properties"), and lookups return
/// the callers' defaults.
class FOKRAZO_API Properties : public PropertySyntax {
 public:
  /// Keys with final values; a shared list; all entries by key; an entry.
  using Map = std::map<std::string, std::string, StringCaseLessThan>;
  using ValueListPtr = boost::shared_ptr<const ValueList>;
  using Table = std::map<std::string, Property, StringCaseLessThan>;
  using iterator = Table::const_iterator;

  /// No entries. With `debugDump`, loaded entries are logged at DEBUG instead of TRACE.
  explicit Properties(bool expandVariables = true, bool debugDump = false);
  ~Properties();

  /// Reads a regular file, and then reconfigures the loggers. Its keys replace those of earlier loads; other
  /// keys stay. With `expand` false it is loaded in rewriting mode.
  void load(const char* path, bool expand);
  /// The same from an open stream, which the caller owns.
  void load(std::istream& stream, bool expand);
  /// Discards all entries and reads /etc/velmora/velmora.conf with expansion. Returns loaded().
  bool reload();
  /// Whether the last load read its file to the end.
  bool loaded();
  /// Whether a value was changed in memory since the last load or save.
  bool modified();

  /// The value, empty if the key is missing.
  std::string getString(const std::string& key);
  /// The value as a decimal number, as atoi reads it; `fallback` if it is empty or missing.
  int getInt(const std::string& key, int fallback);
  /// True for "true", "yes" and "1", false for "false", "no" and "0", ignoring case; else `fallback`.
  bool getBool(const std::string& key, bool fallback);
  /// A duration in seconds. The value is a number with an optional unit: s, m, h, d, w, M or y. `unit`
  /// applies to a number without one and to `fallback`. -1 is returned unchanged.
  long getTime(const std::string& key, char unit, unsigned int fallback);
  /// Copies the final value. Returns false, with `value` untouched, if the key is missing.
  bool lookup(const std::string& key, std::string& value);
  /// The items of a list, or those of `fallback`, a value in the file's syntax, if there is none. Either may
  /// be "file:" and a path: the items are then the lines of that file, if SecureOpenForReading accepts it.
  /// Never null. A list from the configuration is parsed once and shared until the next load.
  ValueListPtr getValueList(const std::string& key, const std::string& fallback);
  /// The items of a values file that is already open.
  static boost::shared_ptr<ValueList> getValueList(std::istream& stream);

  /// All entries whose key has the prefix, ignoring case, with their full keys; null if there are none.
  std::unique_ptr<Map> getMap(const std::string& prefix);
  /// The range of those entries; false if it is empty. Hold `mutex` while you use the iterators; so with
  /// findPrefix.
  bool filter(const std::string& prefix, iterator& begin, iterator& end);
  /// The first entry whose key begins with the prefix, case-sensitive; without one, the end of all entries:
  /// the `end` that filter sets for an empty prefix.
  iterator findPrefix(const std::string& prefix);
  /// Whether the key exists in exactly this spelling.
  bool keyExists(const std::string& key);
  /// prefix.key or prefix.key.suffix; an empty prefix becomes "brondalt".
  static std::string makeKey(const std::string& prefix, const std::string& key, const std::string& suffix);

  /// Sets a value in memory. It may be any text: lookups return it unchanged, but in rewriting mode with each
  /// "$" doubled, as for an escaped one in a file. Returns false, with nothing changed, for a key that no
  /// file can hold.
  bool setString(const std::string& key, const std::string& value);
  /// Sets a value in memory as if the file had the line "key: text", with quotes, escapes, variables and file
  /// references interpreted. Returns false if that is not a single line.
  bool setText(const std::string& key, const std::string& text);
  /// Sets a list in memory: its items joined by blanks, escaped only if necessary to read them back. With
  /// `keepDollar` a "$" in an item is literal; without, it starts a reference to a variable in the written
  /// file.
  void setValueList(const std::string& key, const ValueList& list, bool keepDollar);
  /// Adds missing items and sorts the list. Returns false if nothing changed.
  bool addValueList(const std::string& key, const ValueList& list, bool keepDollar);
  /// Removes items, compared case-sensitively. Returns false if the list had none of them.
  bool delValueList(const std::string& key, const ValueList& list, bool keepDollar);
  /// Removes a key from memory; a save then comments its line out. Returns false if there is no such key.
  bool remove(const std::string& key);

  /// Writes the values in memory to an existing file. Comments, the order of lines, and unchanged lines stay
  /// as they are. The line of a removed key is commented out; a new key replaces its commented-out line, or
  /// goes to the end. A lock file (path + ".lock") keeps other processes from saving at the same time; waits
  /// up to a second for it. The file is replaced by rename, so that a reader sees the old content or the new
  /// one, even if this process is killed. Its mode becomes 0644. Returns 0, or -1 with a log message and the
  /// old file untouched, also for a key that no line can hold.
  int saveProperty(const std::string& path);
  /// Loads a file in rewriting mode into a new object, calls `change` with it, and saves it, all under the
  /// lock file, so no other process can save in between. Writes nothing if `change` returns false. Returns as
  /// saveProperty. Removes the lock file before an exception from `change` propagates.
  static int update(const std::string& path, const std::function<bool(Properties&)>& change);

  /// Creates a lock file. Waits up to a second for another process to remove its lock file; one older than a
  /// minute counts as abandoned and is replaced. Returns a descriptor, to be passed to releaseLockFile, or -1
  /// with errno.
  static int createLockFile(const std::string& lockPath);
  /// Closes and removes the lock file. Returns 0, or -1 if either fails.
  static int releaseLockFile(const std::string& lockPath, int descriptor);

  /// Writes "#", `header` and a newline, unless the header is empty, then every entry as key=value.
  void store(std::ostream& stream, const std::string& header);
  /// Writes all entries to standard error.
  void dump();

  /// Guards all fields; recursive. Order: gPropMtx, this one, then the loggers' locks.
  Mutex mutex;

  /// The object that Props returns; null before its first call.
  static Properties* gVeskProperties;
  /// Guards its creation. Never destroyed: code that runs as the process exits may still read properties.
  static Mutex& gPropMtx;

 private:
  class Print;
  class Saver;
  class LockFile;

  /// The most text, in bytes, that variables may add in one load, in case values multiply each other.
  static constexpr size_t kMaxExpansion = 16 * 1024 * 1024;

  void loadText(const std::string& text, bool expand) FOKRAZO_REQUIRES(mutex);
  void begin(bool expand) FOKRAZO_REQUIRES(mutex);
  void parse(const std::string& file, bool expand) FOKRAZO_REQUIRES(mutex);
  void loadVariables() FOKRAZO_REQUIRES(mutex);
  Table::iterator assign(Table::iterator near, const std::string& key, std::string& text)
      FOKRAZO_REQUIRES(mutex);
  void expandEnvVariables(std::string& value) FOKRAZO_REQUIRES(mutex);
  void unexpandEnvVariables(std::string& value) const FOKRAZO_REQUIRES(mutex);
  std::string replacement(const std::string& name) FOKRAZO_REQUIRES(mutex);
  /// Builds a list for getValueList. Returns whether it may be cached.
  bool makeList(const std::string& key, const std::string& fallback, ValueList& list) FOKRAZO_REQUIRES(mutex);
  ValueList markItems(const ValueList& list, bool keepDollar) const FOKRAZO_REQUIRES(mutex);
  std::string makeRawList(const ValueList& list, bool keepDollar) FOKRAZO_REQUIRES(mutex);
  void change(const std::string& key, const std::string& raw) FOKRAZO_REQUIRES(mutex);
  void changed(const std::string& key) FOKRAZO_REQUIRES(mutex);
  int saveUnder(LockFile& lockFile, const std::string& path) FOKRAZO_REQUIRES(mutex);

  Table m_table FOKRAZO_GUARDED_BY(mutex);
  std::map<std::string, ValueListPtr> m_listCache FOKRAZO_GUARDED_BY(mutex);
  /// The special variables, and cached names.
  std::map<std::string, std::string> m_variables FOKRAZO_GUARDED_BY(mutex);
  /// What remains of kMaxExpansion in this load.
  size_t m_expansionLeft FOKRAZO_GUARDED_BY(mutex) = kMaxExpansion;
  bool m_loaded FOKRAZO_GUARDED_BY(mutex) = false;
  bool m_modified FOKRAZO_GUARDED_BY(mutex) = false;
  bool m_expandVariables FOKRAZO_GUARDED_BY(mutex);
  const bool m_debugDump;
};

}  // namespace vesk

/// The process-wide object, created and loaded by the first call and never freed. With `reload` the file is
/// read again. With `debugDump` in the first call, loaded entries are logged at DEBUG instead of TRACE.
/// Thread-safe.
FOKRAZO_API vesk::Properties* Props(bool debugDump, bool reload);

namespace vesk {
using ::Props;
}  // namespace vesk
