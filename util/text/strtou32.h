/// strtoul with a 32-bit result on every platform. Internal.
#pragma once

#include <climits>
#include <cstdlib>

#include "util/text/ascii.h"

namespace vesk {

/// strtoul as it works where unsigned long has 32 bits: a number after "-" is negated in two's complement,
/// and a number that does not fit becomes UINT_MAX. No other number wraps around, so that an id that is too
/// large never turns into another user's.
inline unsigned int strtou32(const char* text, char** end, int base) {
  // The common case, a few decimal digits, without the cost of a locale.
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
