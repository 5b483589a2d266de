/// Macros for throwing. Internal. The message is cut at 511 characters. A source file defines its name once,
/// as `kSource` ("lrpc/session"), and then writes
///   FOKRAZO_THROW(NotFoundException, "NotFoundException", 0, "User not found");
///   FOKRAZO_THROW_ERRNO(IOException, "IOException", 1, errno, "ipc socket connect");
#pragma once

#include <cstdio>
#include <cstring>

#include <fokrazo/error_util.h>

namespace vesk {

/// A message of at most 511 characters on the stack.
class MessageText {
 public:
  static constexpr unsigned kSize = 512;

  /// printf into the buffer, cut if necessary.
  static MessageText format(const char* format, ...) __attribute__((format(printf, 1, 2)));

  /// `literal`, a format for `args`, then ": " and the system's text for `error`.
  template <class... Args>
  static MessageText withSystemText(int error, const char* literal, Args... args) {
    MessageText withPlaceholder = format("%s: %%s", literal);
    MessageText message;
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
    // strerror's text is per thread. NOLINTNEXTLINE(concurrency-mt-unsafe)
    snprintf(message.m_text, kSize, withPlaceholder.m_text, args..., strerror(error));
#pragma GCC diagnostic pop
    return message;
  }

  const char* c_str() const {
    return m_text;
  }

 private:
  char m_text[kSize] = {};
};

/// Throws SystemException "OS call failed: " and the system's text for `error`.
[[noreturn]] void throwCallFailed(const char* source, int line, int rc, int error);
/// The same with `error` as code, unless it is 0.
inline void checkCall(const char* source, int line, int error) {
  if (error != 0) throwCallFailed(source, line, error, error);
}

}  // namespace vesk

#define FOKRAZO_THROW(Class, className, rc, ...) \
  throw Class(kSource, __LINE__, ::vesk::MessageText::format(__VA_ARGS__).c_str(), className, rc)
#define FOKRAZO_THROW_ERRNO(Class, className, rc, error, ...)                                                \
  throw Class(kSource, __LINE__, ::vesk::MessageText::withSystemText(error, __VA_ARGS__).c_str(), className, \
              rc)
#define FOKRAZO_THROW_CALL_FAILED(rc, error) ::vesk::throwCallFailed(kSource, __LINE__, rc, error)
/// Checks a call whose result is its error.
#define FOKRAZO_CHECK_CALL(error) ::vesk::checkCall(kSource, __LINE__, error)
