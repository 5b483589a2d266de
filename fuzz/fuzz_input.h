/// For all fuzz targets: an input that is consumed in parts, and a check that aborts the program.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace fuzz {

/// Consumes an input from the front. Past its end it returns zeros and empty strings.
class Input {
 public:
  Input(const uint8_t* data, size_t size) : m_left(reinterpret_cast<const char*>(data), size) {}

  bool empty() const { return m_left.empty(); }
  uint8_t byte() {
    const std::string one = bytes(1);
    return one.empty() ? 0 : static_cast<uint8_t>(one[0]);
  }
  std::string bytes(size_t count) {
    const std::string part(m_left.substr(0, count));
    m_left.remove_prefix(part.size());
    return part;
  }
  /// The text before the next byte `end`, which is dropped; all the rest if there is none.
  std::string upTo(char end) {
    const std::string part = bytes(std::min(m_left.find(end), m_left.size()));
    bytes(1);
    return part;
  }
  std::string rest() { return bytes(m_left.size()); }

 private:
  std::string_view m_left;
};

}  // namespace fuzz

/// Aborts the program if `condition` is false.
#define FUZZ_CHECK(condition)                                                       \
  do {                                                                              \
    if (!(condition)) {                                                             \
      fprintf(stderr, "%s:%d does not hold: %s\n", __FILE__, __LINE__, #condition); \
      abort();                                                                      \
    }                                                                               \
  } while (false)
