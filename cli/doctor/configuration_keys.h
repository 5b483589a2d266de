/// The keys of the configuration file, and which values they take.
#pragma once

#include <string>
#include <vector>

namespace cli {

/// A key that the library reads.
struct ConfigurationKey {
  enum Form {
    Plain,
    Stem,
    PlainOrStem
  };  // a stem is followed by a dot and a name of the administrator's choice
  enum Kind { Text, Level, Facility, Boolean, Number, Id, Time, Destination };

  const std::string& name;
  Form form;
  Kind kind;
  const char* usual;  // the default, or a typical value where there is none
  long long least;    // of a Number, an Id, or a Time in seconds
  long long most;
  const char* note;  // what a Number counts
};

/// The row of a key, null if the library does not read it.
const ConfigurationKey* findKey(const std::string& key);
/// The names of all of them; ".*" follows a stem.
std::vector<std::string> libraryKeys();
/// Whether the key belongs to the library, whose other programs do not add keys there.
bool isLibraryFamily(const std::string& key);
/// Whether some program around the daemon reads the key.
bool isKnownKey(const std::string& key);
/// The known key that `key` is a misspelling of; empty if there is none.
std::string meantKey(const std::string& key);

/// What the row's values look like, such as "true or false"; empty if `value` is one of them.
std::string expectedInstead(const ConfigurationKey& row, const std::string& value);

}  // namespace cli
