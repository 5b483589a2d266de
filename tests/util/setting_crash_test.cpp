// Settings while writers die: what a reader could see at any moment. In a program of its own: the first write
// of a process cleans up what dead ones have left.

#include <signal.h>
#include <sys/ptrace.h>

#include <functional>
#include <set>

#include "tests/support/world_test.h"
#include "util/include/kset.h"
#include "util/include/setting.h"

using namespace testsupport;
using namespace vesk;

namespace {

const std::string kDir = "/var/velmora/";
const std::string kSite = kDir + "kset.site";

class SettingCrashTest : public WorldTest {
 protected:
  static int temporaryFiles() {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(kDir))
      count += entry.path().string().find(".KSET.TEMP") != std::string::npos;
    return count;
  }

  /// Runs `work` in a child that stops at its `stop`th entry into a system call or return from one. 0 if it
  /// has come to its own end before.
  template <class Work>
  static pid_t stoppedAt(int stop, Work work) {
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
      return 0;
    }
    return child;
  }

  static int endOf(pid_t child) {
    int status = -1;
    waitpid(child, &status, 0);
    return status;
  }

  static void putOldValue() {
    put(kSite, "old");
    chmod(kSite.c_str(), 0644);
  }
};

// At any of its system calls a writer is killed, or overtaken by a process that cleans up.
TEST_F(SettingCrashTest, AKilledWriterLeavesTheOldOrTheNewValueAndALiveOneIsLeftAlone) {
  createDataDir();
  put(kSite, "rolled back");
  KSets sets;
  sets.snapShot("");
  const std::pair<std::string, std::function<void()>> writers[] = {
      {"saved", [] { saveSetting("site", "saved", SETTING_PUBLIC, false, false); }},
      {"rolled back", [&] { sets.rollBack(""); }},
  };
  for (const auto& [value, write] : writers) {
    std::set<std::string> seen;
    int leftovers = 0;
    for (int stops = 0;; ++stops) {
      putOldValue();
      pid_t child = stoppedAt(stops, write);
      if (child != 0) {
        kill(child, SIGKILL);
        endOf(child);
      }
      seen.insert(get(kSite));
      EXPECT_EQ(modeOf(kSite), S_IFREG | 0644u) << "closed to others at stop " << stops;
      leftovers += temporaryFiles();
      checkInChild([] { rewriteSettingFiles(); });
      ASSERT_EQ(temporaryFiles(), 0) << "the next process cleans up";
      if (child == 0) break;
      putOldValue();
      child = stoppedAt(stops, write);
      if (child == 0) continue;
      CleanTempSettingFiles(kDir);
      ptrace(PTRACE_DETACH, child, nullptr, nullptr);
      ASSERT_EQ(endOf(child), 0) << "cleaned away at stop " << stops;
      ASSERT_EQ(get(kSite), value);
    }
    EXPECT_EQ(seen, (std::set<std::string>{"old", value}));
    EXPECT_GT(leftovers, 0) << "no kill hit the write";
  }
  const std::string directory = kDir + "dir.KSET.TEMP/";
  ASSERT_EQ(mkdir(directory.c_str(), 0755), 0);
  put(directory + "kset.site", "stays");
  for (const std::string& dir : {kDir, directory}) CleanTempSettingFiles(dir);
  EXPECT_EQ(get(directory + "kset.site"), "stays");
  EXPECT_FAILURE("NotFoundException|Cannot open directory /no/such/: No such file or directory",
                 CleanTempSettingFiles("/no/such/"));
}

}  // namespace
