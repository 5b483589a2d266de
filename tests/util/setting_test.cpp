#include "util/include/setting.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>

#include <functional>

#include "tests/support/world_test.h"
#include "util/include/error_util.h"
#include "util/include/path.h"

using namespace testsupport;
using namespace vesk;

namespace {

const std::string kDir = "/var/velmora/";

std::string failureOf(const std::function<void()>& call) {
  try {
    call();
  } catch (const VESKException& failure) {
    return std::string(failure.className()) + "|" + failure.what();
  }
  return "nothing thrown";
}

class SettingTest : public WorldTest {
 protected:
  void SetUp() override {
    WorldTest::SetUp();
    clearSettingsMap();
  }

  static std::string fileOf(const std::string& name) { return get(kDir + "kset." + name); }

  static ino_t inodeOf(const std::string& name) {
    struct stat info = {};
    lstat((kDir + "kset." + name).c_str(), &info);
    return info.st_ino;
  }

  static int temporaryFiles(const std::string& dir = kDir) {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(dir))
      count += entry.path().string().find(".KSET.TEMP") != std::string::npos;
    return count;
  }

  static void save(const std::string& name, const std::string& value,
                   SettingAccess access = SETTING_DEFAULT) {
    saveSetting(name, value, access, false, false);
  }

  static void setReadOnly(bool readOnly) {
    const char* dir = kDir.c_str();
    if (!readOnly) {
      ASSERT_EQ(umount(dir), 0);
      return;
    }
    ASSERT_EQ(mount(dir, dir, nullptr, MS_BIND, nullptr), 0);
    ASSERT_EQ(mount(nullptr, dir, nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr), 0);
  }
};

TEST_F(SettingTest, RootsValuesGoToFilesTrimmedAndWithTheirModes) {
  const mode_t mask = umask(077);
  save(SETTING_DOMAIN_NAME, " a.example\n\n", SETTING_PUBLIC);
  save(SETTING_SCHEMA, "NULL");
  umask(mask);
  EXPECT_EQ(fileOf("domain"), "a.example");
  EXPECT_EQ(modeOf(kDir + "kset.domain"), S_IFREG | 0644u);
  EXPECT_EQ(modeOf(kDir + "kset.schema"), S_IFREG | 0600u);
  EXPECT_EQ(modeOf(kDir + "user"), S_IFDIR | 01777u);
  EXPECT_TRUE(SettingExists("domain"));
  EXPECT_GT(SettingModTime("domain"), 0);

  const ino_t before = inodeOf("domain");
  save(SETTING_DOMAIN_NAME, "a.example ", SETTING_PUBLIC);
  EXPECT_EQ(inodeOf("domain"), before) << "the same value is not written again";
  saveSetting(SETTING_DOMAIN_NAME, "a.example", SETTING_PUBLIC, false, true);
  EXPECT_NE(inodeOf("domain"), before) << "unless it is forced";

  put(kDir + "user/kset.domain", "stale");
  save(SETTING_DOMAIN_NAME, "");
  EXPECT_FALSE(SettingExists("domain"));
  EXPECT_EQ(SettingModTime("domain"), 0);
  EXPECT_EQ(modeOf(kDir + "user/kset.domain"), 0u);
  EXPECT_EQ(GetSetting(SETTING_HOST_NAME, "none"), "none");
  EXPECT_EQ(temporaryFiles(), 0);
}

