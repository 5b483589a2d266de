/// Bytes of the protocol in a readable notation, made without the library so that the two ends of a test
/// cannot share a fault.
#pragma once

#include <cstdint>
#include <string>

namespace testsupport {

/// The bytes of hexadecimal digits; blanks are ignored.
std::string hex(const std::string& digits);

/// A number in the host's order.
std::string word(uint32_t value);
/// An INTEGER in the fewest bytes.
std::string integer(int32_t value);
/// An OCTET STRING with the shortest length.
std::string octets(const std::string& bytes);
/// A SEQUENCE with a length of four bytes.
std::string sequence(const std::string& content);
/// An OCTET STRING with the blob of an object that has nothing but a DN.
std::string object(const std::string& dn);

/// A request with that opcode, and the fields of its body.
std::string request(int opcode, const std::string& body = std::string());
/// A reply with that result.
std::string reply(int result, const std::string& body = std::string());
/// The status block, with a health of 0, 0, 0 and no text.
std::string status(int result, int code = 0, int detail = 0, const std::string& message = std::string());
/// The reply to an operation that was carried out: that status, then these fields.
std::string answer(int result, const std::string& rest = std::string());

/// The frame of a message: its length in the host's order, then the message.
std::string framed(const std::string& message);

}  // namespace testsupport
