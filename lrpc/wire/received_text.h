/// Owns the bytes that the BER layer allocates for an OCTET STRING. Internal.
#pragma once

#include <cstddef>
#include <cstring>
#include <string>

#include <fokrazo/qtr_ber.h>

namespace vesk {

/// Wipes and frees the bytes when destroyed. Belongs to one thread.
class ReceivedText {
 public:
  ReceivedText() = default;
  ReceivedText(const ReceivedText&) = delete;
  ReceivedText& operator=(const ReceivedText&) = delete;
  ~ReceivedText() {
    if (!m_bytes.bv_val) return;
    explicit_bzero(m_bytes.bv_val, m_bytes.bv_len);
    qtr_ber_memfree(m_bytes.bv_val);
  }

  /// The argument for the format letter "o" of qtr_ber_scanf.
  berval* target() { return &m_bytes; }
  char* data() { return m_bytes.bv_val; }
  size_t size() const { return m_bytes.bv_len; }
  std::string text() const {
    return m_bytes.bv_len > 0 ? std::string(m_bytes.bv_val, m_bytes.bv_len) : std::string();
  }

 private:
  berval m_bytes = {};
};

}  // namespace vesk
