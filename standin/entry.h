/// One directory entry, from an LDIF record.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace standin {

/// One attribute: its name as in the record, and its raw values in order.
struct Attribute {
  std::string name;
  std::vector<std::string> values;
};

/// The meaning of an entry for a Unix host. Contacts, organizational units and others are `Other`.
enum class EntryKind { User, Computer, Group, Other };

/// A directory entry: a DN and attributes in the order of the record. Attribute names ignore the case of
/// ASCII letters.
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
  /// Replaces all values with one.
  void set(std::string_view name, const std::string& value);

  /// Derived from the object classes.
  EntryKind kind() const;
  /// Whether it is a user or a computer; these have passwords and groups.
  bool isAccount() const;

 private:
  Attribute& obtain(std::string_view name);

  std::string m_dn;
  std::vector<Attribute> m_attributes;
};

}  // namespace standin
