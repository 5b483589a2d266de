#include "util/include/selinux_context.h"

#include <sched.h>
#include <sys/mount.h>

#include "tests/support/world_test.h"
#include "util/include/error_util.h"
#include "util/include/file_util.h"

using namespace testsupport;

namespace {

constexpr char kLabel[] = "user:role:old_t:s0";

/// Each step runs in a child of its own, because a process loads the library once.
class SELinuxTest : public WorldTest {
 protected:
  void SetUp() override {
    WorldTest::SetUp();
    if (IsSkipped()) return;
    put(in("file"), "x");
    put(in("file.label"), kLabel);
  }

  /// A system with SELinux for the calling process's world.
  static void plantEnforceFile() {
    ASSERT_EQ(unshare(CLONE_NEWNS), 0);
    ASSERT_EQ(mount("tmpfs", "/sys/fs", "tmpfs", 0, ""), 0);
    ASSERT_EQ(mkdir("/sys/fs/selinux", 0755), 0);
    put("/sys/fs/selinux/enforce", "1");
  }

  template <class Work>
  void onSELinux(Work work, const char* library = FAKE_SELINUX) const {
    checkInChild([&] {
      plantEnforceFile();
      configure("selinux.lib.name: " + std::string(library) + "\n");
      setenv("FAKE_SELINUX_DEFAULT", "user:role:default_t:s0", 1);
      forgetLog();
      const long descriptors = openDescriptors();
      work();
      EXPECT_EQ(openDescriptors(), descriptors);
    });
  }

  std::string label() const { return get(in("file.label")); }

  static bool loggedText(const std::string& text) { return logged().find(text) != std::string::npos; }

  void adjust(const std::string& name, const char* type) const {
    std::string path = in(name);
    AdjustSELinuxLabelType(path, type);
  }

  std::string instanceFailure() const {
    try {
      vesk::SELinuxModule::Instance();
    } catch (const VESKException& failure) {
      return std::string(failure.className()) + "|" + failure.what();
    }
    return "loaded";
  }
};

TEST_F(SELinuxTest, NothingHappensWithoutSELinux) {
  EXPECT_EQ(instanceFailure(), "NotFoundException|The system does not have SELinux");
  forgetLog();
  adjust("file", "new_t");
  RestoreFileSELinuxLabel(in("file"));
  adjust("missing", "new_t");
  EXPECT_EQ(label(), kLabel);
  EXPECT_FALSE(loggedText("restorecon"));
}

TEST_F(SELinuxTest, LoadsTheLibraryThatThePropertyNames) {
  onSELinux([this] {
    setenv("FAKE_SELINUX_OFF", "1", 1);
    EXPECT_EQ(instanceFailure(), "NotFoundException|SELinux is NOT enabled");
    unsetenv("FAKE_SELINUX_OFF");
    EXPECT_EQ(instanceFailure(), "loaded") << "tried again";
    EXPECT_TRUE(loggedText("SELinux library has matchpathcon_fini."));
    EXPECT_TRUE(loggedText("Get SELinux API function pointer success. Continue."));
  });
  onSELinux(
      [this] {
        EXPECT_EQ(instanceFailure(), "SystemException|Get SELinux API function pointer failed.");
        adjust("file", "new_t");
        EXPECT_TRUE(loggedText("Get SELinux API function pointer failed.. Please run 'restorecon'"));
      },
      FAKE_SELINUX_INCOMPLETE);
  onSELinux([this] { EXPECT_EQ(instanceFailure().find("SystemException|Load /no/such.so failed: "), 0u); },
            "/no/such.so");
}

TEST_F(SELinuxTest, AdjustsTheTypeAlone) {
  onSELinux([this] {
    adjust("file", "old_t");
    EXPECT_EQ(label(), kLabel) << "the right type is not written again";
    EXPECT_TRUE(loggedText("selinux label of " + in("file") + " is ok : " + kLabel));
    adjust("file", "new_t");
    EXPECT_EQ(label(), "user:role:new_t:s0 written\n");
    EXPECT_TRUE(loggedText("Success to change the file[" + in("file") +
                           "] security context from user:role:old_t:s0 to user:role:new_t:s0. "));
  });
}

TEST_F(SELinuxTest, RestoresThePolicysLabel) {
  onSELinux([this] {
    put(in("source"), "y");
    put(in("renamed.label"), kLabel);
    EXPECT_EQ(renameFile(in("source"), in("renamed")), 0);
    EXPECT_EQ(get(in("renamed.label")), "user:role:default_t:s0 written\n");
    EXPECT_STREQ(getenv("FAKE_SELINUX_FINI"), "called");
    put(in("file.label"), "user:role:default_t:s0");
    RestoreFileSELinuxLabel(in("file"));
    EXPECT_EQ(label(), "user:role:default_t:s0");
    EXPECT_TRUE(loggedText("The context is same as default. No need to change"));
  });
}

TEST_F(SELinuxTest, FailuresAreLoggedAndNeverPassedOn) {
  struct Row {
    const char* function;
    bool adjusts;
    const char* file;
    std::string text;
  };
  const std::string file = in("file");
  const std::string missing = in("missing");
  const std::string advice = ". Please run 'restorecon' on '";
  const std::string adjustAdvice = ". Please run 'restorecon' on the file '";
  const std::string gone = ": No such file or directory";
  const std::string denied = ": Operation not permitted";
  const Row rows[] = {
      {"", true, "missing",
       "Open " + missing + " failed. Skip SELinux check." + gone + adjustAdvice + missing + "'"},
      {"fgetfilecon", true, "file",
       "Failed to get the original security context: " + file + "." + denied + adjustAdvice + file + "'"},
      {"context_type_set", true, "file",
       "Failed to set security type: new_t." + denied + adjustAdvice + file + "'"},
      {"fsetfilecon", true, "file", "Failed to change the file[" + file + "] security context from "},
      {"", false, "missing",
       "Failed to get stat for (" + missing + "). Skip SELinux check." + gone + advice + missing + "'"},
      {"getfilecon", false, "file",
       "Failed to get the original security context for " + file + "." + denied + advice + file + "'"},
      {"matchpathcon", false, "file",
       "Failed to get the default security context for " + file + "." + denied + advice + file + "'"},
      {"setfilecon", false, "file", "Failed to change the security context for '" + file + "' from "},
  };
  onSELinux([&] {
    for (const Row& row : rows) {
      forgetLog();
      setenv("FAKE_SELINUX_FAIL", row.function, 1);
      if (row.adjusts)
        adjust(row.file, "new_t");
      else
        RestoreFileSELinuxLabel(in(row.file));
      EXPECT_TRUE(loggedText(row.text)) << row.text << "\n" << logged();
      EXPECT_EQ(label(), kLabel);
    }
  });
}

}  // namespace
