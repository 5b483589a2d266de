/// The layout of a blob, for the code that reads and writes one. Internal.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include <fokrazo/adserializer.h>

namespace vesk {
namespace blob {

// Offsets of the fields of the header.
constexpr size_t kAcquired = 0;
constexpr size_t kGuid = 4;
constexpr size_t kUsn = 20;
constexpr size_t kFlags = 28;
constexpr size_t kCount = 32;
static_assert(sizeof(Guid) == kUsn - kGuid, "a GUID is its 16 bytes");

constexpr uint32_t kIsIndexed = 1;  // of the flags
constexpr size_t kWord = 4;
constexpr uint32_t kReference = 0x80000000;  // marks an index into the dictionary

template <class T>
T load(const unsigned char* from) {
  T value;
  memcpy(&value, from, sizeof value);
  return value;
}

template <class T>
void store(unsigned char* to, T value) {
  memcpy(to, &value, sizeof value);
}

}  // namespace blob

// The header reads as 0 if there is no blob.

template <class T>
T ADSerializer::header(size_t offset) const {
  return m_data ? blob::load<T>(m_data + offset) : T();
}

template <class T>
void ADSerializer::setHeader(size_t offset, T value) {
  if (m_data) blob::store(m_data + offset, value);
}

}  // namespace vesk
