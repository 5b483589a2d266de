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

/// Order of property keys: by bytes, with ASCII letters in lower case, whatever the locale.
struct StringCaseLessThan {
  /// Whether `a` stands before `b`.
  bool operator()(const std::string& a, const std::string& b) const {
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) {
      return static_cast<unsigned char>(asciiLower(x)) < static_cast<unsigned char>(asciiLower(y));
    });
  }
};

/// One value, in the two forms that matter.
class FOKRAZO_API Property {
 public:
  /// Without quotes and escapes, as lookups return it.
  const std::string& value() const { return m_value; }
  /// With quotes and escapes, but with variables replaced: lists are made of this. Null if only an earlier
  /// load had the key.
  const std::string* raw() const { return !m_hasRaw ? nullptr : m_raw ? m_raw.get() : &m_value; }
  /// Sets both.
  void set(const std::string& raw);
  /// Keeps the value as that of an earlier load: raw() is null from then on.
  void forgetRaw() { m_hasRaw = false; }

 private:
  std::string m_value;
  std::unique_ptr<std::string> m_raw;  // null where it equals the value, as most do
  bool m_hasRaw = false;
};

/// Keys with their values, as one file holds them. Keys ignore case; the first spelling stays.
///
/// A program that only reads the file loads it with expansion, which replaces `$` variables. A program that
/// changes it loads it without (rewriting mode): the values keep the references to variables, with marks that
/// saveProperty removes, so that lines without a change are written as they were.
///
/// Thread-safety: each operation holds the object's own lock; a reader sees the old file or the new one,
/// whole. A bad file throws nothing: the fault is logged ("util.properties"), and lookups return the callers'
/// defaults.
class FOKRAZO_API Properties : public PropertySyntax {
 public:
  /// Keys with their final values; a shared list; all entries by key, and a place among them.
  using Map = std::map<std::string, std::string, StringCaseLessThan>;
  using ValueListPtr = boost::shared_ptr<const ValueList>;
  using Table = std::map<std::string, Property, StringCaseLessThan>;
  using iterator = Table::const_iterator;

  /// Empty. With `debugDump` what is read is logged at DEBUG instead of TRACE.
  explicit Properties(bool expandVariables = true, bool debugDump = false);
  ~Properties();

  /// Reads a regular file. Its keys replace those of earlier loads; other keys stay. With `expand` false it
  /// is loaded in rewriting mode. Then reconfigures the loggers.
  void load(const char* path, bool expand);
  /// The same from a stream that the caller has opened.
  void load(std::istream& stream, bool expand);
  /// Forgets all entries and reads /etc/velmora/velmora.conf with expansion. Returns loaded().
  bool reload();
  /// Whether the last load read its file to the end.
  bool loaded();
  /// Whether a value was changed here since the last load or save.
  bool modified();

  /// The value, empty if the key is missing.
  std::string getString(const std::string& key);
  /// The value as a decimal number, as atoi reads it; `fallback` if it is empty or missing.
  int getInt(const std::string& key, int fallback);
  /// True for "true", "yes" and "1", false for "false", "no" and "0", in upper or lower case; else
  /// `fallback`.
  bool getBool(const std::string& key, bool fallback);
  /// A duration in seconds. The value is a number, with or without a unit: s, m, h, d, w, M or y. `unit` is
  /// the unit of a number without one, and of `fallback`. The value -1 is returned as it is, without a unit.
  long getTime(const std::string& key, char unit, unsigned int fallback);
  /// Copies the final value; false, with `value` untouched, if the key is missing.
  bool lookup(const std::string& key, std::string& value);
  /// The items of a list, or those of `fallback`, which has the syntax of a value in the file. Either may be
  /// "file:" and a path: the items are then the lines of that file, if SecureOpenForReading opens it. Never
  /// null. A list from the file is parsed once and shared until the next load.
  ValueListPtr getValueList(const std::string& key, const std::string& fallback);
  /// The items of a values file that is open already.
  static boost::shared_ptr<ValueList> getValueList(std::istream& stream);

  /// All entries whose key has the prefix in any case, with their whole keys; null if there is none.
  std::unique_ptr<Map> getMap(const std::string& prefix);
  /// The range of those entries; false if it is empty. The caller holds `mutex` for as long as it uses the
  /// iterators, as with findPrefix.
  bool filter(const std::string& prefix, iterator& begin, iterator& end);
  /// The first key that begins with exactly that prefix. If there is none, the end of all entries: the `end`
  /// that filter sets for an empty prefix.
  iterator findPrefix(const std::string& prefix);
  /// Whether the key is there in exactly this spelling.
  bool keyExists(const std::string& key);
  /// prefix.key or prefix.key.suffix; an empty prefix becomes "brondalt".
  static std::string makeKey(const std::string& prefix, const std::string& key, const std::string& suffix);

