/// Frames: the message's length in 4 bytes of host byte order, then the message.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "daemon/wiped_bytes.h"

namespace brondalt {

/// The frame of a message.
std::string frame(std::string_view message);

/// Splits a byte stream into messages. Requests may contain passwords, so bytes are wiped after use. Memory
/// grows with the bytes received, not with the announced length.
/// Thread-safety: one thread at a time.
class FrameReader {
 public:
  enum class Result { Message, Incomplete, BadLength };

  /// A message of 0 bytes, or of more than `maxBytes`, is a bad length.
  explicit FrameReader(size_t maxBytes) : m_maxBytes(maxBytes) {}

  /// Appends received bytes. Invalidates the last message.
  void append(std::string_view bytes);
  /// Removes the next message; after a bad length there are none. `message` is valid until the next call.
  Result next(std::string_view& message);
  /// Whether there is an incomplete frame.
  bool hasPartOfFrame() const { return m_served < m_bytes.size(); }

 private:
  void dropServed();

  size_t m_maxBytes;
  WipedBytes m_bytes;
  size_t m_served = 0;  // leading bytes that next() has returned
};

}  // namespace brondalt
