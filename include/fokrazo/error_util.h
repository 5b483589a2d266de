/// The exceptions of the library. Every failure is thrown by value and derives from VESKException; nothing
/// returns an error code unless its own comment says so.
#pragma once

#include <exception>
#include <string>

#include <fokrazo/export.h>

/// Root of everything that the library throws.
/// Thread-safety: a plain value.
class FOKRAZO_API VESKException : public std::exception {
 public:
  /// Copies both texts. A leading "vesk::" of `className` is dropped.
  VESKException(const char* what, const char* className, int rc);
  ~VESKException() noexcept override;

  /// The plain message; owned by the exception.
  const char* what() const noexcept override;
  /// The code set by the throw site: an errno, a result of the daemon, or 0.
  virtual int rc() const noexcept;
  /// The name of the class without namespace, such as "IOException"; owned by the exception.
  virtual const char* className() const noexcept;
  /// The number of the class in the list of exception classes that all programs of the family share; 0 if it
  /// is not listed.
  virtual int classID() const noexcept;

 protected:
  /// No message, no class name, code 0.
  VESKException();

 private:
  std::string m_what;
  std::string m_className;
  int m_rc = 0;
};

/// Failures with a code of the base layer (1000 to 1038); a throw leaves a DEBUG line on "base.osutil".
class FOKRAZO_API ZKTException : public VESKException {
 public:
  /// `file` and `line` are the throw site; they are only logged. All strings are copied.
  ZKTException(const char* file, int line, const char* what, const char* className, int rc);
  ~ZKTException() noexcept override;
};

/// Bad input to a value type; rc() is one of the codes that BaseExceptionToString knows.
class FOKRAZO_API BaseException : public ZKTException {
 public:
  using ZKTException::ZKTException;
  ~BaseException() noexcept override;
};

/// The text of a base error code, "Unknown" for any other number. Constant storage. Thread-safe.
FOKRAZO_API const char* BaseExceptionToString(int code);

/// Writes `text` and a newline to standard error and aborts the process.
[[noreturn]] FOKRAZO_API void psn_assert(const char* text);

namespace vesk {

using ::BaseException;
using ::BaseExceptionToString;
using ::psn_assert;
using ::VESKException;
using ::ZKTException;

/// Root of the classes below. A throw leaves one DEBUG line on "util.except".
class FOKRAZO_API Base_Exception : public VESKException {
 public:
  /// `file` and `line` are the throw site; they are only logged. All strings are copied.
  Base_Exception(const char* file, int line, const char* what, const char* className, int rc);
  ~Base_Exception() noexcept override;
};

/// The operation has already been done and cannot be repeated.
class FOKRAZO_API AlreadyException : public Base_Exception {
 public:
  using Base_Exception::Base_Exception;
  ~AlreadyException() noexcept override;
};

/// Malformed bytes or text.
class FOKRAZO_API BadDataException : public Base_Exception {
 public:
  using Base_Exception::Base_Exception;
  ~BadDataException() noexcept override;
};

/// The queue is full.
class FOKRAZO_API BufferFullException : public Base_Exception {
 public:
  using Base_Exception::Base_Exception;
  ~BufferFullException() noexcept override;
};

/// The peer of a connection is gone; the connection carries no further request.
class FOKRAZO_API ConnectionBrokenException : public Base_Exception {
 public:
  using Base_Exception::Base_Exception;
  ~ConnectionBrokenException() noexcept override;
};

/// The stream has ended, or the queue is shutting down. The only class below Base_Exception whose throw is
/// not logged.
class FOKRAZO_API EndOfFileException : public Base_Exception {
 public:
  using Base_Exception::Base_Exception;
  ~EndOfFileException() noexcept override;
};

/// The listing has no more entries.
class FOKRAZO_API EndOfListException : public Base_Exception {
 public:
  using Base_Exception::Base_Exception;
  ~EndOfListException() noexcept override;
};

/// Input or output failed, or the daemon cannot be reached.
class FOKRAZO_API IOException : public Base_Exception {
 public:
  using Base_Exception::Base_Exception;
  ~IOException() noexcept override;
};

/// There is no such object.
class FOKRAZO_API NotFoundException : public Base_Exception {
 public:
  using Base_Exception::Base_Exception;
  ~NotFoundException() noexcept override;
};

/// A system call failed, or the daemon could not do what was asked.
class FOKRAZO_API SystemException : public Base_Exception {
 public:
  using Base_Exception::Base_Exception;
  ~SystemException() noexcept override;
};

/// The peer did not answer in time; the position in its stream is unknown.
class FOKRAZO_API TimeoutException : public Base_Exception {
 public:
  using Base_Exception::Base_Exception;
  ~TimeoutException() noexcept override;
};

/// Too busy now; the same call may work later.
class FOKRAZO_API TryAgainException : public Base_Exception {
 public:
  using Base_Exception::Base_Exception;
  ~TryAgainException() noexcept override;
};

/// Makes a runner leave its queue. Not a failure.
class FOKRAZO_API QueueInterrupted : public VESKException {
 public:
  QueueInterrupted();
  ~QueueInterrupted() noexcept override;
  /// "QueueInterrupted exception".
  const char* what() const noexcept override;
};

}  // namespace vesk
