/// Signed 64-bit numbers that travel as decimal text: update sequence numbers and large attribute values.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>

#include <fokrazo/export.h>

namespace vesk {

/// One signed 64-bit number. Thread-safety: a plain value.
class FOKRAZO_API Int64 {
 public:
  Int64() = default;
  /// Any number.
  constexpr Int64(int64_t value) : m_value(value) {}
  /// Reads an optional "-" and decimal digits. The characters are not checked: each counts as its distance
  /// from "0". Overflow wraps around.
  explicit Int64(const std::string& text);

  /// Decimal text.
  operator std::string() const;
  /// The number.
  int64_t value() const { return m_value; }

  /// By value.
  bool operator==(const Int64& other) const { return m_value == other.m_value; }
  bool operator!=(const Int64& other) const { return m_value != other.m_value; }
  bool operator<(const Int64& other) const { return m_value < other.m_value; }

  /// 0, and the greatest number.
  static const Int64 ZERO;
  static const Int64 MAXINT64;

 private:
  int64_t m_value = 0;
};

/// Writes the text form.
FOKRAZO_API std::ostream& operator<<(std::ostream& out, const Int64& number);

}  // namespace vesk
