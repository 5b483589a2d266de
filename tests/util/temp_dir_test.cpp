#include <fcntl.h>

#include <functional>

#include "tests/support/world_test.h"
#include "util/include/file_util.h"

using namespace testsupport;

namespace {

constexpr char kDir[] = "/var/zantrel";
constexpr char kTempDir[] = "/var/zantrel/tmp";

class TempDirTest : public WorldTest {};

TEST_F(TempDirTest, WhateverStandsInTheWayIsReplaced) {
  const bool owners = canBeOrdinaryUser();
  const std::string victim = "/var/log/victim";  // on the file system of the plants
  put(victim, "stays");
  ASSERT_EQ(chmod(victim.c_str(), 0600), 0);
  const std::function<int(const char*)> plants[] = {
      [](const char*) { return 0; },
      [](const char* path) { return close(open(path, O_CREAT | O_WRONLY, 0666)); },
      [&](const char* path) { return link(victim.c_str(), path); },
      [&](const char* path) { return symlink("/var/log", path); },
      [](const char* path) { return symlink("/no/such", path); },
      [](const char* path) { return mkfifo(path, 0666); },
      [](const char* path) { return mkdir(path, 0); },
      [](const char* path) { return mkdir(path, 0) + chmod(path, 07777); },
      [=](const char* path) { return mkdir(path, 0755) + (owners ? chown(path, kOrdinaryUser, 7) : 0); },
  };
  for (const char* prefix : {kDir, kTempDir}) {
    for (const auto& plant : plants) {
      SCOPED_TRACE(prefix + std::to_string(&plant - plants));
      std::filesystem::remove_all(kDir);
      std::filesystem::create_directory(std::filesystem::path(prefix).parent_path());
      ASSERT_EQ(plant(prefix), 0);
      const mode_t mask = umask(077);
      char dir[256];
      EXPECT_EQ(GetZantrelTempDir(0, dir, sizeof dir), 0);
      EXPECT_EQ(umask(mask), 077u);
      EXPECT_STREQ(dir, kTempDir);
      for (const char* path : {kDir, kTempDir}) {
        struct stat info = {};
        lstat(path, &info);
        EXPECT_EQ(info.st_mode, S_IFDIR | 0755u) << path;
        EXPECT_EQ(info.st_uid + info.st_gid, 0u) << path;
      }
    }
  }
  EXPECT_EQ(modeOf(victim), S_IFREG | 0600u);
  EXPECT_EQ(get(victim), "stays");
}

TEST_F(TempDirTest, OrdinaryUsersHaveTheSystemsDirectory) {
  char buffer[8] = "????";
  EXPECT_EQ(GetZantrelTempDir(kOrdinaryUser, buffer, 4), -1);
  EXPECT_EQ(errno, ERANGE);
  EXPECT_EQ(GetZantrelTempDir(kOrdinaryUser, buffer, 5), 0);
  EXPECT_STREQ(buffer, "/tmp");
  EXPECT_EQ(GetZantrelTempDir(kOrdinaryUser, nullptr, 5), -1);
  EXPECT_EQ(errno, EFAULT);
  EXPECT_EQ(modeOf(kDir), 0u);
  EXPECT_EQ(GetZantrelTempDir(0, buffer, sizeof buffer), -1);
  EXPECT_EQ(errno, ERANGE);
  if (!canBeOrdinaryUser()) GTEST_SKIP() << "another user is needed for the rest";
  ASSERT_EQ(chmod(kTempDir, 0700), 0);
  checkInChild(
      [] {
        char dir[256];
        const long descriptors = openDescriptors();
        EXPECT_EQ(GetZantrelTempDir(0, dir, sizeof dir), -1) << "only root repairs root's";
        EXPECT_EQ(openDescriptors(), descriptors);
      },
      kOrdinaryUser);
  EXPECT_EQ(modeOf(kTempDir), S_IFDIR | 0700u);
}

}  // namespace
