/// strtoul with a 32-bit result on every platform. Internal.
#pragma once

#include <climits>
#include <cstdlib>

namespace vesk {

/// As strtoul where unsigned long has 32 bits: a "-" in front gives the two's complement, and what does not
/// fit gives the largest number. It never wraps around: an id beyond 32 bits must not become somebody else's.
inline unsigned int strtou32(const char* text, char** end, int base) {
  // Most numbers are nothing but a few decimal digits, which need no locale.
  constexpr int kSafeDigits = 18;
  unsigned long plain = 0;
  int digits = 0;
  if (base == 10)
    for (; digits <= kSafeDigits && text[digits] >= '0' && text[digits] <= '9'; ++digits)
      plain = 10 * plain + static_cast<unsigned long>(text[digits] - '0');
  if (digits > 0 && digits <= kSafeDigits) {
    *end = const_cast<char*>(text + digits);
    return plain <= UINT_MAX ? static_cast<unsigned int>(plain) : UINT_MAX;
  }
  const unsigned long number = strtoul(text, end, base);
  const bool negative = number > ULONG_MAX - UINT_MAX;
  return number <= UINT_MAX || negative ? static_cast<unsigned int>(number) : UINT_MAX;
}

}  // namespace vesk
