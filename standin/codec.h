/// Messages to and from bytes in memory. The library's own transport moves them by blocking on a socket,
/// which a server of many clients cannot do.
#pragma once

#include <string_view>

namespace vesk {
class IPCMessage;
}

namespace standin {

/// Makes `message`, which is new, the received message of these bytes, ready to be read from its first field.
/// @throws vesk::IOException the bytes do not begin with a header.
void decode(std::string_view bytes, vesk::IPCMessage& message);

/// The bytes of a message that has been written; they belong to it.
std::string_view encode(vesk::IPCMessage& message);

}  // namespace standin
