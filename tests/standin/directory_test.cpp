#include "standin/directory.h"

#include "standin/attribute_map.h"
#include "standin/dn_key.h"
#include "standin/error.h"
#include "standin/unix_profile.h"
#include "tests/support/rows.h"
#include "tests/support/standin_process.h"

namespace standin {
namespace {

using std::string_literals::operator""s;

const std::string kSample = TEST_SOURCE_DIR "/standin/sample/";

void loadText(Directory& directory, const std::string& ldif) {
  ScratchDirectory scratch;
  std::ofstream(scratch.path("ldif")) << ldif;
  directory.load(scratch.path("ldif"));
}

std::set<std::string> values(const Directory& directory, const char* name, const std::string& attribute) {
  AttributeMap map(directory);
  vesk::ADObject object = map.object(directory.byName(name, Family::Both), {});
  const vesk::ADAttribute& found = object[attribute];
  return {found.begin(), found.end()};
}

TEST(DnKey, IsTheSameForAllSpellingsOfOneName) {
  const auto names = testsupport::rowsOf<3>("standin/rows.txt", "dn spellings");
  for (const auto& name : names)
    for (const auto& other : names)
      for (const std::string& spelling : name)
        EXPECT_EQ(dnKey(spelling) == dnKey(other[0]), &name == &other) << spelling;
  EXPECT_EQ(parentKey(dnKey("CN=a\\,b,OU=x,DC=y")), dnKey("OU=x,DC=y"));
  EXPECT_TRUE(isWithin(dnKey("CN=a,DC=y"), dnKey("DC=y")));
  EXPECT_FALSE(isWithin(dnKey("CN=a\\,DC=y"), dnKey("DC=y")));
}

TEST(Directory, ReadsEveryFormOfLdif) {
  Directory directory;
  loadText(
      directory,
      "version: 1\r\ndn: CN=folded\r\n  name,DC=x,DC=y\r\nobjectClass: user\r\ndescription:: AAECAw==\r\n"
      "empty:\r\nsAMAccountName:   padded\r\n# comment\r\n\r\n\r\n"
      "dn:: Q049w7xtbMOkdXQsREM9eCxEQz15\r\nchangetype: add\r\ncn:: w7xtbMOkdXQ=\r\nCN: second\r\n");
  EntryId id = directory.byName("padded", Family::Accounts);
  ASSERT_NE(id, kNoEntry);
  EXPECT_EQ(directory[id].dn(), "CN=folded name,DC=x,DC=y");
  EXPECT_EQ(directory[id].first("description"), "\0\1\2\3"s);
  ASSERT_NE(directory[id].find("empty"), nullptr);
  EXPECT_EQ(directory[id].first("empty"), "");
  id = directory.byDn("cn=\\C3\\BCml\\C3\\A4ut,dc=x,dc=y");
  ASSERT_NE(id, kNoEntry);
  EXPECT_EQ(directory[id].find("cn")->values, (std::vector<std::string>{"ümläut", "second"}));
}

TEST(Directory, TellsThePresentTimeInItsRoot) {
  for (const char* loaded : {"", "dn:\ncurrentTime: 19990101000000.0Z\n"}) {
    Directory directory;
    loadText(directory, loaded);
    const std::string before = directoryTime(time(nullptr)), now = directory.rootEntry().first("currentTime");
    EXPECT_LE(before, now) << loaded;
    EXPECT_LE(now, directoryTime(time(nullptr))) << loaded;
  }
}

TEST(Directory, FindsAnAccountByEachOfItsNames) {
  Directory directory;
  directory.load(TEST_SOURCE_DIR "/tests/standin/names.ldif");
  for (const auto& [name, found] : testsupport::rowsOf<2>("standin/rows.txt", "names"))
    EXPECT_EQ(directory.byName(name, Family::Accounts),
              found.empty() ? kNoEntry : directory.byDn("CN=" + found + ",DC=ex,DC=org"))
        << name;
  EXPECT_EQ(directory[directory.byName("joe", Family::Groups)].dn(), "CN=joe group,DC=ex,DC=org");
  EXPECT_EQ(directory[directory.byUnixId(4294967294u, Family::Accounts)].dn(), "CN=Joe,DC=ex,DC=org");
  EXPECT_EQ(directory[directory.byUnixId(4294967295u, Family::Groups)].dn(), "CN=joe group,DC=ex,DC=org");
  EXPECT_EQ(directory.byUnixId(0, Family::Both), kNoEntry);
  EXPECT_EQ(values(directory, "other", VESK_UID), std::set<std::string>{"7"});
  EXPECT_TRUE(values(directory, "huge", VESK_UID).empty());
  EXPECT_TRUE(values(directory, "word", VESK_UID).empty());
}

TEST(Directory, ShortensALongDomainToItsShortName) {
  for (const auto& [label, name] :
       {std::pair("fifteen-letters", "FIFTEEN-LETTERS"), std::pair("sixteen-letters-", "SIXTEEN-LETTERS")}) {
    Directory directory;
    loadText(directory, "dn: DC="s + label + ",DC=org\nobjectClass: domainDNS\n");
    EXPECT_EQ(directory.domain().netbiosName, name);
  }
}

TEST(Directory, ResolvesNestedGroupsAndCycles) {
  Directory directory;
  directory.load(TEST_SOURCE_DIR "/tests/standin/groups.ldif");
  std::set<std::string> both = {"loner", "user"};
  for (const char* group : {"inner", "middle", "outer"}) {
    EXPECT_EQ(values(directory, group, VESK_GROUP_MEMBERS), both) << group;
    EXPECT_EQ(values(directory, group, VESK_COMPUTER_MEMBERS), std::set<std::string>{"computer"}) << group;
  }
  std::set<std::string> all = {"S-1-5-21-1-2-3-10", "S-1-5-21-1-2-3-11", "S-1-5-21-1-2-3-12"};
  EXPECT_EQ(values(directory, "user", VESK_GROUPS), all);
  all.insert({"S-1-5-21-1-2-3-13", "S-1-5-21-1-2-3-99"});
  EXPECT_EQ(values(directory, "loner", VESK_GROUPS), all);
}

class SampleTest : public testing::Test {
 protected:
  SampleTest() { m_directory.load(kSample + "accounts.ldif"); }

