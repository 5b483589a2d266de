/// String constants that are never destroyed. Internal.
#pragma once

#include <cstddef>
#include <new>
#include <string>

namespace vesk {

/// A string built at load time and never destroyed, so no exit handler is registered.
class LastingText {
 public:
  LastingText(const char* text, size_t size) { new (m_place) std::string(text, size); }

 private:
  alignas(std::string) unsigned char m_place[sizeof(std::string)];
};

}  // namespace vesk

/// Defines `name`, a reference to a string with that literal. Bound before any code runs.
// NOLINTBEGIN(bugprone-macro-parentheses): a declared name takes none
#define FOKRAZO_LASTING_TEXT(name, literal)                                 \
  static const vesk::LastingText name##_TEXT{literal, sizeof(literal) - 1}; \
  const std::string& name = reinterpret_cast<const std::string&>(name##_TEXT)
// NOLINTEND(bugprone-macro-parentheses)
