/// One attribute of a directory object: a list of text values with a name and two flags.
#pragma once

#include <iosfwd>
#include <list>
#include <map>
#include <string>
#include <string_view>

#include <fokrazo/export.h>
#include <fokrazo/int64.h>

/// Booleans as attribute values: "TRUE" and "FALSE".
FOKRAZO_API extern const std::string TRUE_STR;
FOKRAZO_API extern const std::string FALSE_STR;

namespace vesk {

/// All values are text; numbers, booleans and times are converted on each read and write. Iteration and size
/// come from std::list; changes made through std::list's own operations leave the flags as they are. Readers
/// throw SystemException "ADAttribute '…' is empty" if there is no value.
/// Thread-safety: a plain value.
class FOKRAZO_API ADAttribute : public std::list<std::string> {
 public:
  /// The values without the name and the flags.
  using Values = std::list<std::string>;

  ADAttribute() = default;
  /// No values, both flags false.
  explicit ADAttribute(std::string_view name);

  /// The name as first passed to a lookup; empty if the attribute was never looked up by name.
  const std::string& name() const { return m_name; }
  /// The name in lower case.
  const std::string& lcName() const { return m_lcName; }
  /// The values were changed since they came from the directory.
  bool dirty() const { return m_dirty; }
  /// The values are what the object's current blob holds.
  bool serialized() const { return m_serialized; }
  /// For the object that holds the attribute.
  void setName(std::string_view name);
  void setMarks(bool dirty, bool serialized);

  /// The first value.
  operator std::string() const;
  /// Whether the first value is "TRUE" in any case.
  bool toBool() const;
  /// The first value as atoi reads it.
  int toInt() const;
  /// The first value as atoui reads it: decimal, 0x… or 0….
  unsigned int toUInt() const;
  /// The first value as decimal digits after an optional "-"; the characters are not checked.
  Int64 toInt64() const;
  /// The first value as a directory time, "YYYYMMDDhhmmss.0Z", in seconds since the epoch.
  /// @throws SystemException also for a value of another form or before the epoch.
  long toTime() const;
  /// The low 32 bits of toInt64(), signed.
  long toUnixTime() const;

  // Each of these replaces the values and marks the attribute dirty and not serialized. The empty string
  // clears the values and leaves both flags.
  ADAttribute& operator=(const std::string& value);
  ADAttribute& operator=(const char* value);
  ADAttribute& operator=(bool value);
  ADAttribute& operator=(int value);
  ADAttribute& operator=(unsigned int value);
  ADAttribute& operator=(long value);
  ADAttribute& operator=(Int64 value);
  ADAttribute& operator=(const Values& values);

  // These append and set the same flags; an empty string or list changes nothing.
  ADAttribute& operator+=(const std::string& value);
  ADAttribute& operator+=(const Values& values);

  /// Sets both flags and appends the value, even an empty one.
  void addVal(const std::string& value, bool dirty, bool serialized);
  void addVal(const char* value, bool dirty, bool serialized);
  void addVal(int value, bool dirty, bool serialized);
  void addVal(bool value, bool dirty, bool serialized);
  /// Splits at commas, trims, and appends each piece as addVal does; empty pieces are dropped.
  void addCList(const std::string& text, bool dirty, bool serialized);

  /// Whether the values are the same, in the same order; name and flags are ignored.
  bool operator==(const ADAttribute& other) const;
  bool operator!=(const ADAttribute& other) const { return !(*this == other); }

  /// Prints one line: name, flags and values, in hexadecimal where not printable. To standard output by
  /// default.
  void dump() const;
  void dump(std::ostream& out) const;

 private:
  const std::string& first() const;

  bool m_dirty = false;
  bool m_serialized = false;
  std::string m_name;
  std::string m_lcName;
};

/// Attributes by name, ordered by the bytes of the name; case counts.
using ADAttributeMap = std::map<std::string, ADAttribute, std::less<>>;

}  // namespace vesk
