/// Frames: 4 bytes of length in the host's byte order, then the message.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "daemon/wiped_bytes.h"

namespace brondalt {

/// The frame of a message.
std::string frame(std::string_view message);

/// Cuts a stream of bytes into messages. Requests may carry passwords, so bytes are wiped once they have been
/// used. Memory grows with the bytes that arrive, not with the length that a frame announces.
/// Thread-safety: one thread at a time.
class FrameReader {
 public:
  enum class Result { Message, Incomplete, BadLength };

  /// A message of 0 bytes, or of more than `mostBytes`, is a bad length.
  explicit FrameReader(size_t mostBytes) : m_mostBytes(mostBytes) {}

  /// Appends what has arrived. Ends the life of the last message.
  void append(std::string_view bytes);
  /// Removes the next message; after a bad length there is none. Valid until the next call.
  Result next(std::string_view& message);
  /// Whether a frame has begun that next() has not returned.
  bool hasPartOfFrame() const { return m_served < m_bytes.size(); }

 private:
  void dropServed();

  size_t m_mostBytes;
  WipedBytes m_bytes;
  size_t m_served = 0;  // bytes at the front that next() has returned
};

}  // namespace brondalt
