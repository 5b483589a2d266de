#include <fcntl.h>

#include <functional>

#include "tests/support/world_test.h"
#include "util/include/file_util.h"

using namespace testsupport;

namespace {

class TempDirTest : public WorldTest {
 protected:
  static int call(unsigned uid, std::string& dir) {
    char buffer[256] = "";
    const int result = GetZantrelTempDir(uid, buffer, sizeof buffer);
    dir = buffer;
    return result;
  }

  static void expectSafe(const char* path) {
    struct stat info;
    ASSERT_EQ(lstat(path, &info), 0) << path;
    EXPECT_EQ(info.st_mode, S_IFDIR | 0755u) << path;
    EXPECT_EQ(info.st_uid, 0u) << path;
    EXPECT_EQ(info.st_gid, 0u) << path;
  }
};

TEST_F(TempDirTest, WhateverStandsInTheWayIsReplaced) {
  const bool owners = canBeOrdinaryUser();
  const std::string victim = "/var/log/victim";  // the file system of the plants
  ASSERT_EQ(mkdir(victim.c_str(), 0700), 0);
  put(victim + "/file", "stays");
  ASSERT_EQ(chmod((victim + "/file").c_str(), 0600), 0);
  struct Plant {
    const char* what;
    std::function<int(const char*)> make;
  };
  const Plant plants[] = {
      {"nothing", [](const char*) { return 0; }},
      {"file", [](const char* path) { return close(open(path, O_CREAT | O_WRONLY, 0666)); }},
      {"hard link", [&](const char* path) { return link((victim + "/file").c_str(), path); }},
      {"link to a directory", [&](const char* path) { return symlink(victim.c_str(), path); }},
      {"dangling link", [](const char* path) { return symlink("/no/such", path); }},
      {"pipe", [](const char* path) { return mkfifo(path, 0666); }},
      {"closed directory", [](const char* path) { return mkdir(path, 0); }},
      {"directory with all bits", [](const char* path) { return mkdir(path, 0) + chmod(path, 07777); }},
      {"directory of another",
       [=](const char* path) { return mkdir(path, 0755) + (owners ? chown(path, kOrdinaryUser, 7) : 0); }},
  };
  for (const char* prefix : {"/var/zantrel", "/var/zantrel/tmp"}) {
    for (const Plant& plant : plants) {
      SCOPED_TRACE(std::string(plant.what) + " at " + prefix);
      std::filesystem::remove_all("/var/zantrel");
      std::filesystem::create_directory(std::filesystem::path(prefix).parent_path());
      ASSERT_EQ(plant.make(prefix), 0);
      const mode_t mask = umask(077);
      std::string dir;
      EXPECT_EQ(call(0, dir), 0);
      EXPECT_EQ(umask(mask), 077u);
      EXPECT_EQ(dir, "/var/zantrel/tmp");
      expectSafe("/var/zantrel");
      expectSafe("/var/zantrel/tmp");
    }
  }
  EXPECT_EQ(modeOf(victim), S_IFDIR | 0700u);
  EXPECT_EQ(modeOf(victim + "/file"), S_IFREG | 0600u);
  EXPECT_EQ(get(victim + "/file"), "stays");
}

TEST_F(TempDirTest, OrdinaryUsersHaveTheSystemsDirectory) {
  char buffer[8] = "????";
  EXPECT_EQ(GetZantrelTempDir(kOrdinaryUser, buffer, 4), -1);
  EXPECT_EQ(errno, ERANGE);
  EXPECT_EQ(GetZantrelTempDir(kOrdinaryUser, buffer, 5), 0);
  EXPECT_STREQ(buffer, "/tmp");
  EXPECT_EQ(GetZantrelTempDir(kOrdinaryUser, nullptr, 5), -1);
  EXPECT_EQ(errno, EFAULT);
  EXPECT_EQ(modeOf("/var/zantrel"), 0u);
  EXPECT_EQ(GetZantrelTempDir(0, buffer, sizeof buffer), -1);
  EXPECT_EQ(errno, ERANGE);
}

TEST_F(TempDirTest, AnOrdinaryUserCannotMakeRootsDirectory) {
  if (!canBeOrdinaryUser()) GTEST_SKIP() << "another user is needed";
  const auto refused = [] {
    const long descriptors = openDescriptors();
    std::string dir;
    EXPECT_EQ(call(0, dir), -1);
    EXPECT_EQ(dir, "");
    EXPECT_EQ(openDescriptors(), descriptors);
  };
  checkInChild(refused, kOrdinaryUser);
  EXPECT_EQ(modeOf("/var/zantrel"), 0u);
  ASSERT_EQ(mkdir("/var/zantrel", 0755), 0);
  ASSERT_EQ(mkdir("/var/zantrel/tmp", 0700), 0);
  checkInChild(refused, kOrdinaryUser);
  EXPECT_EQ(modeOf("/var/zantrel/tmp"), S_IFDIR | 0700u);
}

}  // namespace
