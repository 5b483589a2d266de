/// One entry of the directory, as its LDIF record tells it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace standin {

/// One attribute of an entry: the name in the record's own spelling, and the values' raw bytes in order.
struct Attribute {
  std::string name;
  std::vector<std::string> values;
};

/// What an entry is to a Unix host. Contacts, organizational units and all the rest are `Other`.
enum class EntryKind { User, Computer, Group, Other };

/// A directory entry: a DN and attributes in the order of the record. Attribute names ignore the case of
/// ASCII letters, as everywhere in a directory.
/// Thread-safety: a plain value.
class Entry {
 public:
  explicit Entry(std::string dn);

  const std::string& dn() const { return m_dn; }
  const std::vector<Attribute>& attributes() const { return m_attributes; }

  /// The attribute of that name, null if the entry has none.
  const Attribute* find(std::string_view name) const;
  /// Its first value, the empty string if there is none.
  const std::string& first(std::string_view name) const;
  /// Its first value as a whole number, as far as there are digits; 0 if there are none, or too many.
  int64_t number(std::string_view name) const;
  /// Whether the attribute has that value; the case of ASCII letters is ignored.
  bool has(std::string_view name, std::string_view value) const;

  /// Appends a value.
  void add(std::string_view name, std::string value);
  /// Replaces all values by one.
  void set(std::string_view name, const std::string& value);

  /// By its object classes.
  EntryKind kind() const;
  /// A user or a computer: what has a password and a list of groups.
  bool isAccount() const;

 private:
  Attribute& obtain(std::string_view name);

  std::string m_dn;
  std::vector<Attribute> m_attributes;
};

/// Whether two texts are equal but for the case of ASCII letters.
bool equalFolded(std::string_view a, std::string_view b);

}  // namespace standin
