#include <fokrazo/queued_message.h>

#include <cstdio>

#include <fokrazo/log_destination.h>

namespace vesk {

QueuedMessage::QueuedMessage(int priority, const char* format, va_list args) : m_priority(priority) {
  char text[512];
  if (vsnprintf(text, sizeof text, format, args) >= 0) m_text = text;
}

QueuedMessage::~QueuedMessage() = default;

void QueuedMessage::run() {
  writeMessage("%s", m_text.c_str());
}

void QueuedMessage::writeMessage(const char* format, ...) {
  va_list args;
  va_start(args, format);
  FinalRendering(m_priority, format, args);
  va_end(args);
}

}  // namespace vesk
