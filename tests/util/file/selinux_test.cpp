
#include <sys/mount.h>

#include "tests/support/rows.h"
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

  /// Runs `work` in a child with SELinux and a configuration that names that library; a process loads it only
  /// once.
  template <class Work>
  void onSELinux(const char* library, Work work) const {
    checkInChild([&] {
      ASSERT_EQ(unshare(CLONE_NEWNS) + mount("tmpfs", "/sys", "tmpfs", 0, ""), 0);
      ASSERT_TRUE(std::filesystem::create_directories("/sys/fs/selinux"));
      put("/sys/fs/selinux/enforce", "1");
      configure("selinux.lib.name: " + std::string(library) + "\n");
      setenv("FAKE_DEFAULT", kDefault.c_str(), 1);
      put(in("file"), "x");
      const long descriptors = openDescriptors();
      work();
      EXPECT_EQ(openDescriptors(), descriptors);
    });
  }

  /// The label of a file that had `before`, after adjusting its type or, without one, restoring its label.
  std::string labelled(const std::string& before, const std::string& type = "",
                       const char* name = "file") const {
    std::string path = in(name);
    setenv("FAKE_LABEL", before.c_str(), 1);
    type.empty() ? RestoreFileSELinuxLabel(path) : AdjustSELinuxLabelType(path, type.c_str());
    return getenv("FAKE_LABEL");
  }

  static std::string instanceFailure() {
    return failureOf([] { vesk::SELinuxModule::Instance(); });
  }
};

TEST_F(SELinuxTest, NothingHappensWithoutSELinux) {
  EXPECT_EQ(instanceFailure(), "NotFoundException|The system does not have SELinux");
  EXPECT_EQ(labelled(kLabel, "new_t", "missing") + labelled(kLabel, "", "missing"), kLabel + kLabel);
  EXPECT_FALSE(isLogged("restorecon"));
}

TEST_F(SELinuxTest, LoadsTheConfiguredLibrary) {
  onSELinux(FAKE_SELINUX_COMPLETE, [] {
    setenv("FAKE_OFF", "1", 1);
    EXPECT_EQ(instanceFailure(), "NotFoundException|SELinux is NOT enabled");
    unsetenv("FAKE_OFF");
    EXPECT_EQ(instanceFailure(), "") << "tried again";
    EXPECT_TRUE(isLogged("SELinux library has matchpathcon_fini."));
  });
  onSELinux(FAKE_SELINUX_OLD, [this] {
    EXPECT_EQ(labelled(kLabel), kDefault + " written");
    EXPECT_TRUE(isLogged("SELinux library doesn't have matchpathcon_fini."));
  });
  onSELinux("libm.so.6", [this] {
    EXPECT_EQ(instanceFailure(), "SystemException|Get SELinux API function pointer failed.");
    EXPECT_EQ(labelled(kLabel, "new_t"), kLabel);
    EXPECT_TRUE(isLogged("Get SELinux API function pointer failed.. Please run 'restorecon' on the file"));
  });
  onSELinux("/no/such",
            [] { EXPECT_EQ(instanceFailure().find("SystemException|Load /no/such failed: "), 0u); });
}

TEST_F(SELinuxTest, AdjustsOnlyTheTypeAndRestoresThePolicysLabel) {
  onSELinux(FAKE_SELINUX_COMPLETE, [this] {
    EXPECT_EQ(labelled(kLabel, "old_t"), kLabel) << "the right type is not written again";
    EXPECT_EQ(labelled(kLabel, "new_t"), "user:role:new_t:s0 written");
    EXPECT_EQ(labelled(kDefault), kDefault) << "nor the right label";
    EXPECT_EQ(renameFile(in("file"), in("to")), 0);
    EXPECT_EQ(labelled(kLabel, "", "to"), kDefault + " written");
    EXPECT_STREQ(getenv("FAKE_FINI"), "called");
    EXPECT_TRUE(isLogged("selinux label of " + in("file") + " is ok : " + kLabel));
    EXPECT_TRUE(isLogged("Success to change the file[" + in("file") + "] security context from " + kLabel +
                         " to user:role:new_t:s0. "));
    EXPECT_TRUE(isLogged("The context is same as default. No need to change"));
  });
}

TEST_F(SELinuxTest, FailuresAreOnlyLogged) {
  onSELinux(FAKE_SELINUX_COMPLETE, [&] {
    for (const auto& [type, name, failing, report] :
         rowsOf<4>("util/file/rows.txt", "SELinux failures: type, file, failing function, report")) {
      setenv("FAKE_FAIL", failing.c_str(), 1);
      EXPECT_EQ(labelled(kLabel, type, name.c_str()), kLabel);
      EXPECT_TRUE(isLogged(here(report))) << report << logged();
    }
  });
}

}  // namespace
