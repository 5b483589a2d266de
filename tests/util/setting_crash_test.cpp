// Settings while writers die and readers run.

#include <signal.h>
#include <sys/ptrace.h>

#include <set>

#include "tests/support/world_test.h"
#include "util/include/kset.h"
#include "util/include/setting.h"

using namespace testsupport;
using namespace vesk;

namespace {

const std::string kFile = "/var/velmora/kset.site";

class SettingCrashTest : public WorldTest {
 protected:
  static int temporaryFiles() {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/var/velmora"))
      count += entry.path().string().find(".KSET.TEMP") != std::string::npos;
    return count;
  }

  /// Runs `work` in a child and kills it at its `stop`th entry into a system call or return from one. False
  /// if it has come to its own end before.
  template <class Work>
  static bool killedAtStop(int stop, Work work) {
    const pid_t child = fork();
    if (child == 0) {
      ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
      raise(SIGSTOP);
      work();
      _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    while (WIFSTOPPED(status) && stop-- > 0) {
      ptrace(PTRACE_SYSCALL, child, nullptr, nullptr);
      waitpid(child, &status, 0);
    }
    if (!WIFSTOPPED(status)) {
      EXPECT_EQ(status, 0);
      return false;
    }
    kill(child, SIGKILL);
    waitpid(child, &status, 0);
    return true;
  }
};

TEST_F(SettingCrashTest, AWriterKilledAtAnySystemCallLeavesTheOldOrTheNewValue) {
  createDataDir();
  std::set<std::string> seen;
  int leftovers = 0;
  int stops = 0;
  for (bool killed = true; killed; ++stops) {
    put(kFile, "old");
    chmod(kFile.c_str(), 0644);
    killed = killedAtStop(stops, [] { saveSetting("site", "new value", SETTING_PUBLIC, false, false); });
    seen.insert(get(kFile));
    EXPECT_EQ(modeOf(kFile), S_IFREG | 0644u) << "closed to others at stop " << stops;
    leftovers += temporaryFiles();
    checkInChild([] { rewriteSettingFiles(); });
    ASSERT_EQ(temporaryFiles(), 0) << "the next process cleans up";
  }
  EXPECT_EQ(seen, (std::set<std::string>{"old", "new value"}));
  EXPECT_GT(leftovers, 0) << "no kill hit the write";
}

TEST_F(SettingCrashTest, ARollBackKilledAtAnySystemCallLeavesWholeFiles) {
  createDataDir();
  put(kFile, "before");
  KSets sets;
  sets.snapShot("");
  std::set<std::string> seen;
  bool killed = true;
  for (int stops = 0; killed; ++stops) {
    put(kFile, "after");
    killed = killedAtStop(stops, [&] { sets.rollBack(""); });
    seen.insert(get(kFile));
  }
  EXPECT_EQ(seen, (std::set<std::string>{"before", "after"}));
  put(kFile + ".KSET.TEMP.abcdef", "half");
  ASSERT_EQ(mkdir("/var/velmora/dir.KSET.TEMP", 0755), 0);
  CleanTempSettingFiles("/var/velmora/");
  EXPECT_EQ(temporaryFiles(), 1) << "directories stay";
  EXPECT_FAILURE("NotFoundException|Cannot open directory /no/such/: No such file or directory",
                 CleanTempSettingFiles("/no/such/"));
}

TEST_F(SettingCrashTest, ReadersNeverSeeAPartOfAValue) {
  const std::string values[] = {std::string(1000, 'a'), "b"};
  writeSettingFile("site", values[0], SETTING_PUBLIC, "");
  const pid_t writer = fork();
  if (writer == 0) {
    for (int i = 1; i <= 2000; ++i) writeSettingFile("site", values[i % 2], SETTING_PUBLIC, "");
    _exit(0);
  }
  std::set<std::string> seen;
  do {
    seen.insert(readSettingFile("site", ""));
  } while (waitpid(writer, nullptr, WNOHANG) == 0);
  for (const std::string& value : seen) EXPECT_TRUE(value == values[0] || value == values[1]) << value;
}

}  // namespace
