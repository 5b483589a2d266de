#include <fokrazo/dn.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <tuple>

#include <fokrazo/error_util.h>
#include <fokrazo/guid.h>
#include <fokrazo/sid.h>

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

std::string rename(const std::string& dn) {
  return DN::renameDN(dn, "n");
}

TEST(Dn, TextOperations) {
  const std::string nul(1, '\0');
  const std::string extended = "<GUID=33221100554477668899aabbccddeeff>;<SID=0105>;CN=a,DC=b";
  using Operation = std::string (*)(const std::string&);
  const std::tuple<Operation, std::string, std::string> rows[] = {
      {DN::guidFromDN, extended, "33221100554477668899aabbccddeeff"},
      {DN::guidFromDN, "<GUID=00>", ""},
      {DN::guidFromDN, "<;", "out of range"},
      {DN::dnFromExtendedDN, extended, "CN=a,DC=b"},
      {DN::parent, "CN=a\\,b,OU=x,DC=c", "OU=x,DC=c"},
      {DN::parent, "CN=a\\\\,OU=x", "OU=x"},
      {DN::parent, "\\,a,b", "b"},
      {DN::parent, "CN=a\\,b", "CN=a\\,b"},
      {DN::cnFromDn, "CN=a\\,b,OU=x", "a\\,b"},
      {DN::cnFromDn, "CN=", ""},
      {DN::cnFromDn, "C", "out of range"},
      {rename, "CN=a,OU=x,CN=y,DC=z", "CN=n,CN=y,DC=z"},
      {rename, "CN=a,OU=x,cn=y", "out of range"},
      {DN::dnFromDomain, "ex.com", "DC=ex,DC=com"},
      {DN::domainFromDN, "dc=ex,dc=com,ou=a", "EX.COM,OU=A"},
      {DN::domainFromDN, "ex.com/Sales/a/b", "EX.COM"},
      {DN::canonicalFromDN, "CN=a\\,b,OU=x,DC=Ex,DC=Com", "ex.com/x/a,b"},
      {DN::canonicalFromDN, "cn=A/B,ou=\\20X\\20,dc=ex", "ex/ X /A\\/B"},
      {DN::canonicalFromDN, "OU=x,CN=a,OU=y,CN=b,OU=z,DC=ex", "ex/z/b/a"},
      {DN::canonicalFromDN, "dc=ex,cn=a", "BadData: bad dn format DC=EX,CN=A"},
      {DN::canonicalFromDN, "cn=,dc=ex", "BadData: bad dn format CN=,DC=EX"},
      {DN::canonicalFromDN, "cn=\\x,dc=ex", "BadData: Invalid escape sequence \\x"},
      {DN::canonicalFromDN, "cn=a,o=x", "BadData: Malformed DN \"cn=a,o=x\", missing DC= or /"},
      {DN::escapeDNString, "   ", "\\ \\ \\ "},
      {DN::escapeDNString, " a b  ", "\\ a b\\ \\ "},
      {DN::escapeDNString, "\\,+=\"\r<>#;\n()*/\xc3", "\\\\\\,\\+\\=\\\"\\\r\\<\\>\\#\\;\\\n\\(\\)*/\xc3"},
      {DN::escapeLDAPString, "a (*)\\,\t\xc3" + nul, "a\\20\\(\\*\\)\\\\\\2C\\09\\C3\\00"},
      {DN::escapeLDAPFilter, "a (*)\\,\xc3", "a \\(\\*\\)\\\\,\xc3"},
      {DN::escapeCanonicalString, "a/b\\c,", "a\\/b\\\\c,"},
      {DN::unescapeDNString, "\\ a\\,\\41\\c3\\20\\00", " a,A\xc3 " + nul},
      {DN::unescapeDNString, "\\*", "BadData: Invalid escape sequence \\*"},
      {DN::unescapeDNString, "ab\\", "BadData: Invalid escape sequence ab\\"},
      {DN::unescapeDNString, "ab\\4", "BadData: Invalid escape sequence ab\\4"},
      {DN::unescapeDNString, "ab\\4g", "BadData: Invalid escape sequence ab\\4g"},
      {DN::unescapeLDAPString, "\\,", "BadData: Invalid escape sequence \\,"},
      {DN::unescapeCanonicalString, "\\/\\\\", "/\\"},
  };
  for (const auto& [operation, text, result] : rows) EXPECT_EQ(resultOf(operation, text), result) << text;
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