  /// Sets a value in memory. Any text: lookups return it unchanged, but in rewriting mode with each "$"
  /// doubled, as for an escaped one in a file. False, with nothing changed, for a key that no file can hold.
  bool setString(const std::string& key, const std::string& value);
  /// Sets a value in memory as if the file had the line "key: text", with the meaning of quotes, escapes,
  /// variables and references to files. False if that is not a single line.
  bool setText(const std::string& key, const std::string& text);
  /// Sets a list in memory: its items joined by blanks, escaped only if they would not be read back
  /// otherwise. With `keepDollar` a "$" in an item is text; without, it is a reference to a variable once the
  /// file is written.
  void setValueList(const std::string& key, const ValueList& list, bool keepDollar);
  /// Adds items that are not there yet, and sorts the list. False if that changes nothing.
  bool addValueList(const std::string& key, const ValueList& list, bool keepDollar);
  /// Removes items, which are compared with case. False if the list had none of them.
  bool delValueList(const std::string& key, const ValueList& list, bool keepDollar);
  /// Removes a key from memory; a save then turns its line into a comment. False if there is no such key.
  bool remove(const std::string& key);

  /// Writes the values in memory to a file that exists. Comments, the order of lines, and lines whose meaning
  /// is unchanged stay as they are. The line of a removed key becomes a comment; a new key takes the place of
  /// its commented-out line, or goes to the end. A lock file (path + ".lock") keeps other processes from
  /// saving at the same time; this waits a second for it. The file is replaced by rename, so that a reader
  /// sees the old content or the new one, even if this process is killed, and its mode becomes 0644. Returns
  /// 0, or -1 with a message in the log and the old file untouched; a key in memory that no line can hold is
  /// such a failure.
  int saveProperty(const std::string& path);
  /// Loads a file in rewriting mode into a new object, calls `change` with it, and saves it, all under the
  /// lock file: no other process can save in between. Nothing is written if `change` returns false. Returns
  /// what saveProperty does. An exception from `change` is passed on after the lock file was removed.
  static int update(const std::string& path, const std::function<bool(Properties&)>& change);

  /// Makes a lock file. Waits up to a second for another process to remove its own; one that is older than a
  /// minute counts as abandoned and is replaced. Returns a descriptor, or -1 with errno.
  static int createLockFile(const std::string& lockPath);
  /// Closes and removes the lock file. Returns 0, or -1 if either fails.
  static int releaseLockFile(const std::string& lockPath, int descriptor);

  /// Writes "#", `header` and a newline, unless the header is empty, and then every entry as key=value.
  void store(std::ostream& stream, const std::string& header);
  /// store on the standard error stream.
  void dump();

  /// Guards all fields; recursive. Order: gPropMtx, this one, then the loggers' locks.
  Mutex mutex;

  /// The object of Props; null before its first call.
  static Properties* gVeskProperties;
  /// Guards its making. Never destroyed: code that runs as the process ends may still read properties.
  static Mutex& gPropMtx;

 private:
  class Print;
  class Saver;
  class LockFile;

  /// How much text variables may add in one load, so that values which multiply each other stay bounded.
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
  /// Makes a list for getValueList. Returns whether it may be kept for the next call.
  bool makeList(const std::string& key, const std::string& fallback, ValueList& list) FOKRAZO_REQUIRES(mutex);
  ValueList markItems(const ValueList& list, bool keepDollar) const FOKRAZO_REQUIRES(mutex);
  std::string makeRawList(const ValueList& list, bool keepDollar) FOKRAZO_REQUIRES(mutex);
  void change(const std::string& key, const std::string& raw) FOKRAZO_REQUIRES(mutex);
  void changed(const std::string& key) FOKRAZO_REQUIRES(mutex);
  int saveUnder(LockFile& lockFile, const std::string& path) FOKRAZO_REQUIRES(mutex);

  Table m_table FOKRAZO_GUARDED_BY(mutex);
  std::map<std::string, ValueListPtr> m_listCache FOKRAZO_GUARDED_BY(mutex);
  /// The special variables, and names that were looked up.
  std::map<std::string, std::string> m_variables FOKRAZO_GUARDED_BY(mutex);
  /// How much text variables may still add in this load.
  size_t m_expansionLeft FOKRAZO_GUARDED_BY(mutex) = kMaxExpansion;
  bool m_loaded FOKRAZO_GUARDED_BY(mutex) = false;
  bool m_modified FOKRAZO_GUARDED_BY(mutex) = false;
  bool m_expandVariables FOKRAZO_GUARDED_BY(mutex);
  const bool m_debugDump;
};

}  // namespace vesk

/// The process-wide object, made and loaded by the first call and never freed. With `reload` the file is read
/// again. `debugDump` of the first call decides whether what is read is logged at DEBUG instead of TRACE.
/// Thread-safe.
FOKRAZO_API vesk::Properties* Props(bool debugDump, bool reload);

namespace vesk {
using ::Props;
}  // namespace vesk
