#include "standin/ldap_filter.h"

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

// Numbers are compared as numbers, and letters beyond ASCII keep their case.
TEST(LdapFilter, TellsWhatMatches) {
  const Entry entry = person();
  for (const char* filter : {"",
                             "(objectclass=*)",
                             "CN=joe \\28THE first\\29\\2a",
                             "(cn=joe \\(the first\\)\\*)",
                             "(!(mail=x))",
                             "(description=)",
                             "( & (objectClass=user) ( ! (objectClass=computer) ) )",
                             "(|(objectClass=computer)(objectClass=person))",
                             "(&)",
                             "(cn=j*)",
                             "(cn=*o*\\28*)",
                             "(cn=j*THE*t\\29*)",
                             "(sn=m\\c3\\bcller\\5cmeyer)",
                             "(uidNumber>=999)",
                             "(balance<=-3)",
                             "(cn>=Jo)",
                             "(cn~=JOE \\28the first\\29\\2A)",
                             "(userAccountControl:1.2.840.113556.1.4.803:=2)",
                             "(userAccountControl:1.2.840.113556.1.4.804:=3)",
                             "(uidNumber:=1000)",
                             "(objectCategory=person)",
                             "(objectCategory=CN=Person,CN=Schema,CN=Configuration,DC=example,DC=com)",
                             "(objectSid=S-1-5-21-1-2-3-1104)",
                             "(objectGUID=\\00\\2a\\28\\29\\5c\\ff)",
                             "(objectGUID=\\00*\\ff)",
                             "(distinguishedName=cn=joe \\28the first\\29\\2a,ou=people,dc=example,dc=com)"})
    EXPECT_TRUE(LdapFilter(filter).matches(entry)) << filter;
  for (const char* filter :
       {"(cn=joe)", "(mail=*)", "(&(objectClass=user)(objectClass=computer))", "(|)", "(cn=jo*oe*)",
        "(cn=*first*the*)", "(cn=joe \\28the first\\29\\2a*joe \\28the first\\29\\2a)", "(sn=MÜLLER*)",
        "(uidNumber>=1001)", "(cn<=apple)", "(mail>=a)", "(userAccountControl:1.2.840.113556.1.4.803:=3)",
        "(userAccountControl:1.2.840.113556.1.4.804:=1)", "(cn:1.2.840.113556.1.4.803:=0)",
        "(userAccountControl:1.2.3:=514)", "(cn:dn:=people)", "(:1.2.3:=x)", "(objectCategory=computer)",
        "(objectSid=S-1-5-21-1-2-3-1105)"})
    EXPECT_FALSE(LdapFilter(filter).matches(entry)) << filter;
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
