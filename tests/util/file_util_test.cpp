#include "util/include/file_util.h"

#include "tests/support/world_test.h"
#include "tests/util/workers.h"

using namespace testsupport;

namespace {

const std::string kGone = ": No such file or directory";
const std::string kCallFailed = "SystemException|OS call failed";

class FileUtilTest : public WorldTest {};

TEST_F(FileUtilTest, ReadsAndWritesWholeFiles) {
  const std::string content(100000, '\0');
  int mode = 04751;
  WriteFile(in("file"), content, &mode);
  EXPECT_EQ(GetPerms(in("file")), 0751) << "nine bits";
  EXPECT_EQ(GetFileSize(in("file")), 100000);
  EXPECT_EQ(ReadFile(in("file"), &(mode = 0)), content);
  EXPECT_EQ(mode, 0751);
  ASSERT_EQ(mkfifo(in("pipe").c_str(), 0600), 0);
  EXPECT_EQ(ReadFile(in("pipe"), nullptr), "") << "nobody has to write";
  EXPECT_FAILURE(kCallFailed + ": No such device or address", WriteFile(in("pipe"), "nobody reads", nullptr));
  EXPECT_FAILURE(kCallFailed + kGone, GetFileSize(in("gone")));
  EXPECT_FAILURE(kCallFailed + kGone, GetPerms(in("gone")));
  EXPECT_FAILURE(kCallFailed + kGone, ReadFile(in("gone"), &mode));
  EXPECT_FAILURE(kCallFailed + ": Is a directory", ReadFile(m_dir, nullptr));
  EXPECT_FAILURE(kCallFailed + ": No space left on device", WriteFile("/dev/full", "x", nullptr));
}

TEST_F(FileUtilTest, RenamesWithOrWithoutAnException) {
  put(in("a"), "x");
  EXPECT_EQ(renameFile(in("a"), in("b")) + MoveFile(in("b"), in("c")), 0);
  EXPECT_EQ(get(in("c")), "x");
  EXPECT_EQ(renameFile(in("gone"), in("gone")), 0) << "equal paths are not looked at";
  testing::internal::CaptureStderr();
  EXPECT_EQ(renameFile(in("gone"), in("d")), -1);
  const std::string text = "Unable to rename \"" + in("gone") + "\" to \"" + in("d") + "\".";
  EXPECT_EQ(testing::internal::GetCapturedStderr(), text + "\n");
  EXPECT_TRUE(isLogged(text));
  EXPECT_FAILURE("IOException|Move " + in("gone") + " to x failed" + kGone, MoveFile(in("gone"), "x"));
}

TEST_F(FileUtilTest, TemporaryFilesAreBornWithModeAndOwner) {
  std::string name = in("a.XXXXXX");
  close(mkstemp(name, 0640, getuid(), getgid()));
  EXPECT_EQ(modeOf(name), S_IFREG | 0640u);
  EXPECT_EQ(mkstemp(name), -1);
  EXPECT_EQ(errno, EINVAL);
  EXPECT_EQ(modeOf(name), 0u) << "the file of that very name goes";
  std::string stream = in("c.XXXXXX");
  std::ofstream out;
  EXPECT_EQ(OpenTempFile(stream.data(), 0604, out), 0);
  out << "text" << std::flush;
  EXPECT_EQ(get(stream), "text");
  EXPECT_EQ(modeOf(stream), S_IFREG | 0604u);
  out.close();
  std::string nowhere = in("no/c.XXXXXX");
  EXPECT_FAILURE(kCallFailed + kGone, OpenTempFile(nowhere.data(), 0600, out));
}

TEST_F(FileUtilTest, NoTemporaryFileIsLeftWhereItsOwnerCannotBeSet) {
  if (!canBeOrdinaryUser()) GTEST_SKIP() << "another user is needed";
  ASSERT_EQ(chmod(m_dir.c_str(), 0777), 0);
  const auto work = [this] {
    const long descriptors = openDescriptors();
    std::string name = in("a.XXXXXX");
    std::ofstream out;
    EXPECT_FAILURE(kCallFailed + ": Operation not permitted", mkstemp(name, 0600, 0, 0));
    EXPECT_FAILURE(kCallFailed + ": Operation not permitted",
                   OpenTempFile((name = in("b.XXXXXX")).data(), 0600, 0, 0, out));
    EXPECT_EQ(openDescriptors(), descriptors);
  };
  checkInChild(work, kOrdinaryUser);
  EXPECT_TRUE(std::filesystem::is_empty(m_dir));
}

TEST_F(FileUtilTest, FollowsLinksByHand) {
  const std::string rows[][3] = {{"absolute", in("file"), in("file")},
                                 {"relative", "file", in("file")},
                                 {"sub/chain", "../relative", in("sub/../file")},
                                 {"dangling", "none", ""},
                                 {"loop", "loop", ""}};
  put(in("file"), "");
  ASSERT_EQ(mkdir(in("sub").c_str(), 0755), 0);
  for (const auto& [link, target, result] : rows) {
    ASSERT_EQ(symlink(target.c_str(), in(link).c_str()), 0);
  }
  configure("brondalt.clients.threads.stacksize: 262144\n");  // a chain costs no stack
  Worker([&] {
    for (const auto& [link, target, result] : rows) {
      std::string out = "untouched";
      EXPECT_EQ(GetSymLinkPath(in(link).c_str(), out, 0), !result.empty()) << link;
      EXPECT_EQ(out, result);
    }
  });
  EXPECT_TRUE(isLogged("Detected a potential circular sym link in " + in("loop") + "!"));
  checkInChild([this] {
    ASSERT_EQ(chdir(m_dir.c_str()), 0);
    std::string out;
    EXPECT_TRUE(GetSymLinkPath("relative", out, 0) && out == "file");
  });
}

TEST_F(FileUtilTest, FreeSpaceLeavesItsResultAloneOnFailure) {
  unsigned long long kilobytes = 7;
  EXPECT_EQ(GetFreeSpaceSize(in("gone"), kilobytes), ENOENT);
  EXPECT_EQ(kilobytes, 7u);
  EXPECT_TRUE(isLogged("statfs return (-1). Cannot detect free disk space." + kGone));
  EXPECT_EQ(GetFreeSpaceSize("/proc", kilobytes), 0);
  EXPECT_EQ(kilobytes, 0u) << "a file system without blocks";
}

TEST_F(FileUtilTest, CopiesFilesByPatternAndNeverThroughALink) {
  for (const char* dir : {"from", "to"}) ASSERT_EQ(mkdir(in(dir).c_str(), 0755), 0);
  for (const char* name : {"a.conf", "b.conf", "c.text"}) put(in("from/") + name, name);
  put(in("victim"), "stays");
  ASSERT_EQ(mkfifo(in("from/pipe").c_str(), 0600) + symlink("../victim", in("to/a.conf").c_str()), 0);
  for (const char* pattern : {"(a|b)\\.conf", "^c", "text$", "pipe"})
    CopyFiles(in("from"), in("to"), pattern);
  EXPECT_TRUE(S_ISREG(modeOf(in("to/a.conf"))));
  EXPECT_EQ(get(in("to/a.conf")) + get(in("to/b.conf")), "a.confb.conf");
  EXPECT_EQ(modeOf(in("to/c.text")), 0u) << "anchors match nowhere";
  CopyFile(in("victim"), in("victim"));
  CopyFile(in("gone"), in("victim"));
  CopyFile(in("victim"), in("no/where"));
  EXPECT_EQ(get(in("victim")), "stays");
  EXPECT_FAILURE(kCallFailed + kGone, CopyFiles(in("gone"), in("to"), "."));
  EXPECT_FAILURE("BadDataException|CopyFiles: Error compiling pattern: Unmatched ( or \\(",
                 CopyFiles(m_dir, m_dir, "a("));
}

}  // namespace
