/// An OCTET STRING in a received message. Internal.
#pragma once

#include <cstddef>
#include <string>

#include <fokrazo/qtr_ber.h>

namespace vesk {

/// The bytes, where they lie in the message: valid, and wiped, with it. Belongs to one thread.
class ReceivedText {
 public:
  /// Reads the element at the position of `ber`, which may be null. False if there is none.
  bool read(BerElement* ber) { return ber && qtr_ber_skip_element(ber, &m_bytes) != LBER_DEFAULT; }

  char* data() { return m_bytes.bv_val; }
  size_t size() const { return m_bytes.bv_len; }
  std::string text() const {
    return m_bytes.bv_len > 0 ? std::string(m_bytes.bv_val, m_bytes.bv_len) : std::string();
  }

 private:
  berval m_bytes = {};
};

}  // namespace vesk
