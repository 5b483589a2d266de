#include "daemon/frame_reader.h"

#include <cstdint>
#include <cstring>

namespace brondalt {
namespace {

/// A larger buffer is freed when it is empty.
constexpr size_t kKeptBytes = 256 << 10;

}  // namespace

std::string frame(std::string_view message) {
  const auto length = static_cast<uint32_t>(message.size());
  std::string bytes;
  bytes.reserve(sizeof length + message.size());
  bytes.append(reinterpret_cast<const char*>(&length), sizeof length);
  return bytes.append(message);
}

void FrameReader::append(std::string_view bytes) {
  dropServed();
  if (m_bytes.empty() && m_bytes.capacity() > kKeptBytes) m_bytes.shrink_to_fit();
  m_bytes.insert(m_bytes.end(), bytes.begin(), bytes.end());
}

void FrameReader::dropServed() {
  if (m_served == 0) return;
  const size_t left = m_bytes.size() - m_served;
  memmove(m_bytes.data(), m_bytes.data() + m_served, left);
  explicit_bzero(m_bytes.data() + left, m_served);
  m_bytes.resize(left);
  m_served = 0;
}

FrameReader::Result FrameReader::next(std::string_view& message) {
  uint32_t length = 0;
  const std::string_view rest(m_bytes.data() + m_served, m_bytes.size() - m_served);
  if (rest.size() < sizeof length) return Result::Incomplete;
  memcpy(&length, rest.data(), sizeof length);
  if (length == 0 || length > m_maxBytes) return Result::BadLength;
  if (rest.size() - sizeof length < length) return Result::Incomplete;
  message = rest.substr(sizeof length, length);
  m_served += sizeof length + length;
  return Result::Message;
}

}  // namespace brondalt
