// Settings, and the files that hold them.

#include <sys/file.h>
#include <sys/mount.h>

#include "tests/support/rows.h"
#include "tests/support/world_test.h"

using namespace testsupport;
using namespace vesk;

namespace {

const std::string kDir = "/var/velmora/";
const std::string kSite = kDir + "kset.site";
const std::string kUsers = kDir + "user/kset.dc.a";

void save(const std::string& name, const std::string& value, SettingAccess access = SETTING_DEFAULT) {
  saveSetting(name, value, access, false, false);
}

class SettingTest : public WorldTest {
 protected:
  void SetUp() override {
    WorldTest::SetUp();
    clearSettingsMap();
  }

  static std::string readOrFailure(const std::string& name) {
    std::string value;
    const std::string failure = failureOf([&] { value = readSettingFile(name, ""); });
    return failure.empty() ? value : failure;
  }
};

TEST_F(SettingTest, RootsValuesAreTrimmedAndSavedWithTheirModes) {
  const mode_t mask = umask(077);
  save("site", " a.example\n\n", SETTING_PUBLIC);
  save("schema", "NULL");
  umask(mask);
  EXPECT_EQ(get(kSite), "a.example");
  EXPECT_EQ(modeOf(kSite), S_IFREG | 0644u);
  EXPECT_EQ(modeOf(kDir + "kset.schema"), S_IFREG | 0600u);
  EXPECT_EQ(modeOf(kDir + "user"), S_IFDIR | 01777u);
  EXPECT_TRUE(SettingExists("site") && SettingModTime("site") > 0);
  const ino_t before = infoOf(kSite).st_ino;
  save("site", "a.example ", SETTING_PUBLIC);
  EXPECT_EQ(infoOf(kSite).st_ino, before) << "the same value is not written again";
  saveSetting("site", "a.example", SETTING_PUBLIC, false, true);
  EXPECT_NE(infoOf(kSite).st_ino, before) << "unless it is forced";
  put(kDir + "user/kset.site", "stale");
  save("site", "");
  EXPECT_FALSE(SettingExists("site") || SettingModTime("site") != 0 || modeOf(kDir + "user/kset.site") != 0);
}

TEST_F(SettingTest, AFileIsOneValueOrAnError) {
  createDataDir();
  const std::string big(1048576, 'x'), path = kDir + "kset.dc.p";
  const std::string values[][3] = {
      {"site", " a\n b\n\n", "a\n b"},
      {"site", "a\x7f", "BadDataException|Control character is disallowed in " + kSite + " file."},
      {"site", big.substr(0, 1025), "IOException|Read kset.site: size(1025) exceeds maximum (1024)"},
      {"site", big.substr(0, 1024), big.substr(0, 1024)},
      {"trusts", big, big},
      {"dc.p", big, big},
  };
  for (const auto& [name, content, result] : values) {
    put(kDir + "kset." + name, content);
    EXPECT_TRUE(readOrFailure(name) == result) << name << " of " << content.size() << " bytes";
  }
  for (const auto& [plant, result] : rowsOf<2>("util/setting/rows.txt", "plants: command, failure")) {
    std::filesystem::remove(path);
    shell(plant + " " + path);
    EXPECT_EQ(readOrFailure("dc.p"), "IOException|Cannot " + result);
  }
  put(in("kset.dc.q"), "");
  ASSERT_EQ(truncate(in("kset.dc.q").c_str(), 1LL << 40), 0);
  EXPECT_FAILURE("IOException|Read kset.dc.q: size(1099511627776) exceeds maximum (1048576)",
                 readSettingFile("dc.q", in("")));
}

TEST_F(SettingTest, TooLargeValuesAreRefusedAndChangeNothing) {
  save("site", "old");
  for (const bool defer : {false, true})
    for (const std::string name : {"site", "dc.a"}) {
      const int limit = name == "site" ? 1024 : 1048576;
      EXPECT_FAILURE("IOException|Write kset." + name + ": size(" + std::to_string(limit + 1) +
                         ") exceeds maximum (" + std::to_string(limit) + ")",
                     saveSetting(name, std::string(limit + 1, 'x'), SETTING_DEFAULT, defer, false));
    }
  EXPECT_EQ(GetSetting("site", "") + get(kSite), "oldold");
}

TEST_F(SettingTest, APropertyOverridesTheFile) {
  save("domain", "file.example");
  clearSettingsMap();
  configure("kset.domain: property.example\n");
  EXPECT_EQ(GetSetting("domain", "") + loadSetting("domain", false), "property.exampleproperty.example");
  EXPECT_EQ(internalGetSetting("domain", ""), "file.example");
  configure("kset.files.disabled: Yes\n");
  EXPECT_FAILURE("IOException|No property found for site and file I/O disabled in properties file",
                 loadSetting("site", false));
  save("site", "kept");
  EXPECT_EQ(loadSetting("site", false) + Props(false, false)->getString("kset.site"), "keptkept");
  EXPECT_FALSE(SettingExists("site"));
  configure("kset.files.disabled: maybe\n");
  EXPECT_EQ(loadSetting("domain", false), "file.example");
}

TEST_F(SettingTest, TheDataDirectoryMovesOnlyBeforeAnythingIsRead) {
  save("site", "here");
  EXPECT_FAILURE("AlreadyException|change data dir", chgDataDir(in("")));
  clearSettingsMap();
  chgDataDir(in("deep/data/"));
  save("site", "there");
  EXPECT_EQ(get(in("deep/data/kset.site")), "there");
  EXPECT_EQ(modeOf(in("deep/data/user")), S_IFDIR | 01777u);
  deleteDataDir();
  EXPECT_EQ(modeOf(in("deep/data")), 0u);
  clearSettingsMap();
  chgDataDir(kDir);
}

TEST_F(SettingTest, AnOrdinaryUserWritesOnlyACopyOfDomainControllers) {
  if (!canBeOrdinaryUser()) GTEST_SKIP() << "another user is needed";
  for (const char* name : {"site", "dc.a"}) save(name, "roots", SETTING_PUBLIC);
  clearSettingsMap();
  const auto work = [] {
    EXPECT_EQ(GetSetting("dc.a", ""), "roots");
    const long descriptors = openDescriptors();
    umask(027);
    for (const char* name : {"site", "dc.a", "dc.b"}) save(name, "mine", SETTING_PUBLIC);
    EXPECT_EQ(openDescriptors(), descriptors);
    EXPECT_EQ(GetSetting("site", ""), "mine") << "in his own memory";
    clearSettingsMap();
    EXPECT_EQ(GetSetting("site", "") + GetSetting("dc.a", ""), "rootsmine");
  };
  checkInChild(work, kOrdinaryUser);
  EXPECT_EQ(modeOf(kUsers), S_IFREG | 0666u);
  EXPECT_EQ(GetSetting("dc.a", "") + GetSetting("dc.b", "none"), "rootsnone") << "root trusts its own files";
  EXPECT_FAILURE("IOException|Cannot read file " + kDir + "user/kset.dc.b: Operation not permitted",
                 readSettingFile("dc.b", kDir + "user/"));
  KSets(kDir).copyDCs(in(""), kDir + "user/");
  EXPECT_FALSE(std::filesystem::exists(in("kset.dc.b")));
  ASSERT_EQ(chown((kDir + "user/kset.dc.b").c_str(), 0, 0), 0);
  EXPECT_EQ(GetSetting("dc.b", "none"), "mine");
  save("dc.a", "new");
  EXPECT_EQ(modeOf(kUsers), 0u);
}

TEST_F(SettingTest, AnUnprivilegedToolHasAPrivateDataDirectory) {
  if (!canMount() || !canBeOrdinaryUser()) GTEST_SKIP() << "mounts and another user are needed";
  const auto works = [] {
    save("dc.a", "x");
    EXPECT_EQ(get("/tmp/precreate/user/kset.dc.a"), "x");
    EXPECT_EQ(modeOf("/tmp/precreate"), S_IFDIR | 0755u);
  };
  const auto refused = [] {
    EXPECT_FAILURE("IOException|Failed to create temp directory to precreate computer and extension object\n",
                   save("dc.a", "x"));
  };
  const auto linked = [] {
    createDataDir();
    EXPECT_EQ(modeOf("/tmp/home"), S_IFDIR | 0700u) << "opened to all users through a link";
  };
  const std::pair<const char*, void (*)()> rows[] = {
      {"true", works},
      {"mkdir -m 777 precreate", refused},
      {"ln -s /tmp precreate", refused},
      {"mkdir -m 700 home; mkdir precreate; chown 1000 home precreate; ln -s /tmp/home precreate/user",
       linked},
  };
  for (const auto& [plant, work] : rows)
    checkInChild([&plant = plant, &work = work] {
      ASSERT_EQ(unshare(CLONE_NEWNS) + mount("tmpfs", "/tmp", "tmpfs", 0, "mode=1777") + chdir("/tmp"), 0);
      ASSERT_EQ(system(plant), 0);
      chgDataDir("/tmp/precreate/");
      checkInChild(work, kOrdinaryUser);
    });
}

TEST_F(SettingTest, AFailedWriteIsRepeatedLater) {
  if (!canMount()) GTEST_SKIP() << "mounts are needed";
  checkInChild([] {
    const char* dir = kDir.c_str();
    save("site", "old");
    ASSERT_EQ(mount(dir, dir, nullptr, MS_BIND, nullptr), 0);
    ASSERT_EQ(mount(nullptr, dir, nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr), 0);
    for (const char* name : {"site", "zone", "zone"}) saveSetting(name, name, SETTING_PUBLIC, true, false);
    EXPECT_EQ(GetSetting("site", "") + get(kSite), "siteold");
    EXPECT_EQ(rewriteSettingFiles(), 2);
    EXPECT_THROW(save("host", "h"), IOException);
    EXPECT_EQ(GetSetting("host", "none"), "none") << "what was not written is not remembered";
    ASSERT_EQ(umount(dir), 0);
    save("host", "h");
    EXPECT_EQ(get(kSite) + get(kDir + "kset.zone") + get(kDir + "kset.host"), "sitezoneh");
    EXPECT_EQ(modeOf(kSite), S_IFREG | 0644u);
    EXPECT_EQ(rewriteSettingFiles(), 0);
  });
}

TEST_F(SettingTest, AnythingPlantedAtTheTargetIsReplacedAndNeverFollowed) {
  createDataDir();
  put("/var/log/victim", "stays");
  for (const std::string plant : {"ln -s /var/log/victim ", "ln /var/log/victim ", "mkfifo "}) {
    ASSERT_EQ(system((plant + kSite).c_str()), 0);
    saveSetting("site", "mine", SETTING_DEFAULT, false, true);
    EXPECT_EQ(modeOf(kSite), S_IFREG | 0600u);
    EXPECT_EQ(get(kSite) + get("/var/log/victim"), "minestays");
    unlink(kSite.c_str());
  }
  ASSERT_EQ(mkdir(kSite.c_str(), 0755), 0);
  EXPECT_FAILURE("IOException|Cannot rename file to " + kSite + ": Is a directory", save("site", "x"));
  EXPECT_FAILURE("IOException|Cannot remove file " + kSite + ": Is a directory", save("site", ""));
  if (canBeOrdinaryUser()) {
    put(kUsers, "another's");
    checkInChild([] { EXPECT_THROW(save("dc.a", "mine"), IOException); }, kOrdinaryUser);
    EXPECT_EQ(get(kUsers), "another's");
  }
  for (const auto& entry : std::filesystem::recursive_directory_iterator(kDir))
    EXPECT_EQ(entry.path().string().find(".KSET.TEMP"), std::string::npos) << entry;
}

TEST_F(SettingTest, AJoinedHostNeedsTheseSettings) {
  save("domain", "d.example");
  for (const auto& row :
       rowsOf<5>("util/setting/rows.txt", "joined: host, schema, zone, zonename, failure")) {
    size_t i = 0;
    for (const char* name : {"host", "schema", "zone", "zonename"}) save(name, row[i++]);
    EXPECT_EQ(joined(), !row[0].empty());
    EXPECT_EQ(failureOf(CheckEssentialKSets), row[4].empty() ? "" : "IOException|" + row[4]);
  }
  put(kDir + "QTR_KAMBREL_IN_PROGRESS", "");
  EXPECT_FALSE(joined());
}

class KSetTest : public WorldTest {
 protected:
  void SetUp() override {
    WorldTest::SetUp();
    if (IsSkipped()) return;
    shell("mkdir a b a/kset.dir; printf d.example > a/kset.domain; printf 'one\\0\\n' > a/kset.dc.one");
    shell("cd a; printf x > kset.dcx; echo half | tee other kset.dc.KSET.TEMP.left > kset.dc.KSET.TEMP.live");
    shell("printf stays > victim; ln -s ../victim a/kset.link; mkfifo -m 600 a/kset.pipe");
    shell("chmod 640 a/kset.domain; chmod 600 a/kset.dc.KSET.TEMP.live");
    m_writer = open(in("a/kset.dc.KSET.TEMP.live").c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(flock(m_writer, LOCK_EX | LOCK_NB), 0);
  }
  void TearDown() override {
    close(m_writer);
    WorldTest::TearDown();
  }

  void plantLink(const std::string& name) {
    unlink(in(name).c_str());
    ASSERT_EQ(symlink(in("victim").c_str(), in(name).c_str()), 0);
  }

  std::string list(const std::string& dir) const { return namesIn(in(dir)); }

 private:
  int m_writer = -1;  // holds the lock of a file that is still being written
};

TEST_F(KSetTest, CopiesWithModesAndNeverThroughALink) {
  const KSets sets(in("a"));
  for (const char* name : {"kset.domain", "kset.missing"}) sets.copy(in("b"), "", name);
  EXPECT_EQ(list("b"), "kset.domain ");
  EXPECT_EQ(modeOf(in("b/kset.domain")), S_IFREG | 0640u);
  plantLink("b/kset.dc.one");
  sets.copyDCs(in("b"), "");
  EXPECT_EQ(list("b"), "kset.dc.one kset.domain ");
  EXPECT_EQ(get(in("b/kset.dc.one")), std::string("one\0\n", 5));
  sets.copy(in("b"), in("a"));
  EXPECT_EQ(list("b"), "kset.dc.one kset.dcx kset.domain ");
  EXPECT_EQ(get(in("victim")), "stays");
}

TEST_F(KSetTest, RollsBackToTheSnapshotOnceAndClearsTheMemory) {
  saveSetting("site", "s", SETTING_DEFAULT, false, false);
  KSets sets(in("a"));
  EXPECT_FAILURE("NotFoundException|Cannot open directory " + in("gone/: No such file or directory"),
                 sets.snapShot(in("gone")));
  sets.snapShot("");
  put(in("a/kset.domain"), "changed");
  put(in("a/kset.new"), "new");
  ASSERT_EQ(chmod(in("a/kset.domain").c_str(), 0600), 0);
  plantLink("a/kset.dc.one");
  sets.rollBack("");
  EXPECT_EQ(list("a"), "kset.dc.KSET.TEMP.live kset.dc.one kset.dcx kset.dir kset.domain other ");
  EXPECT_EQ(get(in("a/kset.domain")) + get(in("a/kset.dc.one")), std::string("d.exampleone\0\n", 14));
  EXPECT_EQ(modeOf(in("a/kset.domain")), S_IFREG | 0640u);
  EXPECT_EQ(get(in("victim")), "stays");
  sets.rollBack("");
  EXPECT_EQ(list("a"), "kset.dc.KSET.TEMP.live kset.dir other ") << "the snapshot was spent";
  put(in("a/kset.site"), "s");
  sets.clean("");
  EXPECT_EQ(list("a"), "kset.dc.KSET.TEMP.live kset.dir other ");
  std::filesystem::remove("/var/velmora/kset.site");
  EXPECT_EQ(GetSetting("site", "none"), "none");
}

TEST_F(KSetTest, OnlyAnUnreadableFileIsAnError) {
  if (!canBeOrdinaryUser()) GTEST_SKIP() << "root may do everything";
  for (const mode_t mode : {0644, 0600}) {
    ASSERT_EQ(chmod(in("a/kset.domain").c_str(), mode), 0);
    const char* failure = mode == 0644 ? "" : "SystemException|OS call failed: Permission denied";
    checkInChild([&] { EXPECT_FAILURE(failure, KSets(in("a")).snapShot("")); }, kOrdinaryUser);
  }
  ASSERT_EQ(chmod(in("a").c_str(), 0777), 0);
  checkInChild([&] { CleanTempSettingFiles(in("a")); }, kOrdinaryUser);
  EXPECT_EQ(list("a").find("kset.dc.KSET.TEMP.live kset.dc.one "), 0u)
      << "whether its writer lives is unknown";
}

}  // namespace
