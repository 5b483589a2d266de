/// Numbers in a fixed byte order: LoHi is little-endian, HiLo big-endian. Addresses need not be aligned, and
/// the host's own order does not matter. The caller guarantees that the 1, 2 or 4 bytes exist. Thread-safe.
#pragma once

#include <cstdint>

namespace vesk {

// Read a number of 8, 16 or 32 bits from an address, or write one there.

inline uint8_t Get8(const void* bytes) {
  return *static_cast<const uint8_t*>(bytes);
}

inline void Put8(void* bytes, uint8_t value) {
  *static_cast<uint8_t*>(bytes) = value;
}

inline uint16_t GetLoHi16(const void* bytes) {
  const auto* p = static_cast<const uint8_t*>(bytes);
  return static_cast<uint16_t>(Get8(p) | Get8(p + 1) << 8);
}

inline void PutLoHi16(void* bytes, uint16_t value) {
  auto* p = static_cast<uint8_t*>(bytes);
  Put8(p, static_cast<uint8_t>(value));
  Put8(p + 1, static_cast<uint8_t>(value >> 8));
}

inline uint32_t GetLoHi32(const void* bytes) {
  const auto* p = static_cast<const uint8_t*>(bytes);
  return GetLoHi16(p) | static_cast<uint32_t>(GetLoHi16(p + 2)) << 16;
}

inline void PutLoHi32(void* bytes, uint32_t value) {
  auto* p = static_cast<uint8_t*>(bytes);
  PutLoHi16(p, static_cast<uint16_t>(value));
  PutLoHi16(p + 2, static_cast<uint16_t>(value >> 16));
}

inline uint16_t GetHiLo16(const void* bytes) {
  const auto* p = static_cast<const uint8_t*>(bytes);
  return static_cast<uint16_t>(Get8(p) << 8 | Get8(p + 1));
}

inline void PutHiLo16(void* bytes, uint16_t value) {
  auto* p = static_cast<uint8_t*>(bytes);
  Put8(p, static_cast<uint8_t>(value >> 8));
  Put8(p + 1, static_cast<uint8_t>(value));
}

inline uint32_t GetHiLo32(const void* bytes) {
  const auto* p = static_cast<const uint8_t*>(bytes);
  return static_cast<uint32_t>(GetHiLo16(p)) << 16 | GetHiLo16(p + 2);
}

inline void PutHiLo32(void* bytes, uint32_t value) {
  auto* p = static_cast<uint8_t*>(bytes);
  PutHiLo16(p, static_cast<uint16_t>(value >> 16));
  PutHiLo16(p + 2, static_cast<uint16_t>(value));
}

}  // namespace vesk
