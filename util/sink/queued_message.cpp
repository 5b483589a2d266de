#include <fokrazo/queued_message.h>

#include <fokrazo/log_destination.h>
#include "util/sink/log_text.h"

namespace vesk {

QueuedMessage::QueuedMessage(int priority, const char* format, va_list args) : m_priority(priority) {
  char text[512];
  m_text.assign(text, formatEscaped(text, sizeof text, format, args));
}

QueuedMessage::~QueuedMessage() = default;

// A newline here comes from the format; all others are escaped.
void QueuedMessage::run() {
  if (!m_text.empty() && m_text.back() == '\n')
    writeMessage("%.*s\n", static_cast<int>(m_text.size() - 1), m_text.c_str());
  else
    writeMessage("%s", m_text.c_str());
}

void QueuedMessage::writeMessage(const char* format, ...) {
  va_list args;
  va_start(args, format);
  FinalRendering(m_priority, format, args);
  va_end(args);
}

}  // namespace vesk
