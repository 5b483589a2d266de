/// Messages from and to bytes in memory. The library's own transport blocks on a socket, which a server of
/// many clients cannot do.
#pragma once

#include <string_view>

namespace vesk {
class IPCMessage;
}

namespace brondalt {

/// Fills `message`, which must be new, with the bytes of a received message, to be read from its first field.
/// @throws vesk::IOException the bytes do not begin with a header.
void decode(std::string_view bytes, vesk::IPCMessage& message);

/// Returns the bytes of a message that has been written; the message owns them.
std::string_view encode(vesk::IPCMessage& message);

}  // namespace brondalt
