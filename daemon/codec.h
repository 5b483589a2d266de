/// Converts messages from and to bytes in memory. The library's own transport blocks on a socket, which a
/// server cannot do.
#pragma once

#include <string_view>

namespace vesk {
class IPCMessage;
}

namespace brondalt {

/// Fills `message`, which must be new, with the bytes of a received message, for reading from the first
/// field.
/// @throws vesk::IOException the bytes do not begin with a header
void decode(std::string_view bytes, vesk::IPCMessage& message);

/// Returns the bytes of a written message, which owns them.
std::string_view encode(vesk::IPCMessage& message);

}  // namespace brondalt
