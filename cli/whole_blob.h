/// Whether bytes are one whole serialized object (see <fokrazo/adserializer.h>).
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace cli {

/// Says what is damaged, and what to do about it.
class DamagedBlob : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Checks header, index and records; `entries` is the number of entries of the dictionary that the blob was
/// written with. Stricter than the library, which reads as much as it can.
/// @throws DamagedBlob any part is missing, left over or impossible
void requireWhole(const std::string& blob, uint32_t entries);

}  // namespace cli