TEST_F(SettingTest, ReadsOneValueOrSaysWhatIsWrong) {
  save("schema", "NULL");
  put(in("victim"), "secret");
  const std::string big(5000, 'x');
  struct Row {
    const char* name;
    std::string content;
    std::string result;
  };
  const Row rows[] = {
      {"site", " a\n b\n\n", "a\n b"},
      {"site", "", ""},
      {"site", "a\tb", "BadDataException|Control character is disallowed in /var/velmora/kset.site file."},
      {"site", "a\x7f", "BadDataException|Control character is disallowed in /var/velmora/kset.site file."},
      {"site", big.substr(0, 1024), big.substr(0, 1024)},
      {"site", big.substr(0, 1025), "IOException|Read kset.site: size(1025) exceeds maximum (1024)"},
      {"trusts", big, big},
      {"dc.one", big, big},
  };
  const auto read = [](const char* name) {
    std::string value;
    const std::string failure = failureOf([&] { value = readSettingFile(name, ""); });
    return failure == "nothing thrown" ? value : failure;
  };
  for (const Row& row : rows) {
    put(kDir + "kset." + row.name, row.content);
    EXPECT_EQ(read(row.name), row.result) << row.name;
  }
  const std::string path = kDir + "kset.dc.p";
  EXPECT_EQ(read("dc.p"), "IOException|Cannot open file " + path + ": No such file or directory");
  ASSERT_EQ(symlink(in("victim").c_str(), path.c_str()), 0);
  EXPECT_EQ(read("dc.p"), "IOException|Cannot open file " + path + ": Too many levels of symbolic links");
  unlink(path.c_str());
  ASSERT_EQ(mkfifo(path.c_str(), 0666), 0);
  EXPECT_EQ(read("dc.p"), "IOException|Cannot read file " + path + ": Invalid argument");
  unlink(path.c_str());
  ASSERT_EQ(mkdir(path.c_str(), 0755), 0);
  EXPECT_EQ(read("dc.p"), "IOException|Cannot read file " + path + ": Is a directory");
  rmdir(path.c_str());
  put(path, "");
  ASSERT_EQ(truncate(path.c_str(), 1LL << 40), 0);
  EXPECT_EQ(read("dc.p"), "BadDataException|Control character is disallowed in " + path + " file.")
      << "a file that claims to be huge costs no memory";
}

TEST_F(SettingTest, WhatIsTooLargeIsRefusedAndChangesNothing) {
  save("site", "old");
  for (const bool defer : {false, true})
    EXPECT_EQ(failureOf([=] { saveSetting("site", std::string(1025, 'x'), SETTING_DEFAULT, defer, false); }),
              "IOException|Write kset.site: size(1025) exceeds maximum (1024)");
  EXPECT_EQ(GetSetting("site", ""), "old");
  EXPECT_EQ(fileOf("site"), "old");
  save("dc.x", std::string(1025, 'x'));
  EXPECT_EQ(fileOf("dc.x").size(), 1025u);
}

TEST_F(SettingTest, APropertyBeatsTheFile) {
  save("domain", "file.example");
  save("host", "h.example");
  clearSettingsMap();
  configure("kset.domain: property.example\n");
  EXPECT_EQ(GetSetting("domain", ""), "property.example");
  EXPECT_EQ(loadSetting("domain", false), "property.example");
  EXPECT_EQ(internalGetSetting("domain", ""), "file.example");

  configure("kset.files.disabled: Yes\n");
  EXPECT_EQ(failureOf([] { loadSetting("site", false); }),
            "IOException|No property found for site and file I/O disabled in properties file");
  save("site", "kept");
  EXPECT_EQ(loadSetting("site", false), "kept");
  EXPECT_EQ(Props(false, false)->getString("kset.site"), "kept");
  EXPECT_FALSE(SettingExists("site"));
  configure("kset.files.disabled: maybe\n");
  EXPECT_EQ(loadSetting("host", false), "h.example");
}

TEST_F(SettingTest, TheDataDirectoryMovesOnlyBeforeAnythingIsRead) {
  save("site", "here");
  EXPECT_EQ(failureOf([this] { chgDataDir(m_dir + "/"); }), "AlreadyException|change data dir");
  EXPECT_NE(logged().find("Settings Map already been created, cannot change root of data directory."),
            std::string::npos);
  clearSettingsMap();
  chgDataDir(m_dir + "/deep/data/");
  EXPECT_EQ(getDataDir(), m_dir + "/deep/data/");
  save("site", "there");
  EXPECT_EQ(get(in("deep/data/kset.site")), "there");
  EXPECT_EQ(modeOf(in("deep/data")), S_IFDIR | 0755u);
  EXPECT_EQ(modeOf(in("deep/data/user")), S_IFDIR | 01777u);
  deleteDataDir();
  EXPECT_EQ(modeOf(in("deep/data")), 0u);
  clearSettingsMap();
  chgDataDir(kDir);
}

