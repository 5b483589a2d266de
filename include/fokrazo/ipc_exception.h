/// Exceptions that the daemon puts into a reply, for the caller of the operation.
#pragma once

#include <string>

#include <fokrazo/error_util.h>
#include <fokrazo/export.h>

/// Of lber.h.
typedef struct berelement BerElement;

namespace vesk {

/// A failure in the daemon, with the daemon's text. It has only a message: class name, class number and code
/// are empty. Its throw is not logged. On the wire it is two fields: type (INTEGER) and text (OCTET STRING).
/// Thread-safety: a plain value.
class FOKRAZO_API IPCException : public VESKException {
 public:
  /// Wire values 1 to 5: this class and the four instances of IPCExceptionDerived.
  enum IPCExceptionTypeID : int { kPlain = 1 };

  /// `message` is the daemon's text.
  explicit IPCException(const std::string& message);
  ~IPCException() noexcept override;

  /// The daemon's text; owned by the exception.
  const char* what() const noexcept override;
  /// Its type in a message.
  virtual IPCExceptionTypeID getTypeCode();
  /// Appends type and text, up to its first NUL byte, to a message that is being written.
  /// @throws IOException the message cannot grow
  virtual void encode(BerElement* ber);

  /// Reads both fields and throws that exception; for an unknown type, an IPCException "Unknown error". `ber`
  /// may be null. @throws IOException the two fields are missing
  [[noreturn]] static void decodeAndThrow(BerElement* ber);

 private:
  std::string m_message;
};

/// The daemon's exceptions of type 2 to 5. Only the daemon knows their meaning.
template <int N>
class FOKRAZO_API IPCExceptionDerived : public IPCException {
 public:
  using IPCException::IPCException;
  ~IPCExceptionDerived() noexcept override;
  IPCExceptionTypeID getTypeCode() override;
};

extern template class IPCExceptionDerived<2>;
extern template class IPCExceptionDerived<3>;
extern template class IPCExceptionDerived<4>;
extern template class IPCExceptionDerived<5>;

}  // namespace vesk
