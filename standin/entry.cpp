#include "standin/entry.h"

#include <charconv>

#include <fokrazo/ascii.h>

namespace standin {
namespace {

const std::string kNoValue;

struct ClassRow {
  const char* objectClass;
  EntryKind kind;
};

// In order of precedence: a computer also has the class "user".
constexpr ClassRow kClasses[] = {
    {"computer", EntryKind::Computer}, {"user", EntryKind::User},        {"posixAccount", EntryKind::User},
    {"group", EntryKind::Group},       {"posixGroup", EntryKind::Group},
};

}  // namespace

Entry::Entry(std::string dn) : m_dn(std::move(dn)) {}

const Attribute* Entry::find(std::string_view name) const {
  for (const Attribute& attribute : m_attributes)
    if (vesk::equalIgnoringCase(attribute.name, name)) return &attribute;
  return nullptr;
}

const std::string& Entry::first(std::string_view name) const {
  const Attribute* attribute = find(name);
  return attribute && !attribute->values.empty() ? attribute->values.front() : kNoValue;
}

int64_t Entry::number(std::string_view name) const {
  const std::string& text = first(name);
  int64_t value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}

bool Entry::has(std::string_view name, std::string_view value) const {
  const Attribute* attribute = find(name);
  if (!attribute) return false;
  for (const std::string& own : attribute->values)
    if (vesk::equalIgnoringCase(own, value)) return true;
  return false;
}

Attribute& Entry::obtain(std::string_view name) {
  // Records list the values of an attribute consecutively, so it is nearly always the last attribute.
  if (!m_attributes.empty() && vesk::equalIgnoringCase(m_attributes.back().name, name))
    return m_attributes.back();
  for (Attribute& attribute : m_attributes)
    if (vesk::equalIgnoringCase(attribute.name, name)) return attribute;
  m_attributes.push_back({std::string(name), {}});
  return m_attributes.back();
}

void Entry::add(std::string_view name, std::string value) {
  obtain(name).values.push_back(std::move(value));
}

void Entry::set(std::string_view name, const std::string& value) {
  obtain(name).values.assign(1, value);
}

EntryKind Entry::kind() const {
  for (const ClassRow& row : kClasses)
    if (has("objectClass", row.objectClass)) return row.kind;
  return EntryKind::Other;
}

bool Entry::isAccount() const {
  EntryKind own = kind();
  return own == EntryKind::User || own == EntryKind::Computer;
}

}  // namespace standin