TEST_F(SettingTest, AnOrdinaryUserWritesOnlyHisCopyOfDomainControllers) {
  if (!canBeOrdinaryUser()) GTEST_SKIP() << "another user is needed";
  save("site", "roots", SETTING_PUBLIC);
  save("dc.a", "roots", SETTING_PUBLIC);
  clearSettingsMap();
  checkInChild(
      [] {
        EXPECT_EQ(GetSetting("dc.a", ""), "roots");
        const long descriptors = openDescriptors();
        const mode_t mask = umask(027);
        save("site", "mine");
        EXPECT_EQ(GetSetting("site", ""), "mine");
        save("dc.a", "mine", SETTING_PUBLIC);
        save("dc.b", "mine");
        umask(mask);
        EXPECT_EQ(openDescriptors(), descriptors);
      },
      kOrdinaryUser);
  EXPECT_EQ(fileOf("site"), "roots");
  EXPECT_EQ(modeOf(kDir + "user/kset.dc.a"), S_IFREG | 0666u);
  EXPECT_EQ(modeOf(kDir + "user/kset.dc.b"), S_IFREG | 0600u);
  EXPECT_EQ(GetSetting("dc.a", ""), "roots") << "root looks at his own first";
  EXPECT_EQ(GetSetting("dc.b", ""), "mine");
  clearSettingsMap();
  checkInChild([] { EXPECT_EQ(loadSettingFromFile("dc.a"), "mine"); }, kOrdinaryUser);
  save("dc.a", "new");
  EXPECT_EQ(modeOf(kDir + "user/kset.dc.a"), 0u);
}

TEST_F(SettingTest, AnUnprivilegedToolHasAPrivateDataDirectory) {
  if (!canBeOrdinaryUser()) GTEST_SKIP() << "another user is needed";
  const auto inOwnTmp = [](const std::function<void()>& plant, const std::function<void()>& work) {
    checkInChild([&] {
      ASSERT_EQ(unshare(CLONE_NEWNS), 0);
      ASSERT_EQ(mount("tmpfs", "/tmp", "tmpfs", 0, "mode=1777"), 0);
      plant();
      chgDataDir("/tmp/precreate/");
      checkInChild(work, kOrdinaryUser);
    });
  };
  inOwnTmp([] {},
           [] {
             save("dc.a", "x");
             EXPECT_EQ(get("/tmp/precreate/user/kset.dc.a"), "x");
             EXPECT_EQ(modeOf("/tmp/precreate"), S_IFDIR | 0755u);
           });
  const auto refused = [] {
    EXPECT_EQ(failureOf([] { save("dc.a", "x"); }),
              "IOException|Failed to create temp directory to precreate computer and extension object\n");
  };
  inOwnTmp([] { ASSERT_EQ(mkdir("/tmp/precreate", 0777), 0); }, refused);
  inOwnTmp([] { ASSERT_EQ(symlink("/tmp", "/tmp/precreate"), 0); }, refused);
  inOwnTmp(
      [] {
        ASSERT_EQ(mkdir("/tmp/home", 0700) + mkdir("/tmp/precreate", 0755), 0);
        ASSERT_EQ(symlink("/tmp/home", "/tmp/precreate/user"), 0);
        for (const char* path : {"/tmp/home", "/tmp/precreate"})
          ASSERT_EQ(chown(path, kOrdinaryUser, kOrdinaryUser), 0);
      },
      [] {
        createDataDir();
        EXPECT_EQ(modeOf("/tmp/home"), S_IFDIR | 0700u) << "no link is followed to open a directory to all";
      });
}

