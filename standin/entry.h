/// One entry of the directory, as read from its LDIF record.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace standin {

/// One attribute of an entry: its name as the record spells it, and the raw bytes of its values in order.
struct Attribute {
  std::string name;
  std::vector<std::string> values;
};

/// What an entry is to a Unix host. Contacts, organizational units and so on are `Other`.
enum class EntryKind { User, Computer, Group, Other };

/// A directory entry: a DN and attributes in the order of the record. Attribute names ignore the case of
/// ASCII letters, as everywhere in a directory.
/// Thread-safety: a plain value.
class Entry {
 public:
  explicit Entry(std::string dn);

  const std::string& dn() const { return m_dn; }
  const std::vector<Attribute>& attributes() const { return m_attributes; }

  /// The attribute, or null if the entry does not have it.
  const Attribute* find(std::string_view name) const;
  /// The attribute's first value, or the empty string.
  const std::string& first(std::string_view name) const;
  /// The number at the start of the attribute's first value; 0 if there is none, or it is too large.
  int64_t number(std::string_view name) const;
  /// Whether the attribute has this value, ignoring the case of ASCII letters.
  bool has(std::string_view name, std::string_view value) const;

  /// Appends a value.
  void add(std::string_view name, std::string value);
  /// Replaces all values by one.
  void set(std::string_view name, const std::string& value);

  /// Decided by the object classes.
  EntryKind kind() const;
  /// Whether it is a user or a computer, which have passwords and groups.
  bool isAccount() const;

 private:
  Attribute& obtain(std::string_view name);

  std::string m_dn;
  std::vector<Attribute> m_attributes;
};

/// Whether two texts are equal, ignoring the case of ASCII letters.
bool equalFolded(std::string_view a, std::string_view b);

}  // namespace standin
