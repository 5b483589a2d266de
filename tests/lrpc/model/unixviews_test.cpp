
#include "tests/support/objects.h"
#include "tests/support/rows.h"
#include "tests/support/thrown.h"
#include "tests/support/world_test.h"

using namespace vesk;
using testsupport::rowsOf;
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
  for (const auto& [attributes, line] : rowsOf<2>("lrpc/model/rows.txt", "passwd lines")) {
    const User user(objectOf(attributes));
    EXPECT_EQ(passwdLine(user), line);
    EXPECT_EQ(user.isUnix(), line.substr(0, 6) != "nobody") << line;
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
  for (const auto& [attributes, password] : rowsOf<2>("lrpc/model/rows.txt", "passwords")) {
    ADObject object = objectOf(attributes);
    EXPECT_EQ(User(object).password(), password) << attributes;
    object["_AltPasswordHash"] = "alt";
    EXPECT_EQ(User(object).password(), "alt") << attributes;
  }
}

// The directory's side of a user: names, hash, numbers, times, groups, rights.
std::string directoryLine(const User& user) {
  std::ostringstream line;
  line << user.getName() << ';' << user.getSid().toMSString() << ';' << user.getType() << ';' << user.getDN()
       << ';' << user.servicePrincipalName() << ';' << user.computedPrincipalName() << ';'
       << user.userPrincipalName() << ';' << user.altSecurityIdentity() << ';' << user.workstations() << ';'
       << user.passwordHash() << ';' << user.accountControl() << ';' << user.accountExpires() << ';'
       << user.passwordLastSet() << ';' << user.minPasswordAge() << ';' << user.maxPasswordAge() << ';'
       << user.maxPasswordAgeDisplay() << ';' << user.lockoutTime() << ';';
  for (const SID& sid : user.groupSids()) line << sid.toMSString() << ' ';
  line << ';' << user.hasBaseSysRights() << user.auditLevel() << user.alwaysPermitLogin();
  return line.str();
}

TEST_F(UserView, ReadsTheDirectorysAttributes) {
  for (const auto& [attributes, line] : rowsOf<2>("lrpc/model/rows.txt", "directory users"))
    EXPECT_EQ(directoryLine(User(objectOf(attributes))), line) << attributes;
  ADObject object = objectOf("");
  object.setAcquired(77);
  const User user(object);
  EXPECT_EQ(user.acquired(), 77);
  user.getObject()["cn"] = "shared";
  EXPECT_EQ(std::string(object["cn"]), "shared");
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
