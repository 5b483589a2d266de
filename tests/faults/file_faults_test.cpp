// The work on files while the system fails it: only what the headers name is thrown, a file that is replaced
// is the old one or the new one, nothing is left behind, and the same work succeeds afterwards.

#include <sys/syscall.h>

#include <fokrazo/file_logging.h>
#include <fokrazo/file_util.h>
#include <fokrazo/kset.h>
#include <fokrazo/log_gzip.h>
#include <fokrazo/osport.h>
#include <fokrazo/osutil.h>
#include <fokrazo/path.h>
#include <fokrazo/secure_open.h>
#include <fokrazo/selinux_context.h>
#include <fokrazo/session.h>
#include <fokrazo/setting.h>
#include "tests/faults/fault_plans.h"
#include "tests/support/world_test.h"

using namespace testsupport;
using namespace vesk;
namespace fs = std::filesystem;

namespace {

const std::string kDir = "/var/velmora/faults";  // in memory: fsync would take most of the time elsewhere

std::string at(const std::string& name) {
  return kDir + "/" + name;
}

std::string contentOf(const std::string& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// One piece of work on the directory that holds "config", "values", "old", "tree/…" and key sets. What it
// gives back is the same each time.
struct Work {
  const char* name;
  std::string (*run)(const std::string& dir);
  const char* replaced = nullptr;  // a file of the directory that is the old or the new one whatever happens
};

std::string list(const std::string& dir) {
  std::vector<std::string> names;
  for (directory_iterator it{Path(dir)}; it != directory_iterator::end(); ++it)
    names.push_back(it->string('/', true));
  std::sort(names.begin(), names.end());
  std::string all;
  for (const std::string& name : names) all += name + " ";
  return all;
}

// By a call that no fault strikes.
void removeUnfailing(const char* path) {
  syscall(SYS_unlinkat, AT_FDCWD, path, 0);
}

void __attribute__((format(printf, 2, 3))) write(FileLogging& log, const char* format, ...) {
  va_list args;
  va_start(args, format);
  log.log(format, args);
  va_end(args);
}

// What stands beside a small log that so many lines were written to.
std::string rotated(const std::string& dir, FileLogging::Settings settings, int lines) {
  settings.maxSize = 300;
  FileLogging log;
  log.init((dir + "/log").c_str(), settings);
  for (int i = 0; i < lines; ++i) write(log, "line %d of a log", i);
  log.destroy();
  return list(dir);
}

const Work kWorks[] = {
    {"read a setting",
     [](const std::string&) {
       clearSettingsMap();
       return loadSetting(SETTING_DOMAIN_NAME, false) + GetSetting(SETTING_SCHEMA, "none");
     }},
    {"save a setting",
     [](const std::string& dir) {
       writeSettingFile("replaced", "new", SETTING_PUBLIC, dir + "/");
       return readSettingFile("replaced", dir + "/");
     },
     "kset.replaced"},
    {"save a setting of the system",
     [](const std::string&) {
       saveSetting(SETTING_MACHINE_SITE, "here", SETTING_PUBLIC, false, true);
       clearSettingsMap();
       return loadSettingFromFile(SETTING_MACHINE_SITE) + std::to_string(rewriteSettingFiles());
     }},
    {"copy key sets",
     [](const std::string& dir) {
       KSets sets(dir);
       sets.copy(dir + "/tree", dir);
       sets.copyDCs(dir + "/tree", dir);
       return list(dir + "/tree");
     }},
    {"roll key sets back",
     [](const std::string& dir) {
       KSets sets(dir);
       sets.snapShot(dir);
       sets.clean(dir);
       sets.rollBack(dir);
       return list(dir);
     }},
    {"change the configuration",
     [](const std::string& dir) {
       const int rc =
           Properties::update(dir + "/config", [](Properties& file) { return file.setString("key", "new"); });
       return std::to_string(rc) + contentOf(dir + "/config");
     },
     "config"},
    {"read the configuration",
     [](const std::string& dir) {
       Properties properties;
       properties.load((dir + "/config").c_str(), true);
       std::string all = properties.getString("key");
       const auto items = properties.getValueList("list", "file:" + dir + "/values");
       for (const std::string& item : *items) all += item;
       return all;
     }},
    {"write and read a file",
     [](const std::string& dir) {
       int mode = 0640;
       WriteFile(dir + "/written", "text", &mode);
       return ReadFile(dir + "/written", &mode) + readFile(dir + "/written") + std::to_string(mode);
     }},
    {"copy and move files",
     [](const std::string& dir) {
       CopyFile(dir + "/old", dir + "/copy");
       CopyFiles(dir, dir + "/tree", "old");
       MoveFile(dir + "/copy", dir + "/moved");
       return list(dir) + std::to_string(GetFileSize(dir + "/old"));
     }},
    {"make temporary files",
     [](const std::string& dir) {
       std::string name = dir + "/tempXXXXXX";
       const int fd = mkstemp(name, 0600, getuid(), getgid());
       close(fd);
       removeUnfailing(name.c_str());
       char other[] = "/var/velmora/faults/tempXXXXXX";
       std::ofstream out;
       OpenTempFile(other, 0600, out);
       removeUnfailing(other);
       char place[200];
       return std::to_string(GetZantrelTempDir(0, place, sizeof place));
     }},
    {"make and remove directories",
     [](const std::string& dir) {
       Path::createDirectories(dir + "/a/b/c", getuid(), getgid(), 0700);
       Path::rename(dir + "/a", dir + "/d");
       Path::remove(dir + "/d", true);
       Path::remove(dir + "/tree", true);
       return list(dir);
     }},
    {"lock a file",
     [](const std::string& dir) {
       int status = 0;
       const int fd = QtrLock((dir + "/lock").c_str(), &status, 0600);
       if (fd >= 0) close(fd);
       return std::to_string(fd >= 0) + std::to_string(status);
     }},
    {"compress a log",
     [](const std::string& dir) {
       gzip((dir + "/old").c_str(), (dir + "/old.gz").c_str());
       gunzip((dir + "/old.gz").c_str(), (dir + "/again").c_str());
       return contentOf(dir + "/again");
     }},
    {"look at files",
     [](const std::string& dir) {
       std::string target;
       unsigned long long kilobytes = 0;
       const bool isLink = GetSymLinkPath((dir + "/link").c_str(), target, 8);
       GetFreeSpaceSize(dir, kilobytes);
       return target + std::to_string(isLink) + std::to_string(GetPerms(dir + "/old")) +
              std::to_string(SettingModTime(SETTING_DOMAIN_NAME) > 0) + std::to_string(joined()) +
              std::to_string(Path::exists(Path(dir)) && Path::is_directory(Path(dir)));
     }},
    {"open files for reading",
     [](const std::string& dir) {
       int status = 0;
       std::string all;
       for (const int secure : {0, 1}) {
         FILE* const file = OpenForReading((dir + "/old").c_str(), &status, secure);
         all += std::to_string(status);
         if (file) fclose(file);
       }
       return all;
     }},
    {"tidy up settings",
     [](const std::string& dir) {
       const std::string place = dir + "/tree/sub";
       std::ofstream(place + "/kset.one.KSET.TEMP.123456");
       CleanTempSettingFiles(place);
       return list(place);
     }},
    {"change modes and owners",
     [](const std::string& dir) {
       Path(dir + "/old").chmod(0600);
       Path(dir + "/old").chown(getuid(), getgid());
       RestoreFileSELinuxLabel(dir + "/old");
       renameFile(dir + "/old", dir + "/other");
       return std::to_string(GetPerms(dir + "/other"));
     }},
    {"write and rotate a log", [](const std::string& dir) { return rotated(dir, {}, 10); }},
    {"rotate a log and compress it",
     [](const std::string& dir) {
       FileLogging::Settings settings;
       settings.zipBackup = true;
       settings.flushFrequency = 1;
       return rotated(dir, settings, 6);
     }},
    {"run a program",
     [](const std::string&) {
       char name[] = "true";
       char* arguments[] = {name, nullptr};
       const int status = spawnfv(0, 0, nullptr, "/bin/true", arguments);
       spawnfv_reap();
       return std::to_string(status);
     }},
    {"tell the system",
     [](const std::string&) {
       std::string os;
       std::string version;
       OSVersion(os, version);
       return os + version + std::to_string(CurrentLogons("nobody"));
     }},
};

// What is interrupted is gone on with, but for work by the C library's streams or zlib, and a close that is
// the last word on a file.
bool mustGoOn(const FaultPlan& plan, const Work& work) {
  static const std::set<std::string> kByOthers = {"write and read a file", "write and rotate a log",
                                                  "compress a log", "rotate a log and compress it",
                                                  "tell the system"};
  return plan.isInterruption() && kByOthers.count(work.name) == 0;
}

class FileFaultsTest : public WorldTest {
 protected:
  void prepare() {
    clearSettingsMap();
    fs::remove_all(kDir);
    fs::create_directories(at("tree/sub"));
    put(at("config"), "# a comment\nkey: old\nlist:\n");
    put(at("values"), "one\ntwo\n");
    put(at("old"), "old");
    put(at("tree/sub/file"), "x");
    fs::create_symlink("old", at("link"));
    put(at("kset.replaced"), "old");
    put(at("kset.dc.one"), "dc");
    put(std::string(paths::kDataDir) + "kset.domain", "example.com\n");
  }

  void checkLeftovers(const FaultPlan& plan, const Work& work) {
    // What tidies up may have failed too.
    if (plan.call == Call::Inspect || (plan.call == Call::Change && plan.lasting)) return;
    // For a later save to find out.
    const bool staysLocked = plan.call == Call::Open || plan.call == Call::Change;
    for (const std::string& place : {kDir, at("tree")})
      if (fs::exists(place))
        for (const fs::directory_entry& entry : fs::directory_iterator(place)) {
          const std::string name = entry.path().filename();
          EXPECT_EQ(name.find(".TEMP"), std::string::npos) << work.name << " " << name;
          EXPECT_EQ(name.find(".new"), std::string::npos) << work.name << " " << name;
          EXPECT_NE(name.compare(0, 4, "temp"), 0) << work.name << " " << name;
          EXPECT_TRUE(staysLocked || name.find(".lock") == std::string::npos) << work.name << " " << name;
        }
  }

  void checkReplaced(const Work& work) {
    if (!work.replaced) return;
    const std::string content = get(at(work.replaced));
    const bool isOld = content == "old" || content == "# a comment\nkey: old\nlist:\n";
    const bool isNew = content == "new" || content == "# a comment\nkey: new\nlist:\n";
    EXPECT_TRUE(isOld || isNew) << content;
  }

  long m_before = 0;
};

TEST_F(FileFaultsTest, EachCallOfEachWorkFails) {
  unsigned failures = 0;
  for (const Work& work : kWorks) {
    SCOPED_TRACE(work.name);
    prepare();
    const std::string expected = work.run(kDir);
    if (work.replaced) {
      ASSERT_NE(get(at(work.replaced)).find("new"), std::string::npos);
    }
    m_before = openDescriptors();
    for (const FaultPlan& plan : kFaultPlans) {
      std::string result;
      failures += failEachCall(
          plan, [&] { prepare(); }, [&] { result = work.run(kDir); },
          [&](const std::string& outcome) {
            EXPECT_TRUE(!mustGoOn(plan, work) || outcome + result == "nothing" + expected)
                << outcome << " " << result;
            checkReplaced(work);
            checkLeftovers(plan, work);
            prepare();
            inAnotherThread([&] { EXPECT_EQ(work.run(kDir), expected); });
            EXPECT_EQ(openDescriptors(), m_before);
          });
      if (HasFailure()) return;
    }
  }
  printf("%u failures of the system in %zu kinds of work\n", failures, std::size(kWorks));
}

TEST_F(FileFaultsTest, ASignalInterruptsEverything) {
  for (const Work& work : kWorks) {
    prepare();
    const std::string expected = work.run(kDir);
    const Interruptions interruptions;
    for (int round = 0; round < 20; ++round) {
      prepare();
      EXPECT_EQ(work.run(kDir), expected) << work.name;
    }
  }
}

}  // namespace
