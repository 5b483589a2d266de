#include <fokrazo/selinux_context.h>

#include <sys/mount.h>

#include <fokrazo/file_util.h>
#include "tests/support/world_test.h"

using namespace testsupport;

namespace {

const std::string kLabel = "user:role:old_t:s0";
const std::string kDefault = "user:role:default_t:s0";

class SELinuxTest : public WorldTest {
 protected:
  void SetUp() override {
    if (!canMount()) GTEST_SKIP() << "mounts are needed";
    WorldTest::SetUp();
  }

  /// Runs `work` in a child whose system has SELinux and whose configuration names that library: a process
  /// loads it once.
  template <class Work>
  void onSELinux(const char* library, Work work) const {
    checkInChild([&] {
      ASSERT_EQ(unshare(CLONE_NEWNS) + mount("tmpfs", "/sys/fs", "tmpfs", 0, ""), 0);
      ASSERT_EQ(mkdir("/sys/fs/selinux", 0755), 0);
      put("/sys/fs/selinux/enforce", "1");
      configure("selinux.lib.name: " + std::string(library) + "\n");
      setenv("FAKE_DEFAULT", kDefault.c_str(), 1);
      put(in("file"), "x");
      const long descriptors = openDescriptors();
      work();
      EXPECT_EQ(openDescriptors(), descriptors);
    });
  }

  /// The label of a file that had `before`, after either operation.
  std::string adjusted(const std::string& before, const char* type, const char* name = "file") const {
    std::string path = in(name);
    setenv("FAKE_LABEL", before.c_str(), 1);
    AdjustSELinuxLabelType(path, type);
    return getenv("FAKE_LABEL");
  }
  std::string restored(const std::string& before, const char* name = "file") const {
    setenv("FAKE_LABEL", before.c_str(), 1);
    RestoreFileSELinuxLabel(in(name));
    return getenv("FAKE_LABEL");
  }

  static std::string instanceFailure() {
    return failureOf([] { vesk::SELinuxModule::Instance(); });
  }
};

TEST_F(SELinuxTest, NothingHappensWithoutSELinux) {
  EXPECT_EQ(instanceFailure(), "NotFoundException|The system does not have SELinux");
  EXPECT_EQ(adjusted(kLabel, "new_t", "missing") + restored(kLabel, "missing"), kLabel + kLabel);
  EXPECT_FALSE(isLogged("restorecon"));
}

TEST_F(SELinuxTest, LoadsTheLibraryThatThePropertyNames) {
  onSELinux(FAKE_SELINUX_COMPLETE, [] {
    setenv("FAKE_OFF", "1", 1);
    EXPECT_EQ(instanceFailure(), "NotFoundException|SELinux is NOT enabled");
    unsetenv("FAKE_OFF");
    EXPECT_EQ(instanceFailure(), "") << "tried again";
    EXPECT_TRUE(isLogged("SELinux library has matchpathcon_fini."));
  });
  onSELinux(FAKE_SELINUX_OLD, [this] {
    EXPECT_EQ(restored(kLabel), kDefault + " written");
    EXPECT_TRUE(isLogged("SELinux library doesn't have matchpathcon_fini."));
  });
  onSELinux("libm.so.6", [this] {
    EXPECT_EQ(instanceFailure(), "SystemException|Get SELinux API function pointer failed.");
    EXPECT_EQ(adjusted(kLabel, "new_t"), kLabel);
    EXPECT_TRUE(isLogged("Get SELinux API function pointer failed.. Please run 'restorecon' on the file"));
  });
  onSELinux("/no/such",
            [] { EXPECT_EQ(instanceFailure().find("SystemException|Load /no/such failed: "), 0u); });
}

TEST_F(SELinuxTest, AdjustsTheTypeAloneAndRestoresThePolicysLabel) {
  onSELinux(FAKE_SELINUX_COMPLETE, [this] {
    EXPECT_EQ(adjusted(kLabel, "old_t"), kLabel) << "the right type is not written again";
    EXPECT_EQ(adjusted(kLabel, "new_t"), "user:role:new_t:s0 written");
    EXPECT_EQ(restored(kDefault), kDefault) << "nor the right label";
    EXPECT_EQ(renameFile(in("file"), in("to")), 0);
    EXPECT_EQ(restored(kLabel, "to"), kDefault + " written");
    EXPECT_STREQ(getenv("FAKE_FINI"), "called");
    EXPECT_TRUE(isLogged("selinux label of " + in("file") + " is ok : " + kLabel));
    EXPECT_TRUE(isLogged("Success to change the file[" + in("file") + "] security context from " + kLabel +
                         " to user:role:new_t:s0. "));
    EXPECT_TRUE(isLogged("The context is same as default. No need to change"));
  });
}

TEST_F(SELinuxTest, FailuresAreLoggedAndNeverPassedOn) {
  const std::string gone = ": No such file or directory. Please run 'restorecon' on ";
  const std::string denied = ": Operation not permitted. Please run 'restorecon' on ";
  const std::string file = in("file"), missing = in("missing");
  const std::tuple<bool, const char*, const char*, std::string> rows[] = {
      {true, "missing", "",
       "Open " + missing + " failed. Skip SELinux check." + gone + "the file '" + missing + "'"},
      {true, "file", "fgetfilecon",
       "Failed to get the original security context: " + file + "." + denied + "the file '"},
      {true, "file", "context_type_set",
       "Failed to set security type: new_t." + denied + "the file '" + file + "'"},
      {true, "file", "fsetfilecon", "Failed to change the file[" + file + "] security context from "},
      {false, "missing", "",
       "Failed to get stat for (" + missing + "). Skip SELinux check." + gone + "'" + missing + "'"},
      {false, "file", "getfilecon",
       "Failed to get the original security context for " + file + "." + denied + "'" + file},
      {false, "file", "matchpathcon",
       "Failed to get the default security context for " + file + "." + denied + "'" + file},
      {false, "file", "setfilecon", "Failed to change the security context for '" + file + "' from "},
  };
  onSELinux(FAKE_SELINUX_COMPLETE, [&] {
    for (const auto& [adjusts, name, failing, text] : rows) {
      setenv("FAKE_FAIL", failing, 1);
      EXPECT_EQ(adjusts ? adjusted(kLabel, "new_t", name) : restored(kLabel, name), kLabel);
      EXPECT_TRUE(isLogged(text)) << text << logged();
    }
  });
}

}  // namespace
