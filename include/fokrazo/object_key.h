/// By what a directory object is looked up.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <variant>

#include <fokrazo/export.h>
#include <fokrazo/guid.h>
#include <fokrazo/session_types.h>
#include <fokrazo/sid.h>

namespace vesk {

/// A name, a Unix id, a SID or a GUID. Thread-safety: a plain value.
class FOKRAZO_API ObjectKey {
 public:
  /// A name in any form that the daemon knows: Unix name, account name, DOMAIN\name, name@domain, DN.
  ObjectKey(std::string name) : m_key(std::move(name)) {}
  ObjectKey(const char* name) : m_key(std::string(name)) {}
  /// A uid or gid.
  ObjectKey(uint32_t id) : m_key(id) {}
  ObjectKey(const SID& sid) : m_key(sid) {}
  ObjectKey(const Guid& guid) : m_key(guid) {}

  /// Which of the four it is.
  KeyKind kind() const { return static_cast<KeyKind>(m_key.index()); }
  /// The key as a person would type it.
  std::string text() const;

  /// What the key is. @throws std::bad_variant_access it is something else
  const std::string& name() const { return std::get<std::string>(m_key); }
  uint32_t id() const { return std::get<uint32_t>(m_key); }
  const SID& sid() const { return std::get<SID>(m_key); }
  const Guid& guid() const { return std::get<Guid>(m_key); }

 private:
  std::variant<std::string, Guid, uint32_t, SID> m_key;  // in the order of KeyKind
};

}  // namespace vesk
