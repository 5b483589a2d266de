#include "daemon/codec.h"

#include <new>

#include <lber.h>

#include <fokrazo/ipcmessage.h>

namespace brondalt {

void decode(std::string_view bytes, vesk::IPCMessage& message) {
  BerElement* element = message.doHeader();
  // Restarts writing, so that the bytes replace the new message's header.
  ber_reset(element, 1);
  if (ber_write(element, bytes.data(), bytes.size(), 0) < 0) throw std::bad_alloc();
  message.rewind();
}

std::string_view encode(vesk::IPCMessage& message) {
  berval bytes = {};
  if (ber_flatten2(message.doHeader(), &bytes, 0) != 0) throw std::bad_alloc();
  return {bytes.bv_val, bytes.bv_len};
}

}  // namespace brondalt
