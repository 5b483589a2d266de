#include "lrpc/unixviews.h"

#include <gtest/gtest.h>

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
  const struct {
    const char* what;
    Attributes attributes;
    bool isUnix;
    const char* line;
  } rows[] = {
      {"complete",
       {{"_Uid", {"1001"}},
        {"_Gid", {"100"}},
        {"_UnixName", {"jo"}},
        {"_LoginShell", {"/bin/sh"}},
        {"_GECOS", {"Jo,Room 1"}},
        {"_HomeDirectory", {"/home/jo"}},
        {"cn", {"Jo Doe"}}},
       true,
       "jo:x:1001:100:Jo,Room 1:/home/jo:/bin/sh"},
      {"nothing but the uid", {{"_Uid", {"0"}}}, true, ":x:0:0:::"},
      {"gecos from cn", {{"_Uid", {"1"}}, {"_GECOS", {""}}, {"cn", {"Jo Doe"}}}, true, ":x:1:0:Jo Doe::"},
      {"no uid", {{"_Gid", {"100"}}, {"cn", {"Jo"}}}, false, "nobody:x:65534:65534::/:/bin/false"},
      {"uid without a value", {{"_Uid", {}}}, false, "nobody:x:65534:65534::/:/bin/false"},
  };
  for (const auto& row : rows) {
    User user(objectOf(row.attributes));
    EXPECT_EQ(passwdLine(user), row.line) << row.what;
    EXPECT_EQ(user.isUnix(), row.isUnix) << row.what;
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
    Attributes attributes;
    const char* password;
  } rows[] = {
      {"none", {}, "x"},
      {"the alternative first",
       {{"_AltPasswordHash", {"alt"}}, {"_PwSync", {"unixUserPassword"}}, {"unixUserPassword", {"unix"}}},
       "alt"},
      {"R2", {{"_PwSync", {"unixUserPassword"}}, {"unixUserPassword", {"unix"}}}, "unix"},
      {"SFU", {{"_PwSync", {"msSFU30Password"}}, {"msSFU30Password", {"sfu"}}}, "sfu"},
      {"source is missing", {{"_PwSync", {"unixUserPassword"}}}, "x"},
      {"source is unknown", {{"_PwSync", {"cn"}}, {"cn", {"Jo"}}}, "x"},
      {"first value with the prefix",
       {{"_PwSync", {"altSecurityIdentities"}},
        {"altSecurityIdentities",
         {"Kerberos:jo qtrPasswordHash:no", "qtrPasswordHash:abc", "qtrPasswordHash:d"}}},
       "abc"},
      {"no value with the prefix",
       {{"_PwSync", {"altSecurityIdentities"}}, {"altSecurityIdentities", {"Kerberos:jo"}}},
       "x"},
  };
  for (const auto& row : rows) EXPECT_EQ(User(objectOf(row.attributes)).password(), row.password) << row.what;
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
  EXPECT_EQ(user.getName(), "jdoe");
  EXPECT_EQ(user.getSid().toMSString(), "S-1-5-21-1-2-3-1104");
  EXPECT_EQ(user.getType(), 0);
  EXPECT_EQ(user.getDN(), "CN=Jo Doe,OU=Staff,DC=example,DC=com");
  EXPECT_EQ(user.acquired(), 77);
  EXPECT_EQ(user.servicePrincipalName(), "host/a");
  EXPECT_EQ(user.computedPrincipalName(), "jo@EXAMPLE");
  EXPECT_EQ(user.userPrincipalName(), "jo@example.com");
  EXPECT_EQ(user.altSecurityIdentity(), "Kerberos:jo");
  EXPECT_EQ(user.workstations(), "a,b");
  EXPECT_EQ(user.passwordHash(), "hash");
  EXPECT_EQ(user.accountControl(), -512);
  EXPECT_EQ(user.accountExpires(), INT64_MAX);
  EXPECT_EQ(user.passwordLastSet(), -1);
  EXPECT_EQ(user.minPasswordAge(), -1);
  EXPECT_EQ(user.maxPasswordAge(), 100);
  EXPECT_EQ(user.maxPasswordAgeDisplay(), 100);
  EXPECT_EQ(user.lockoutTime(), 0);
  std::string sids;
  for (const SID& sid : user.groupSids()) sids += sid.toMSString() + " ";
  EXPECT_EQ(sids, "S-1-5-32-544 <NULL> S-1-1-0 ");
  user.getObject()["cn"] = "shared";
  EXPECT_EQ(std::string(object["cn"]), "shared");
}

TEST_F(UserView, SystemRights) {
  const struct {
    const char* rights;
    bool base;
    const char* audit;
    bool always;
  } rows[] = {{"", false, "AuditIfPossible", false},
              {"16", false, "AuditNotRequested", false},
              {"64", false, "AuditIfPossible", true},
              {"33", true, "AuditRequired", false}};
  for (const auto& row : rows) {
    ADObject object = objectOf({});
    object["_SysRights"] = row.rights;
    User user(object);
    EXPECT_EQ(user.hasBaseSysRights(), row.base) << row.rights;
    EXPECT_EQ(user.auditLevel(), row.audit) << row.rights;
    EXPECT_EQ(user.alwaysPermitLogin(), row.always) << row.rights;
  }
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
