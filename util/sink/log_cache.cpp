#include <fokrazo/log_cache.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "util/thread/thread_internal.h"

namespace vesk {

LogCache::LogCache(unsigned int size) {
  initBuf(size);
}

LogCache::LogCache(unsigned int size, FILE* file) : m_file(file) {
  initBuf(size);
}

LogCache::~LogCache() {
  const CancelKeptOff cancelKeptOff;
  destroyBuf();
}

int LogCache::initBuf(unsigned int size) {
  m_buffer = m_position = m_last = nullptr;
  m_size = 0;
  if (size == 0) return 0;
  m_buffer = static_cast<char*>(calloc(size, 1));
  if (m_buffer == nullptr) return -1;
  m_size = size;
  m_position = m_buffer;
  m_last = m_buffer + size - 1;
  return 0;
}

void LogCache::destroyBuf() {
  flush();
  free(m_buffer);
  m_buffer = m_position = m_last = nullptr;
  m_size = 0;
}

// The last byte stays free, except in a cache of one byte.
size_t LogCache::makeRoom() {
  if (m_position >= m_last && m_position > m_buffer) flush();
  return std::max<size_t>(m_last - m_position, 1);
}

void LogCache::append(const char* text) {
  append(text, strlen(text));
}

void LogCache::append(const char* text, size_t length) {
  if (!isActive()) return;
  for (size_t count; length > 0; length -= count) {
    count = std::min(length, makeRoom());
    memcpy(m_position, text, count);
    m_position += count;
    text += count;
  }
}

void LogCache::append(char c) {
  if (!isActive()) return;
  makeRoom();
  *m_position++ = c;
}

// Formats directly into the cache if any text fits. Copies what precedes the first conversion.
void LogCache::vsappend(const char* format, va_list args) {
  if (!isActive()) return;
  const size_t plain = strcspn(format, "%");
  if (room() < kLongestText || plain >= kLongestText) {
    char text[kLongestText + 1];
    if (vsnprintf(text, sizeof text, format, args) >= 0) append(text);
    return;
  }
  char* const begin = m_position;
  append(format, plain);
  const bool printed = vsnprintf(m_position, kLongestText + 1 - plain, format + plain, args) >= 0;
  m_position = printed ? m_position + strlen(m_position) : begin;
}

void LogCache::flush() {
  if (!isActive()) return;
  write();
  memset(m_buffer, 0, m_position - m_buffer);
  m_position = m_buffer;
}

void LogCache::write() const {
  if (m_file == nullptr || isEmpty()) return;
  fwrite(m_buffer, 1, m_position - m_buffer, m_file);
  fflush(m_file);
}

void LogCache::reconfigure(unsigned int size, FILE* file) {
  if (file != nullptr) m_file = file;
  if (size == m_size) {
    flush();
  } else {
    destroyBuf();
    initBuf(size);
  }
}

}  // namespace vesk
