/// strtoul with a 32-bit result on every platform. Internal.
#pragma once

#include <climits>
#include <cstdlib>

namespace vesk {

/// As strtoul where unsigned long has 32 bits: a "-" in front gives the two's complement, and what does not
/// fit gives the largest number. It never wraps around: an id beyond 32 bits must not become somebody else's.
inline unsigned int strtou32(const char* text, char** end, int base) {
  const unsigned long number = strtoul(text, end, base);
  const bool negative = number > ULONG_MAX - UINT_MAX;
  return number <= UINT_MAX || negative ? static_cast<unsigned int>(number) : UINT_MAX;
}

}  // namespace vesk
