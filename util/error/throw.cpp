#include "util/error/throw.h"

#include <cstdarg>

namespace vesk {

MessageText MessageText::format(const char* format, ...) {
  MessageText message;
  va_list args;
  va_start(args, format);
  static_cast<void>(vsnprintf(message.m_text, kSize, format, args));
  va_end(args);
  return message;
}

void throwCallFailed(const char* source, int line, int rc, int error) {
  throw SystemException(source, line, MessageText::withSystemText(error, "OS call failed").c_str(),
                        "vesk::SystemException", rc);
}

}  // namespace vesk
