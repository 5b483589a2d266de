/// The write cache in front of the log file.
#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <string_view>

#include <fokrazo/export.h>

namespace vesk {

/// Collects text and writes it to a stream in one piece. It is inactive, and no operation does anything, if
/// its size is 0 or there was no memory. Failures of writing are not reported. Thread-safety: none; its owner
/// locks it.
class FOKRAZO_API LogCache {
 public:
  /// Where vsappend cuts, in characters.
  static constexpr size_t kLongestText = 1023;

  /// A cache of `size` bytes in front of `file`, which the caller owns and which may be null.
  explicit LogCache(unsigned int size);
  LogCache(unsigned int size, FILE* file);
  /// Writes out what is left.
  virtual ~LogCache();
  LogCache(const LogCache&) = delete;
  LogCache& operator=(const LogCache&) = delete;

  /// If false, every operation does nothing.
  bool isActive() const { return m_buffer != nullptr; }
  /// Replaces the stream, which the caller owns. With a null stream, what is flushed is lost.
  void setFileFP(FILE* file) { m_file = file; }

  /// Add text; a full cache is flushed, as often as necessary.
  void append(const char* text);
  void append(const char* text, size_t length);
  void append(char c);
  /// printf; the text is cut at kLongestText.
  void vsappend(const char* format, va_list args) __attribute__((format(printf, 2, 0)));

  /// How many bytes can be added before it is full.
  size_t room() const { return m_position < m_last ? m_last - m_position : 0; }
  /// Whether nothing waits to be written.
  bool isEmpty() const { return m_position == m_buffer; }
  /// What waits to be written. Good until the next operation.
  std::string_view content() const { return {m_buffer, static_cast<size_t>(m_position - m_buffer)}; }
  /// Writes the content to the stream, through to the system.
  void write() const;
  /// Writes, and then empties the cache.
  void flush();
  /// Flushes, and makes a new buffer if the size differs. A null `file` leaves the stream as it is.
  void reconfigure(unsigned int size, FILE* file);
  /// Makes the buffer. 0, or -1 if there is no memory. Requires: there is none yet.
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
