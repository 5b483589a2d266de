/// The memory log: the newest messages, as plain text in a ring buffer in the process's memory. Markers make
/// them easy to find in a core file; docs/memory-log.md shows how.
#pragma once

#include <atomic>
#include <cstdarg>
#include <string>

#include <boost/shared_ptr.hpp>

#include <fokrazo/export.h>

namespace vesk {

class Logger;

/// An entry is "_cbuf ", time, host, program and process, the text with control characters escaped, and a
/// newline; after the newest entry comes "_cbuf_END__" and a newline. An entry has at most 1023 characters.
/// It is never split at the end of the ring, which is filled with blanks instead. Bytes that were never
/// written are zero. Off until the program allows it and the configuration starts it; then on until the
/// process ends. Thread-safety: every operation may be called from any thread.
class FOKRAZO_API CircularBuffer {
 public:
  CircularBuffer();
  ~CircularBuffer();
  CircularBuffer(const CircularBuffer&) = delete;
  CircularBuffer& operator=(const CircularBuffer&) = delete;

  /// The process's memory log; empty before the first logger is created and after Logger::close.
  static boost::shared_ptr<CircularBuffer> GetCircularBuffer();
  /// The configured size of the ring in bytes (`logger.memory.bufsize`, in kilobytes): 128 kilobytes by
  /// default, never less than 10.
  static unsigned int configuredSize();

  /// Creates the ring, of the configured size or of `bytes`, but at least 10 kilobytes. Returns true if the
  /// memory log is on afterwards; false if it is not allowed or memory runs out. Reports to `logger`, which
  /// may be empty, at WARN.
  bool init(boost::shared_ptr<Logger> logger);
  bool init(boost::shared_ptr<Logger> logger, unsigned int bytes);
  /// Adds an entry. Costs one comparison while the memory log is off.
  void log(const char* format, va_list args) __attribute__((format(printf, 2, 0)));
  /// Sets the root logger's memory level and, with `enable`, creates the ring. Without `enable`, an existing
  /// ring is still written.
  void reconfigure(bool enable, std::string level);

  /// Whether there is a ring, and whether the process allows one.
  bool isEnabled() const { return m_enabled.load(std::memory_order_relaxed); }
  bool isActive() const { return m_active.load(std::memory_order_relaxed); }
  /// Allows the memory log, or has later configurations ignore it.
  void setActive(bool active) { m_active.store(active, std::memory_order_relaxed); }

  /// Empties the ring, in a child process whose parent was writing an entry. Requires: no other thread.
  __attribute__((visibility("hidden"))) void restart();

 private:
  bool makeRing(unsigned int bytes);
  void put(unsigned int length);

  char* m_start = nullptr;    // the ring
  char* m_current = nullptr;  // where the next entry goes: over the end marker, after its first newline
  unsigned int m_size = 0;
  char* m_scratch;  // where an entry is built
  std::atomic<bool> m_enabled{false};
  std::atomic<bool> m_active{false};
};

}  // namespace vesk
