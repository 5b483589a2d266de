#include "standin/ldap_filter.h"

#include <gtest/gtest.h>

#include "standin/entry.h"
#include "standin/error.h"

namespace standin {
namespace {

using std::string_literals::operator""s;

Entry person() {
  Entry entry("CN=Joe (the first)*,OU=People,DC=example,DC=com");
  for (const char* objectClass : {"top", "person", "user"}) entry.add("objectClass", objectClass);
  entry.add("cn", "Joe (the first)*");
  entry.add("description", "");
  entry.add("uidNumber", "1000");
  entry.add("balance", "-20");
  entry.add("sn", "Müller\\Meyer");
  entry.add("userAccountControl", "514");
  entry.add("objectCategory", "CN=Person,CN=Schema,CN=Configuration,DC=example,DC=com");
  entry.add("objectSid", "\x01\x05\0\0\0\0\0\x05\x15\0\0\0\x01\0\0\0\x02\0\0\0\x03\0\0\0\x50\x04\0\0"s);
  entry.add("objectGUID", "\x00\x2a\x28\x29\x5c\xff"s);
  return entry;
}

TEST(LdapFilter, TellsWhatMatches) {
  const struct {
    const char* filter;
    bool matches;
  } kRows[] = {
      {"", true},
      {"(objectclass=*)", true},
      {"CN=joe \\28THE first\\29\\2a", true},
      {"(cn=joe \\(the first\\)\\*)", true},
      {"(cn=joe)", false},
      {"(mail=*)", false},
      {"(!(mail=x))", true},
      {"(description=)", true},
      {"( & (objectClass=user) ( ! (objectClass=computer) ) )", true},
      {"(&(objectClass=user)(objectClass=computer))", false},
      {"(|(objectClass=computer)(objectClass=person))", true},
      {"(&)", true},
      {"(|)", false},
      {"(cn=j*)", true},
      {"(cn=*\\2a)", true},
      {"(cn=*o*\\28*)", true},
      {"(cn=j*THE*t\\29*)", true},
      {"(cn=jo*oe*)", false},
      {"(cn=*first*the*)", false},
      {"(cn=joe \\28the first\\29\\2a*joe \\28the first\\29\\2a)", false},
      {"(sn=m\\c3\\bcller\\5cmeyer)", true},
      {"(sn=MÜLLER*)", false},  // letters beyond ASCII keep their case
      {"(uidNumber>=999)", true},
      {"(uidNumber>=1001)", false},
      {"(uidNumber<=10000)", true},  // as numbers; as text it would not be
      {"(balance<=-3)", true},
      {"(cn>=Jo)", true},
      {"(cn<=apple)", false},
      {"(mail>=a)", false},
      {"(cn~=JOE \\28the first\\29\\2A)", true},
      {"(userAccountControl:1.2.840.113556.1.4.803:=2)", true},
      {"(userAccountControl:1.2.840.113556.1.4.803:=3)", false},
      {"(userAccountControl:1.2.840.113556.1.4.804:=3)", true},
      {"(userAccountControl:1.2.840.113556.1.4.804:=1)", false},
      {"(cn:1.2.840.113556.1.4.803:=0)", false},
      {"(userAccountControl:1.2.3:=514)", false},
      {"(uidNumber:=1000)", true},
      {"(cn:dn:=people)", false},
      {"(:1.2.3:=x)", false},
      {"(objectCategory=person)", true},
      {"(objectCategory=CN=Person,CN=Schema,CN=Configuration,DC=example,DC=com)", true},
      {"(objectCategory=computer)", false},
      {"(objectSid=S-1-5-21-1-2-3-1104)", true},
      {"(objectSid=S-1-5-21-1-2-3-1105)", false},
      {"(objectGUID=\\00\\2a\\28\\29\\5c\\ff)", true},
      {"(objectGUID=\\00*\\ff)", true},
      {"(distinguishedName=cn=joe \\28the first\\29\\2a,ou=people,dc=example,dc=com)", true},
  };
  Entry entry = person();
  for (const auto& row : kRows) {
    EXPECT_EQ(LdapFilter(row.filter).matches(entry), row.matches) << row.filter;
  }
}

TEST(LdapFilter, RefusesWhatIsNone) {
  for (const char* filter :
       {"(",       ")",        "()",        "(cn=x",        "(cn=x))",        "cn=x)",
        "(cn)",    "(=x)",     "(cn>x)",    "(cn>=*)",      "(cn~=a*b)",      "(!)",
        "(!cn=x)", "(&(cn=x)", "(cn=\\)",   "(cn=\\4)",     "(cn=\\zz)",      "(cn=a(b)",
        "(:=x)",   "(cn::=x)", "(cn:dn=x)", "(cn=x)(cn=y)", "(cn:1.2.3:=a*)", "(&(cn=x)y)"})
    EXPECT_THROW(LdapFilter{filter}, Error) << filter;
  EXPECT_THROW(LdapFilter("(cn=x"s + '\0' + ")"s + "("), Error);
}

TEST(LdapFilter, IsNestedSoDeepAndNoDeeper) {
  auto nested = [](int depth) {
    std::string text;
    for (int i = 1; i < depth; ++i) text += i % 2 ? "(!" : "(&";
    text += "(cn=*)";
    return text.append(static_cast<size_t>(depth - 1), ')');
  };
  EXPECT_NO_THROW(LdapFilter(nested(LdapFilter::kMaxDepth)).matches(person()));
  EXPECT_THROW(LdapFilter{nested(LdapFilter::kMaxDepth + 1)}, Error);
  EXPECT_THROW(LdapFilter{std::string(1 << 20, '(')}, Error);
  EXPECT_THROW(LdapFilter{nested(100000)}, Error);
}

// Every shortened form of a filter is refused or a filter; none makes the parser read past the end.
TEST(LdapFilter, SurvivesBeingCutAnywhere) {
  const std::string whole = "(&(|(cn=a*b\\2a)(x>=1))(!(uac:1.2.840.113556.1.4.803:=2)))";
  for (size_t length = 1; length < whole.size(); ++length) {
    std::unique_ptr<char[]> exact(new char[length]);
    whole.copy(exact.get(), length);
    EXPECT_THROW((LdapFilter{std::string_view(exact.get(), length)}), Error) << length;
  }
}

}  // namespace
}  // namespace standin
