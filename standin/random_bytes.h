/// Unpredictable bytes.
#pragma once

#include <random>
#include <string>

namespace standin {

inline std::string randomBytes(size_t count) {
  std::random_device source;
  std::string bytes;
  while (bytes.size() < count) bytes += static_cast<char>(source());
  return bytes;
}

}  // namespace standin
