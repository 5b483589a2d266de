#include <fokrazo/unixviews.h>

#include "tests/support/objects.h"
#include "tests/support/thrown.h"
#include "tests/support/world_test.h"

using namespace vesk;
using testsupport::thrownBy;

namespace {

ADObject objectOf(const std::string& attributes) {
  return testsupport::objectOf("CN=Jo Doe,OU=Staff,DC=example,DC=com", attributes);
}

std::string passwdLine(const User& user) {
  return user.unixName() + ":" + user.password() + ":" + std::to_string(user.getId()) + ":" +
         std::to_string(user.gid()) + ":" + user.gecos() + ":" + user.home() + ":" + user.shell();
}

using UserView = testsupport::WorldTest;
using GroupView = testsupport::WorldTest;

TEST_F(UserView, HasThePasswdFieldsOfItsAttributes) {
  const char kNobody[] = "nobody:x:65534:65534::/:/bin/false";
  const struct {
    const char *attributes, *line;
  } rows[] = {
      {"_Uid=1001;_Gid=100;_UnixName=jo;_LoginShell=/bin/sh;_GECOS=Jo,Room 1;_HomeDirectory=/home/jo;cn=Jo "
       "Doe",
       "jo:x:1001:100:Jo,Room 1:/home/jo:/bin/sh"},
      {"_Uid=1;_GECOS=;cn=Jo Doe", ":x:1:0:Jo Doe::"},
      {"_Gid=100;cn=Jo", kNobody},
      {"_Uid", kNobody},
  };
  for (const auto& row : rows) {
    User user(objectOf(row.attributes));
    EXPECT_EQ(passwdLine(user), row.line);
    EXPECT_EQ(user.isUnix(), row.line != kNobody) << row.line;
  }
  configure(
      "nss.nobody.uid: 99\nnss.nobody.gid: 98\nnss.nobody.user: none\nnss.nobody.group: nogroup\n"
      "nss.shell.nologin: /sbin/nologin\n");
  EXPECT_EQ(passwdLine(User(objectOf(""))), "none:x:99:98::/:/sbin/nologin");
  EXPECT_EQ(Group(objectOf("")).getId(), 98u);
  EXPECT_EQ(Group(objectOf("")).unixName(), "nogroup");
  configure("nss.nobody.uid:\nnss.nobody.user:\n");
  EXPECT_EQ(passwdLine(User(objectOf(""))), ":x:65534:65534::/:/bin/false");
}

TEST_F(UserView, TakesThePasswordFromTheNamedSource) {
  const struct {
    const char *attributes, *password;
  } rows[] = {
      {"_PwSync=", "x"},
      {"_PwSync=unixUserPassword;unixUserPassword=unix", "unix"},
      {"_PwSync=msSFU30Password;msSFU30Password=sfu", "sfu"},
      {"_PwSync=unixUserPassword", "x"},
      {"_PwSync=cn;cn=qtrPasswordHash:abc", "x"},  // not a source
      {"_PwSync=altSecurityIdentities;altSecurityIdentities=Kerberos:jo qtrPasswordHash:no;"
       "altSecurityIdentities=qtrPasswordHash:a;altSecurityIdentities=qtrPasswordHash:b",
       "a"},
      {"_PwSync=altSecurityIdentities;altSecurityIdentities=Kerberos:jo", "x"},
  };
  for (const auto& row : rows) {
    ADObject object = objectOf(row.attributes);
    EXPECT_EQ(User(object).password(), row.password) << row.attributes;
    object["_AltPasswordHash"] = "alt";
    EXPECT_EQ(User(object).password(), "alt") << row.attributes;
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

TEST_F(UserView, ReadsTheDirectorysAttributes) {
  ADObject object = objectOf(
      "sAMAccountName=jdoe;_SID=S-1-5-21-1-2-3-1104;servicePrincipalName=host/a;servicePrincipalName=host/b;"
      "_userPrincipalName=jo@EXAMPLE;userPrincipalName=jo@example.com;altSecurityIdentities=Kerberos:jo;"
      "userWorkstations=a,b;_passwordHash=hash;userAccountControl=-512;accountExpires=9223372036854775807;"
      "_maxPwdAge=100;_groupSidList=S-1-5-32-544;_groupSidList=rubbish;_groupSidList=S-1-1-0");
  object.setAcquired(77);
  const User user(object);
  EXPECT_EQ(user.acquired(), 77);
  EXPECT_EQ(
      directoryLine(user),
      "jdoe|S-1-5-21-1-2-3-1104|0|CN=Jo Doe,OU=Staff,DC=example,DC=com|host/a|jo@EXAMPLE|jo@example.com|"
      "Kerberos:jo|a,b|hash|-512|9223372036854775807|-1|-1|100|100|0|S-1-5-32-544 <NULL> S-1-1-0 |"
      "0AuditIfPossible0");
  user.getObject()["cn"] = "shared";
  EXPECT_EQ(std::string(object["cn"]), "shared");
  const std::string names = "|<NULL>|0|CN=Jo Doe,OU=Staff,DC=example,DC=com|||||||0|-1|-1|-1|-1|-1|0||";
  EXPECT_EQ(directoryLine(User(objectOf("_SysRights=16"))), names + "0AuditNotRequested0");
  EXPECT_EQ(directoryLine(User(objectOf("_SysRights=64"))), names + "0AuditIfPossible1");
  EXPECT_EQ(directoryLine(User(objectOf("_SysRights=33"))), names + "1AuditRequired0");
}

TEST_F(GroupView, ReadsAGroupsAttributes) {
  ADObject object = objectOf(
      "_Gid=100;_UnixName=staff;sAMAccountName=Staff;_Required=true;_Members=jo;_Members=;_Members=jo");
  object["_dn"] = std::string("CN=Staff,DC=example,DC=com\0more", 31);
  const Group group(object);
  EXPECT_TRUE(group.isUnix() && group.required());
  EXPECT_EQ(group.getId(), 100u);
  EXPECT_EQ(group.unixName() + group.name() + group.password(), "staffStaffx");
  EXPECT_EQ(group.members(), (std::list<std::string>{"jo", "", "jo"}));
  EXPECT_EQ(group.getType(), 1);
  EXPECT_EQ(group.getDN(), "CN=Staff,DC=example,DC=com");

  const Group directory(objectOf("_Uid=1;_Required=TRUE"));
  EXPECT_FALSE(directory.isUnix() || directory.required());
  EXPECT_EQ(directory.getId(), 65534u);
  EXPECT_EQ(directory.unixName(), "nobody");
  EXPECT_EQ(directory.getName(), "example.com/Staff/Jo Doe");
}

TEST(Views, NeedAnObjectWithADn) {
  ADObject nameless = objectOf(""), none;
  nameless.erase("_dn");
  EXPECT_EQ(thrownBy([&] { User view(nameless); }), "SystemException 0 ADAttribute '_dn' is empty");
  EXPECT_EQ(thrownBy([&] { Group view(nameless); }), "SystemException 0 ADAttribute '_dn' is empty");
  EXPECT_EQ(thrownBy([&] { User view(none); }), "SystemException 0 Null adobject");
  EXPECT_EQ(thrownBy([&] { Group view(none); }), "SystemException 0 Null adobject");
}

}  // namespace
