/// The configuration file: one object for the whole process, read from /etc/velmora/velmora.conf at first
/// use.
#pragma once

#include <strings.h>

#include <cstdio>
#include <iosfwd>
#include <list>
#include <map>
#include <string>

#include <boost/shared_ptr.hpp>

#include "util/include/export.h"
#include "util/include/mutex.h"

namespace vesk {

/// Order of property keys: case does not count.
struct StringCaseLessThan {
  bool operator()(const std::string& a, const std::string& b) const {
    return strcasecmp(a.c_str(), b.c_str()) < 0;
  }
};

/// Keys with their values, as one file holds them. Keys ignore case; the first spelling stays.
/// Thread-safety: each operation holds the object's own lock; a reader sees the old file or the new one
/// whole.
class FOKRAZO_API Properties {
 public:
  using Map = std::map<std::string, std::string, StringCaseLessThan>;
  using ValueList = std::list<std::string>;
  using iterator = Map::iterator;

  explicit Properties(bool expandVariables = true, bool debugDump = false);
  ~Properties();

  /// The value, empty if the key is missing.
  std::string getString(const std::string& key);
  /// The value through atoi; `fallback` if it is empty or missing.
  int getInt(const std::string& key, int fallback);
  /// true, yes, 1 or false, no, 0 in any case; anything else gives `fallback`.
  bool getBool(const std::string& key, bool fallback);
  /// A duration in seconds. The value is a number and perhaps a unit letter of s, m, h, d, w, M, y; `unit`
  /// counts where it has none, and for `fallback`.
  long getTime(const std::string& key, char unit, unsigned int fallback);
  /// Looks the final value up in one step; false if the key is missing, with `value` untouched.
  bool lookup(const std::string& key, std::string& value);

  // What else a configuration file offers is declared below by the room that owns this header.

  /// Guards all the maps; recursive. Order: gPropMtx, this, then the loggers' locks.
  Mutex mutex;

  static Mutex gPropMtx;

 private:
  Map m_values;
};

}  // namespace vesk

/// The process-wide object, made and loaded at the first call and never freed. With `reload` the file is read
/// again. `debugDump` counts at the first call: whether what was read is logged at DEBUG instead of TRACE.
FOKRAZO_API vesk::Properties* Props(bool debugDump, bool reload);

namespace vesk {
using ::Props;
}  // namespace vesk
