/// The log file's write cache.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <string_view>

#include <fokrazo/export.h>

namespace vesk {

/// Collects text and writes it to a stream in one piece. With size 0, or if there was no memory, it is
/// inactive and every operation does nothing. Write errors are not reported. Thread-safety: none; its owner
/// locks it.
class FOKRAZO_API LogCache {
 public:
  /// The longest text of vsappend, in characters.
  static constexpr size_t kLongestText = 1023;

  /// A cache of `size` bytes for `file`, which the caller owns and which may be null.
  explicit LogCache(unsigned int size);
  LogCache(unsigned int size, FILE* file);
  /// Flushes.
  virtual ~LogCache();
  LogCache(const LogCache&) = delete;
  LogCache& operator=(const LogCache&) = delete;

  /// If false, every operation does nothing.
  bool isActive() const { return m_buffer != nullptr; }
  /// Replaces the stream, which the caller owns. With a null stream, flushed text is lost.
  void setFileFP(FILE* file) { m_file = file; }

  /// Add text, flushing whenever the cache is full.
  void append(const char* text);
  void append(const char* text, size_t length);
  void append(char c);
  /// printf; the text is cut at kLongestText.
  void vsappend(const char* format, va_list args) __attribute__((format(printf, 2, 0)));

  /// Free bytes.
  size_t room() const { return m_position < m_last ? m_last - m_position : 0; }
  /// Whether there is nothing to write.
  bool isEmpty() const { return m_position == m_buffer; }
  /// What has not been written yet. Valid until the next operation.
  std::string_view content() const { return {m_buffer, static_cast<size_t>(m_position - m_buffer)}; }
  /// Writes the content to the stream, and flushes that.
  void write() const;
  /// Writes, and then empties the cache.
  void flush();
  /// Flushes, and allocates a new buffer if the size differs. A null `file` leaves the stream as it is.
  void reconfigure(unsigned int size, FILE* file);
  /// Allocates the buffer. Returns 0, or -1 if there is no memory. Requires: no buffer yet.
  int initBuf(unsigned int size);
  /// Flushes and frees the buffer.
  void destroyBuf();

 private:
  size_t makeRoom();

  FILE* m_file = nullptr;
  char* m_buffer = nullptr;
  char* m_position = nullptr;  // first free byte
  char* m_last = nullptr;      // the buffer's last byte
  unsigned int m_size = 0;
};

}  // namespace vesk
