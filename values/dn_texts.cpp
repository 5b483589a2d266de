// The strings of <fokrazo/dn.h> that are built at load time. A separate file keeps their initialization next
// to other code that runs then.

#include <fokrazo/dn.h>

using namespace std::string_literals;

const std::string VESK_CN_FOREIGN_USER = "CN=Foreign User,CN=One Way Trust"s;
const std::string PRIVATE_GROUP_CN = "CN=AutoPrivateGroup,"s;

namespace vesk {

const std::string DN::dn_bs_escaped_chars_always = "\\,+=\"\r<>#;\n()"s;
const std::string DN::dn_bs_escaped_chars = " \\,+=\"\r<>#;\n()"s;
const std::string DN::dn_hex_escaped_chars;
const std::string DN::canonical_bs_escaped_chars = "\\/"s;
const std::string DN::canonical_hex_escaped_chars;
const std::string DN::ldap_bs_escaped_chars = "\\*()"s;
const std::string DN::ldap_hex_escaped_chars = " \\,+=\"\r<>#;\n()"s;

}  // namespace vesk
