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
  /// Without quotes and escapes: what a lookup gives.
  const std::string& value() const { return m_value; }
  /// With them, after the variables: lists are cut from this. Null if only an earlier load had the key.
  const std::string* raw() const { return !m_hasRaw ? nullptr : m_raw ? m_raw.get() : &m_value; }
  /// Sets both.
  void set(const std::string& raw);
  /// The value stays, of an earlier load: raw() gives null.
  void forgetRaw() { m_hasRaw = false; }

 private:
  std::string m_value;
  std::unique_ptr<std::string> m_raw;  // null where it equals the value, as most do
  bool m_hasRaw = false;
};

/// Keys with their values, as one file holds them. Keys ignore case; the first spelling stays.
///
/// A load expands `$` variables for a program that reads the file. For a program that changes it, a load
/// without expansion (rewriting mode) keeps the references: values then carry marks that saveProperty takes
/// off again, and the file comes back as it was.
///
/// Thread-safety: each operation holds the object's own lock; a reader sees the old file or the new one
/// whole. Nothing here throws for a bad file: what is wrong goes to the log ("util.properties"), and the
/// callers' defaults answer.
class FOKRAZO_API Properties : public PropertySyntax {
 public:
  /// Keys with their final values; a shared list; all that is held of the keys, and a place in that.
  using Map = std::map<std::string, std::string, StringCaseLessThan>;
  using ValueListPtr = boost::shared_ptr<const ValueList>;
  using Table = std::map<std::string, Property, StringCaseLessThan>;
  using iterator = Table::const_iterator;

  /// Holds nothing yet. `debugDump`: what is read is logged at DEBUG instead of TRACE.
  explicit Properties(bool expandVariables = true, bool debugDump = false);
  ~Properties();

  /// Reads a plain file, over what is held already: its keys replace older ones, others stay. `expand`
  /// false is the rewriting mode. Reconfigures the loggers from the result.
  void load(const char* path, bool expand);
  /// The same from a stream that the caller has opened.
  void load(std::istream& stream, bool expand);
  /// Forgets everything and reads /etc/velmora/velmora.conf with expansion. Returns loaded().
  bool reload();
  /// Whether the last load reached the end of its file.
  bool loaded();
  /// Whether a value was changed here since the last load or save.
  bool modified();

  /// The value, empty if the key is missing.
  std::string getString(const std::string& key);
  /// The value through atoi; `fallback` if it is empty or missing.
  int getInt(const std::string& key, int fallback);
  /// true, yes, 1 or false, no, 0 in any case; anything else gives `fallback`.
  bool getBool(const std::string& key, bool fallback);
  /// A duration in seconds. The value is a number and perhaps a unit letter of s, m, h, d, w, M, y; `unit`
  /// counts where it has none, and for `fallback`. -1 stands for itself.
  long getTime(const std::string& key, char unit, unsigned int fallback);
  /// Looks the final value up in one step; false if the key is missing, with `value` untouched.
  bool lookup(const std::string& key, std::string& value);
  /// The items of a list, else those of `fallback`, which is written as a value of the file. Either may be
  /// "file:" and a path: the items are then the lines of that file, if SecureOpenForReading lets it pass.
  /// Never null. A list of the file's own is parsed once and shared until the next load.
  ValueListPtr getValueList(const std::string& key, const std::string& fallback);
  /// The items of a values file that is open already.
  static boost::shared_ptr<ValueList> getValueList(std::istream& stream);

  /// All entries whose key has the prefix in any case, with their whole keys; null if there is none.
  std::unique_ptr<Map> getMap(const std::string& prefix);
  /// The range of those entries; false if it is empty. The caller holds `mutex` as long as it uses them, and
  /// so for findPrefix.
  bool filter(const std::string& prefix, iterator& begin, iterator& end);
  /// The first key that begins with the prefix, case counting. If there is none, the end of all entries,
  /// which filter with an empty prefix gives as its `end`.
  iterator findPrefix(const std::string& prefix);
  /// Whether the key is there in just this spelling.
  bool keyExists(const std::string& key);
  /// prefix.key or prefix.key.suffix; an empty prefix becomes "brondalt".
  static std::string makeKey(const std::string& prefix, const std::string& key, const std::string& suffix);

  /// Sets a value in memory: any text, which lookups give back as it is. In rewriting mode each "$" of it
  /// comes back doubled, as from a file that escapes it.
  /// False for a key that no file can hold, with nothing changed.
  bool setString(const std::string& key, const std::string& value);
  /// Sets a value in memory as if the file had the line "key: text": quotes, escapes, variables and
  /// references to files count. False for a key or a text that is no single line.
  bool setText(const std::string& key, const std::string& text);
  /// Sets a list in memory: its items joined by blanks, escaped only where an item would not be read back.
  /// Without `keepDollar` a "$" in an item is a reference to a variable where the file is written.
  void setValueList(const std::string& key, const ValueList& list, bool keepDollar);
  /// Adds items that are not there yet, and sorts the list. False if that changes nothing.
  bool addValueList(const std::string& key, const ValueList& list, bool keepDollar);
  /// Removes items; case counts. False if none was there.
  bool delValueList(const std::string& key, const ValueList& list, bool keepDollar);
  /// Removes a key from memory; a save then makes a comment of its line. False if it is not there.
  bool remove(const std::string& key);

  /// Brings the file in line with the values in memory. Comments, order and the lines that mean the same
  /// stay; a key that is gone becomes a comment, a new one takes the place of its commented-out line
  /// or goes to the end. One process at a time, by a lock file beside it (path + ".lock"), for which this
  /// waits a second. The file is replaced by rename: whoever reads it sees the old or the new one, also if
  /// this process is killed. Its mode becomes 0644. 0, or -1 with a message in the log and the old file
  /// untouched, also for a key in memory that no line can hold. There must be a file to begin with.
  int saveProperty(const std::string& path);
  /// Changes a file as one step against other processes that save it: loads it in rewriting mode into an
  /// object of its own, calls `change` with that, and saves, all under the lock file. Nothing is written if
  /// `change` gives false. Result as of saveProperty. What `change` throws is passed on, with the lock file
  /// gone.
  static int update(const std::string& path, const std::function<bool(Properties&)>& change);

  /// Makes a lock file that must not exist yet, after a second at most. One that is older than a minute is
  /// taken for left behind. A descriptor, or -1 with errno.
  static int createLockFile(const std::string& lockPath);
  /// Closes and removes it. 0, or -1 if either fails.
  static int releaseLockFile(const std::string& lockPath, int descriptor);

  /// Writes "#", `header` and a newline, unless the header is empty, and then every entry as key=value.
  void store(std::ostream& stream, const std::string& header);
  /// store on the standard error stream.
  void dump();

  /// Guards all the maps; recursive. Order: gPropMtx, this, then the loggers' locks.
  Mutex mutex;

  /// The object of Props; null before its first call.
  static Properties* gVeskProperties;
  /// Guards its making. Never destroyed: what runs at the process's end may still read properties.
  static Mutex& gPropMtx;

 private:
  class Print;
  class Saver;
  class LockFile;

  /// What variables may add to the values in one load: values that multiply each other stay bounded.
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

/// The process-wide object, made and loaded at the first call and never freed. With `reload` the file is read
/// again. `debugDump` counts at the first call: whether what was read is logged at DEBUG instead of TRACE.
FOKRAZO_API vesk::Properties* Props(bool debugDump, bool reload);

namespace vesk {
using ::Props;
}  // namespace vesk
