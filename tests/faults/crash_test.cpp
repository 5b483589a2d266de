// Settings and the configuration while writers die: what a reader could see at any moment. In a program of
// its own: the first write of a process cleans up what dead ones have left.

#include <signal.h>
#include <sys/ptrace.h>

#include <set>

#include <fokrazo/kset.h>
#include <fokrazo/setting.h>
#include "tests/support/world_test.h"
#include "tests/support/workers.h"

using namespace testsupport;
using namespace vesk;

namespace {

const std::string kDir = "/var/velmora/";
const std::string kSite = kDir + "kset.site";

class CrashTest : public WorldTest {
 protected:
  void SetUp() override {
    WorldTest::SetUp();
    if (!IsSkipped()) configure("log: FATAL\n");  // a line of the log is many calls
  }

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
  static void end(pid_t child) {
    kill(child, SIGKILL);
    endOf(child);
  }
  static int goOn(pid_t child) {
    ptrace(PTRACE_DETACH, child, nullptr, nullptr);
    return endOf(child);
  }

  static void putOldValue() {
    put(kSite, "old");
    chmod(kSite.c_str(), 0644);
  }
};

// At any of its system calls a writer is killed, or overtaken by a process that cleans up.
TEST_F(CrashTest, AKilledWriterLeavesTheOldOrTheNewValueAndALiveOneIsLeftAlone) {
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
      if (child != 0) end(child);
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
      ASSERT_EQ(goOn(child), 0) << "cleaned away at stop " << stops;
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

// At any of its system calls a writer is killed, or overtaken by one that takes its lock for stale.
TEST_F(CrashTest, WritersOfTheConfigurationNeverMixIt) {
  const RecordedPauses pauses;
  const MovedDay later(100);
  const std::string path = in("conf"), mine(5000, 'm');
  const auto text = [](const std::string& a, const std::string& b) { return "a: " + a + "\nb: " + b + "\n"; };
  const auto set = [&](const char* key, const std::string& value) {
    return Properties::update(path, [&](Properties& file) { return file.setString(key, value); });
  };
  const auto write = [&] {
    if (set("a", mine) != 0) _exit(1);
  };
  std::set<std::string> seen;
  for (int stops = 0;; ++stops) {
    put(path, text("old", "old"));
    pid_t child = stoppedAt(stops, write);
    if (child != 0) end(child);
    const bool isNew = *seen.insert(get(path)).first == text(mine, "old");
    EXPECT_EQ(set("b", "theirs"), 0) << "after a death at stop " << stops;
    ASSERT_EQ(get(path), text(isNew ? mine : "old", "theirs"));
    ASSERT_FALSE(std::filesystem::exists(path + ".new") || std::filesystem::exists(path + ".lock"));
    if (child == 0) break;
    put(path, text("old", "old"));
    child = stoppedAt(stops, write);
    if (child == 0) continue;
    set("b", "theirs");
    const std::string a = goOn(child) == 0 ? mine : "old", after = get(path);
    ASSERT_TRUE(after == text(a, "old") || after == text(a, "theirs")) << "overtaken at stop " << stops;
    std::filesystem::remove(path + ".lock");
  }
  EXPECT_EQ(seen, (std::set<std::string>{text("old", "old"), text(mine, "old")}));
}

}  // namespace