  Directory m_directory;
  AttributeMap m_map{m_directory};
};

TEST_F(SampleTest, KeepsEveryValueAndItsIdentity) {
  std::ifstream table(kSample + "sids.tsv");
  size_t count = 0;
  std::string line, fields[6];  // DN, SID, the same in base 64, GUID, the same in base 64, USN
  for (std::getline(table, line); std::getline(table, line); ++count) {
    std::istringstream columns(line);
    for (std::string& field : fields) std::getline(columns, field, '\t');
    SCOPED_TRACE(fields[0]);
    const EntryId id = m_directory.byDn(fields[0]);
    ASSERT_NE(id, kNoEntry);
    const brondalt::Object blob = m_map.blob(id);
    std::string copy(blob->data(), blob->size());
    vesk::ADObject object(blob->size(), copy.data(), false, nullptr);
    for (const Attribute& attribute : m_directory[id].attributes()) {
      const vesk::ADAttribute& found = object[attribute.name];
      EXPECT_EQ(std::vector<std::string>(found.begin(), found.end()), attribute.values) << attribute.name;
    }
    EXPECT_EQ(std::string(object[AD_DN]), m_directory[id].dn());
    EXPECT_EQ(object.sid().isNull() ? "" : object.sid().toMSString(), fields[1]);
    EXPECT_EQ(object.guid().toRealMSString(), fields[3]);
    EXPECT_EQ(std::string(object.usn()), fields[5]);
  }
  EXPECT_EQ(m_directory.size(), count);
  EXPECT_EQ(m_directory.bySid(vesk::SID().bytes()), kNoEntry);
}

TEST_F(SampleTest, ReturnsOnlyTheAttributesThatAreWanted) {
  const EntryId id = m_directory.byName("lquispe", Family::Accounts);
  vesk::ADObject some = m_map.object(id, {"CN", "_uid", "nosuch"});
  EXPECT_TRUE(some.attributeExists("cn", true) && some.attributeExists(VESK_UID, true));
  EXPECT_FALSE(some.attributeExists("sn", false));
  EXPECT_FALSE(m_map.object(id, {AD_DN_ONLY}).attributeExists("cn", false));
  EXPECT_FALSE(m_map.object(id, {AD_DN_ONLY}).sid().isNull());
  EXPECT_TRUE(m_map.object(id, {AD_ANY}).attributeExists("sn", true));

  m_directory.set(id, AD_DESCRIPTION, "changed");
  EXPECT_EQ(std::string(m_map.blob(id)->find(AD_DESCRIPTION)), "changed");
  EXPECT_EQ(std::string(m_map.blob(id)->getUsn()), std::to_string(m_directory.highestUsn()));
  EXPECT_TRUE(m_map.object(id, {}).attributeExists(VESK_SHADOW_MAX, true));
  m_directory.set(m_directory.domain().entry, "maxPwdAge", "-9223372036854775808");  // never
  EXPECT_FALSE(m_map.object(id, {}).attributeExists(VESK_SHADOW_MAX, true));
}

}  // namespace
}  // namespace standin
