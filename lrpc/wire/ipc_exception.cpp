#include <fokrazo/ipc_exception.h>

#include <cstring>

#include <fokrazo/qtr_ber.h>
#include "lrpc/wire/received_text.h"
#include "util/error/throw.h"

namespace vesk {

namespace {

constexpr char kSource[] = "lrpc/ipc_exception";

}  // namespace

IPCException::IPCException(const std::string& message) : m_message(message) {}
IPCException::~IPCException() noexcept = default;

const char* IPCException::what() const noexcept {
  return m_message.c_str();
}

IPCException::IPCExceptionTypeID IPCException::getTypeCode() {
  return kPlain;
}

void IPCException::encode(BerElement* ber) {
  const char* text = what();
  if (!ber || qtr_ber_printf(ber, "io", static_cast<int>(getTypeCode()), text, ber_len_t{strlen(text)}) < 0)
    FOKRAZO_THROW(IOException, "IOException", 0, "ber_printf IPCException::encode");
}

void IPCException::decodeAndThrow(BerElement* ber) {
  ber_int_t type = 0;
  ReceivedText received;
  if (!ber || qtr_ber_scanf(ber, "i", &type) == LBER_ERROR || !received.read(ber))
    FOKRAZO_THROW(IOException, "IOException", 0, "ber_scanf IPCException::decode");
  const std::string message = received.text();
  switch (type) {
    case kPlain:
      throw IPCException(message);
    case 2:
      throw IPCExceptionDerived<2>(message);
    case 3:
      throw IPCExceptionDerived<3>(message);
    case 4:
      throw IPCExceptionDerived<4>(message);
    case 5:
      throw IPCExceptionDerived<5>(message);
    default:
      throw IPCException("Unknown error");
  }
}

template <int N>
IPCExceptionDerived<N>::~IPCExceptionDerived() noexcept = default;

template <int N>
IPCException::IPCExceptionTypeID IPCExceptionDerived<N>::getTypeCode() {
  return static_cast<IPCExceptionTypeID>(N);
}

template class IPCExceptionDerived<2>;
template class IPCExceptionDerived<3>;
template class IPCExceptionDerived<4>;
template class IPCExceptionDerived<5>;

}  // namespace vesk