TEST_F(SettingTest, AWriteThatFailsIsRepeatedLater) {
  checkInChild([] {
    save("site", "old");
    setReadOnly(true);
    saveSetting("site", "new", SETTING_PUBLIC, true, false);
    saveSetting("zone", "z", SETTING_DEFAULT, true, false);
    saveSetting("zone", "zz", SETTING_DEFAULT, true, false);
    EXPECT_EQ(GetSetting("site", ""), "new");
    EXPECT_EQ(fileOf("site"), "old");
    EXPECT_EQ(rewriteSettingFiles(), 2);
    EXPECT_EQ(failureOf([] { save("host", "h"); }).find("IOException|Cannot open file "), 0u);
    setReadOnly(false);
    EXPECT_EQ(GetSetting("host", "none"), "none") << "what was not written is not remembered";
    save("host", "h");
    EXPECT_EQ(fileOf("site") + "," + fileOf("zone") + "," + fileOf("host"), "new,zz,h");
    EXPECT_EQ(modeOf(kDir + "kset.site"), S_IFREG | 0644u);
    EXPECT_EQ(rewriteSettingFiles(), 0);
  });
}

TEST_F(SettingTest, WhatIsPlantedAtTheTargetIsReplacedAndNeverFollowed) {
  createDataDir();
  const std::string victim = "/var/log/victim";
  const std::string path = kDir + "kset.site";
  put(victim, "stays");
  const std::function<int()> plants[] = {
      [&] { return symlink(victim.c_str(), path.c_str()); },
      [&] { return link(victim.c_str(), path.c_str()); },
      [&] { return mkfifo(path.c_str(), 0666); },
  };
  for (const auto& plant : plants) {
    unlink(path.c_str());
    ASSERT_EQ(plant(), 0);
    saveSetting("site", "mine", SETTING_DEFAULT, false, true);
    EXPECT_EQ(modeOf(path), S_IFREG | 0600u);
    EXPECT_EQ(fileOf("site"), "mine");
    EXPECT_EQ(get(victim), "stays");
  }
  unlink(path.c_str());
  ASSERT_EQ(mkdir(path.c_str(), 0755), 0);
  EXPECT_EQ(failureOf([] { save("site", "other"); }),
            "IOException|Cannot rename file to " + path + ": Is a directory");
  EXPECT_EQ(failureOf([] { save("site", ""); }),
            "IOException|Cannot remove file " + path + ": Is a directory");
  EXPECT_EQ(temporaryFiles(), 0);

  if (!canBeOrdinaryUser()) GTEST_SKIP() << "another user is needed for the rest";
  put(kDir + "user/kset.dc.a", "another's");
  checkInChild(
      [] {
        EXPECT_EQ(failureOf([] { save("dc.a", "mine"); }),
                  "IOException|Cannot rename file to /var/velmora/user/kset.dc.a: Operation not permitted");
      },
      kOrdinaryUser);
  EXPECT_EQ(get(kDir + "user/kset.dc.a"), "another's");
  EXPECT_EQ(temporaryFiles(kDir + "user"), 0);
}

TEST_F(SettingTest, KnowsWhetherTheHostIsJoined) {
  EXPECT_FALSE(joined());
  save("domain", "d.example");
  EXPECT_FALSE(joined());
  save("host", "h.d.example");
  EXPECT_TRUE(joined());
  put(kDir + "QTR_KAMBREL_IN_PROGRESS", "");
  EXPECT_FALSE(joined());
}

TEST_F(SettingTest, KnowsWhatAJoinedHostNeeds) {
  const std::string autoZone = "00112233445566778899aabbccddeeff";
  struct Row {
    std::string host, schema, zone, zoneName, result;
  };
  const Row rows[] = {
      {"", "", "", "", "IOException|Cannot find key sets of host."},
      {"h", "", "", "", "IOException|Cannot find key sets of zone schema."},
      {"h", "NULL", "", "", "nothing thrown"},
      {"h", "NULL_AUTO", "", "", "IOException|Incorrect key sets of zone guid for auto zone."},
      {"h", "NULL_AUTO", autoZone, "", "nothing thrown"},
      {"h", "RFC", "z", "", "IOException|Cannot find key sets of zone name or zone guid."},
      {"h", "RFC", "", "n", "IOException|Cannot find key sets of zone name or zone guid."},
      {"h", "RFC", "z", "n", "nothing thrown"},
  };
  for (const Row& row : rows) {
    save("host", row.host);
    save("schema", row.schema);
    save("zone", row.zone);
    save("zonename", row.zoneName);
    clearSettingsMap();
    EXPECT_EQ(failureOf(CheckEssentialKSets), row.result);
  }
}

}  // namespace
