/// strtoul with a 32-bit result on every platform. Internal.
#pragma once

#include <climits>
#include <cstdlib>

#include <fokrazo/ascii.h>

namespace vesk {

/// strtoul as on platforms with a 32-bit unsigned long: "-" negates in two's complement, and overflow returns
/// UINT_MAX. Nothing else wraps around, so that too large an id never becomes another user's.
inline unsigned int strtou32(const char* text, char** end, int base) {
  // Fast path for a few decimal digits, without the locale.
  constexpr int kSafeDigits = 18;
  unsigned long plain = 0;
  int digits = 0;
  if (base == 10)
    for (; digits <= kSafeDigits && isAsciiDigit(text[digits]); ++digits)
      plain = 10 * plain + static_cast<unsigned long>(text[digits] - '0');
  if (digits > 0 && digits <= kSafeDigits) {
    *end = const_cast<char*>(text + digits);
    return plain <= UINT_MAX ? static_cast<unsigned int>(plain) : UINT_MAX;
  }
  const char* sign = text;
  while (isAsciiSpace(*sign)) ++sign;
  const unsigned long number = strtoul(text, end, base);
  const unsigned long magnitude = *sign == '-' ? 0 - number : number;
  return magnitude <= UINT_MAX ? static_cast<unsigned int>(number) : UINT_MAX;
}

}  // namespace vesk
