
#include "tests/support/rows.h"

// As in a locale of ISO 8859-1.
extern "C" int isprint(int c) noexcept {
  return (' ' <= c && c <= '~') || c >= 0xa0;
}

namespace {

using namespace vesk;

// The result, or the kind of failure and its text.
std::string resultOf(std::string (*operation)(const std::string&), const std::string& text) {
  try {
    return operation(text);
  } catch (const BadDataException& error) {
    return std::string("BadData: ") + error.what();
  } catch (const std::out_of_range&) {
    return "out of range";
  }
}

#define OPERATION(name) \
  { #name, DN::name }
const std::map<std::string, std::string (*)(const std::string&)> kOperations = {
    {"renameDN", [](const std::string& dn) { return DN::renameDN(dn, "n"); }},
    OPERATION(guidFromDN),
    OPERATION(dnFromExtendedDN),
    OPERATION(parent),
    OPERATION(cnFromDn),
    OPERATION(dnFromDomain),
    OPERATION(domainFromDN),
    OPERATION(canonicalFromDN),
    OPERATION(escapeDNString),
    OPERATION(escapeLDAPString),
    OPERATION(escapeLDAPFilter),
    OPERATION(escapeCanonicalString),
    OPERATION(unescapeDNString),
    OPERATION(unescapeLDAPString),
    OPERATION(unescapeCanonicalString)};

TEST(Dn, TextOperations) {
  for (const auto& [operation, text, result] : testsupport::rowsOf<3>("values/rows.txt", "dn operations"))
    EXPECT_EQ(resultOf(kOperations.at(operation), text), result) << operation << " " << text;
  EXPECT_EQ(DN::escape("axd", "abc", "xa", false), "\\a\\78d");
}

TEST(Dn, ExtendedForm) {
  Guid guid;
  guid.fromString("33221100554477668899aabbccddeeff");
  const std::string head = "<GUID=33221100554477668899aabbccddeeff>;";
  EXPECT_EQ(DN::extendedDN(guid, NULL_SID, "CN=a"), head + "CN=a");
  const std::string extended = DN::extendedDN(guid, SID("S-1-5-1"), "CN=a");
  EXPECT_EQ(extended, head + "<SID=010100000000000501000000>;CN=a");
  EXPECT_EQ(DN::extendedDN(NULL_GUID, NULL_SID, extended), extended);
}

TEST(Dn, Questions) {
  EXPECT_TRUE(DN::isDN("cn=a,dc=b") && !DN::isDN("cn=a"));
  EXPECT_TRUE(DN::isFakeObjDN("x,CN=Foreign User,CN=One Way Trust,DC=a"));
  EXPECT_TRUE(DN::isFakeUserDN("CN=AutoPrivateGroup,DC=a") && !DN::isFakeUserDN("CN=Foreign User,DC=a"));
  EXPECT_TRUE(DN::isEscaped("a\\,", 2) && DN::isEscaped("\\\\,", 2) && DN::isEscaped("a\\", 4000000000));
  EXPECT_FALSE(DN::isEscaped("a\\\\,", 3) || DN::isEscaped("\\,", 1)) << "the first byte is no escape";
}

}  // namespace
