#include "lrpc/unixviews.h"

#include <gtest/gtest.h>

#include <sstream>
#include <utility>

#include "tests/support/thrown.h"
#include "tests/support/world_test.h"

using namespace vesk;
using testsupport::thrownBy;

namespace {

using Attributes = std::vector<std::pair<const char*, ADAttribute::Values>>;

ADObject objectOf(const Attributes& attributes) {
  ADObject object("CN=Jo Doe,OU=Staff,DC=example,DC=com");
  for (const auto& one : attributes) object[one.first] = one.second;
  return object;
}

std::string passwdLine(const User& user) {
  return user.unixName() + ":" + user.password() + ":" + std::to_string(user.getId()) + ":" +
         std::to_string(user.gid()) + ":" + user.gecos() + ":" + user.home() + ":" + user.shell();
}

using UserView = testsupport::WorldTest;
using GroupView = testsupport::WorldTest;

TEST_F(UserView, UnixFields) {
  const char kNobody[] = "nobody:x:65534:65534::/:/bin/false";
  const struct {
    Attributes attributes;
    const char* line;
  } rows[] = {
      {{{"_Uid", {"1001"}},
        {"_Gid", {"100"}},
        {"_UnixName", {"jo"}},
        {"_LoginShell", {"/bin/sh"}},
        {"_GECOS", {"Jo,Room 1"}},
        {"_HomeDirectory", {"/home/jo"}},
        {"cn", {"Jo Doe"}}},
       "jo:x:1001:100:Jo,Room 1:/home/jo:/bin/sh"},
      {{{"_Uid", {"0"}}}, ":x:0:0:::"},
      {{{"_Uid", {"1"}}, {"_GECOS", {""}}, {"cn", {"Jo Doe"}}}, ":x:1:0:Jo Doe::"},
      {{{"_Gid", {"100"}}, {"cn", {"Jo"}}}, kNobody},
      {{{"_Uid", {}}}, kNobody},
  };
  for (const auto& row : rows) {
    User user(objectOf(row.attributes));
    EXPECT_EQ(passwdLine(user), row.line);
    EXPECT_EQ(user.isUnix(), row.line != kNobody) << row.line;
  }
}

TEST_F(UserView, NobodyIsConfigured) {
  configure(
      "nss.nobody.uid: 99\nnss.nobody.gid: 98\nnss.nobody.user: none\nnss.nobody.group: nogroup\n"
      "nss.shell.nologin: /sbin/nologin\n");
  EXPECT_EQ(passwdLine(User(objectOf({}))), "none:x:99:98::/:/sbin/nologin");
  Group group(objectOf({}));
  EXPECT_EQ(group.getId(), 98u);
  EXPECT_EQ(group.unixName(), "nogroup");
  configure("nss.nobody.uid:\nnss.nobody.user:\n");
  EXPECT_EQ(passwdLine(User(objectOf({}))), ":x:65534:65534::/:/bin/false");
}

TEST_F(UserView, Password) {
  const struct {
    const char* what;
    std::string source;
    ADAttribute::Values hashes;
    const char* password;
  } rows[] = {
      {"empty", "", {}, "x"},
      {"R2", "unixUserPassword", {"unix"}, "unix"},
      {"SFU", "msSFU30Password", {"sfu"}, "sfu"},
      {"source is missing", "unixUserPassword", {}, "x"},
      {"source is unknown", "cn", {"qtrPasswordHash:abc"}, "x"},
      {"prefix",
       "altSecurityIdentities",
       {"Kerberos:jo qtrPasswordHash:no", "qtrPasswordHash:abc", "qtrPasswordHash:d"},
       "abc"},
      {"no prefix", "altSecurityIdentities", {"Kerberos:jo"}, "x"},
  };
  for (const auto& row : rows) {
    ADObject object = objectOf({{"_PwSync", {row.source}}, {row.source.c_str(), row.hashes}});
    EXPECT_EQ(User(object).password(), row.password) << row.what;
    object["_AltPasswordHash"] = "alt";
    EXPECT_EQ(User(object).password(), "alt") << row.what;
  }
}

// The directory's side of a user: names, hash, numbers, times, groups, rights.
std::string directoryLine(const User& user) {
  std::ostringstream line;
  line << user.getName() << '|' << user.getSid().toMSString() << '|' << user.getType() << '|' << user.getDN()
       << '|' << user.servicePrincipalName() << '|' << user.computedPrincipalName() << '|'
       << user.userPrincipalName() << '|' << user.altSecurityIdentity() << '|' << user.workstations() << '|'
       << user.passwordHash() << '|' << user.accountControl() << '|' << user.accountExpires() << '|'
       << user.passwordLastSet() << '|' << user.minPasswordAge() << '|' << user.maxPasswordAge() << '|'
       << user.maxPasswordAgeDisplay() << '|' << user.lockoutTime() << '|';
  for (const SID& sid : user.groupSids()) line << sid.toMSString() << ' ';
  line << '|' << user.hasBaseSysRights() << user.auditLevel() << user.alwaysPermitLogin();
  return line.str();
}

TEST_F(UserView, DirectorySide) {
  ADObject object = objectOf({{"sAMAccountName", {"jdoe"}},
                              {"_SID", {"S-1-5-21-1-2-3-1104"}},
                              {"servicePrincipalName", {"host/a", "host/b"}},
                              {"_userPrincipalName", {"jo@EXAMPLE"}},
                              {"userPrincipalName", {"jo@example.com"}},
                              {"altSecurityIdentities", {"Kerberos:jo"}},
                              {"userWorkstations", {"a,b"}},
                              {"_passwordHash", {"hash"}},
                              {"userAccountControl", {"-512"}},
                              {"accountExpires", {"9223372036854775807"}},
                              {"_maxPwdAge", {"100"}},
                              {"_groupSidList", {"S-1-5-32-544", "rubbish", "S-1-1-0"}}});
  object.setAcquired(77);
  User user(object);
  EXPECT_EQ(user.acquired(), 77);
  EXPECT_EQ(
      directoryLine(user),
      "jdoe|S-1-5-21-1-2-3-1104|0|CN=Jo Doe,OU=Staff,DC=example,DC=com|host/a|jo@EXAMPLE|jo@example.com|"
      "Kerberos:jo|a,b|hash|-512|9223372036854775807|-1|-1|100|100|0|S-1-5-32-544 <NULL> S-1-1-0 |"
      "0AuditIfPossible0");
  user.getObject()["cn"] = "shared";
  EXPECT_EQ(std::string(object["cn"]), "shared");
  const struct {
    const char *rights, *told;
  } rows[] = {{"16", "0AuditNotRequested0"}, {"64", "0AuditIfPossible1"}, {"33", "1AuditRequired0"}};
  for (const auto& row : rows)
    EXPECT_EQ(
        directoryLine(User(objectOf({{"_SysRights", {row.rights}}}))),
        std::string("|<NULL>|0|CN=Jo Doe,OU=Staff,DC=example,DC=com|||||||0|-1|-1|-1|-1|-1|0||") + row.told);
}

TEST_F(GroupView, Fields) {
  ADObject object = objectOf({{"_Gid", {"100"}},
                              {"_UnixName", {"staff"}},
                              {"sAMAccountName", {"Staff"}},
                              {"_Required", {"true"}},
                              {"_Members", {"jo", "", "jo"}}});
  object["_dn"] = std::string("CN=Staff,DC=example,DC=com\0more", 31);
  Group group(object);
  EXPECT_TRUE(group.isUnix());
  EXPECT_EQ(group.getId(), 100u);
  EXPECT_EQ(group.unixName(), "staff");
  EXPECT_EQ(group.name(), "Staff");
  EXPECT_EQ(group.password(), "x");
  EXPECT_TRUE(group.required());
  EXPECT_EQ(group.members(), (std::list<std::string>{"jo", "", "jo"}));
  EXPECT_EQ(group.getType(), 1);
  EXPECT_EQ(group.getDN(), "CN=Staff,DC=example,DC=com");
  EXPECT_EQ(Group(objectOf({})).getName(), "example.com/Staff/Jo Doe");

  Group directory(objectOf({{"_Uid", {"1"}}, {"_Required", {"TRUE"}}}));
  EXPECT_FALSE(directory.isUnix());
  EXPECT_EQ(directory.getId(), 65534u);
  EXPECT_EQ(directory.unixName(), "nobody");
  EXPECT_FALSE(directory.required());
}

TEST(Views, ObjectsThatCannotBeSeen) {
  ADObject nameless = objectOf({});
  nameless.erase("_dn");
  EXPECT_EQ(thrownBy([&] { User view(nameless); }), "SystemException 0 ADAttribute '_dn' is empty");
  EXPECT_EQ(thrownBy([&] { Group view(nameless); }), "SystemException 0 ADAttribute '_dn' is empty");
  EXPECT_EQ(thrownBy([] { User view{ADObject()}; }), "SystemException 0 Null adobject");
  EXPECT_EQ(thrownBy([] { Group view{ADObject()}; }), "SystemException 0 Null adobject");
}

}  // namespace
