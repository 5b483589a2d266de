/// A finished message in the background queue.
#pragma once

#include <cstdarg>
#include <string>

#include <fokrazo/export.h>
#include <fokrazo/runqueue.h>

namespace vesk {

/// One log line. Thread-safety: one thread creates it, another runs it.
class FOKRAZO_API QueuedMessage : public QueueAble {
 public:
  /// `priority` is facility and priority together, as for syslog. The text is escaped, and cut at 511
  /// characters.
  QueuedMessage(int priority, const char* format, va_list args) __attribute__((format(printf, 3, 0)));
  ~QueuedMessage() override;

  /// Sends the message to the destination.
  void run() override;
  /// Sends another text with the same priority.
  void writeMessage(const char* format, ...) FOKRAZO_PRINTF(2, 3);

 private:
  int m_priority;
  std::string m_text;
};

}  // namespace vesk
