#include "util/include/file_util.h"

#include <fcntl.h>

#include <functional>

#include "tests/support/world_test.h"
#include "util/include/error_util.h"

using namespace testsupport;

namespace {

const std::string kGone = ": No such file or directory";

class FileUtilTest : public WorldTest {
 protected:
  std::string resolved(const std::string& path) {
    std::string out = "untouched";
    const bool found = GetSymLinkPath(path.c_str(), out, 0);
    EXPECT_EQ(found, !out.empty()) << path;
    return out;
  }

  size_t entries() const {
    return std::distance(std::filesystem::directory_iterator(m_dir), std::filesystem::directory_iterator());
  }
};

TEST_F(FileUtilTest, FailuresHaveTheirClassesAndTexts) {
  const std::string gone = in("gone");
  int mode = 0644;
  struct Row {
    std::function<void()> call;
    const char* className;
    std::string text;
  };
  const Row rows[] = {
      {[&] { MoveFile(gone, in("to")); }, "IOException",
       "Move " + gone + " to " + in("to") + " failed" + kGone},
      {[&] { GetFileSize(gone); }, "SystemException", "OS call failed" + kGone},
      {[&] { GetPerms(gone); }, "SystemException", "OS call failed" + kGone},
      {[&] { ReadFile(gone, &mode); }, "SystemException", "OS call failed" + kGone},
      {[&] { ReadFile(m_dir, nullptr); }, "SystemException", "OS call failed: Is a directory"},
      {[&] { WriteFile(gone + "/x", "", nullptr); }, "SystemException", "OS call failed" + kGone},
      {[&] { WriteFile("/dev/full", "x", nullptr); }, "SystemException",
       "OS call failed: No space left on device"},
      {[&] { CopyFiles(m_dir, m_dir, "a("); }, "BadDataException",
       "CopyFiles: Error compiling pattern: Unmatched ( or \\("},
  };
  for (const Row& row : rows) {
    try {
      row.call();
      ADD_FAILURE() << "nothing thrown: " << row.text;
    } catch (const VESKException& failure) {
      EXPECT_EQ(failure.what(), row.text);
      EXPECT_STREQ(failure.className(), row.className);
    }
  }
}

TEST_F(FileUtilTest, ReadsAndWritesWholeFiles) {
  std::string content(100000, '\0');
  content += "end\n";
  int mode = 04751;
  WriteFile(in("file"), content, &mode);
  EXPECT_EQ(GetPerms(in("file")), 0751) << "nine bits";
  EXPECT_EQ(GetFileSize(in("file")), 100004);
  int seen = 0;
  EXPECT_EQ(ReadFile(in("file"), &seen), content);
  EXPECT_EQ(seen, 0751);
  WriteFile(in("file"), "", nullptr);
  EXPECT_EQ(ReadFile(in("file"), nullptr), "");
  ASSERT_EQ(mkfifo(in("pipe").c_str(), 0600), 0);
  EXPECT_EQ(ReadFile(in("pipe"), nullptr), "") << "nobody has to write";
  EXPECT_THROW(WriteFile(in("pipe"), "x", nullptr), vesk::SystemException) << "nobody has to read";
}

TEST_F(FileUtilTest, RenamesWithOrWithoutAnException) {
  put(in("a"), "x");
  EXPECT_EQ(renameFile(in("a"), in("a")), 0);
  EXPECT_EQ(renameFile(in("a"), in("b")), 0);
  EXPECT_EQ(MoveFile(in("b"), in("c")), 0);
  EXPECT_EQ(get(in("c")), "x");
  EXPECT_EQ(renameFile(in("gone"), in("gone")), 0) << "equal paths are not looked at";
  const std::string text = "Unable to rename \"" + in("gone") + "\" to \"" + in("d") + "\".";
  testing::internal::CaptureStderr();
  EXPECT_EQ(renameFile(in("gone"), in("d")), -1);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), text + "\n");
  EXPECT_NE(logged().find(text), std::string::npos);
}

TEST_F(FileUtilTest, TemporaryFilesAreBornWithModeAndOwner) {
  std::string name = in("a.XXXXXX");
  int fd = mkstemp(name);
  ASSERT_GE(fd, 0);
  EXPECT_NE(name, in("a.XXXXXX"));
  EXPECT_EQ(modeOf(name), S_IFREG | 0600u);
  close(fd);

  std::string bad = in("named");
  put(bad, "x");
  EXPECT_EQ(mkstemp(bad), -1);
  EXPECT_EQ(errno, EINVAL);
  EXPECT_EQ(modeOf(bad), 0u) << "the file of that very name goes";

  name = in("b.XXXXXX");
  fd = mkstemp(name, 0640, getuid(), getgid());
  ASSERT_GE(fd, 0);
  EXPECT_EQ(modeOf(name), S_IFREG | 0640u);
  close(fd);

  std::string stream = in("c.XXXXXX");
  std::ofstream out;
  EXPECT_EQ(OpenTempFile(stream.data(), 0604, out), 0);
  out << "text";
  out.close();
  EXPECT_EQ(get(stream), "text");
  EXPECT_EQ(modeOf(stream), S_IFREG | 0604u);
  std::string nowhere = in("no/c.XXXXXX");
  EXPECT_THROW(OpenTempFile(nowhere.data(), 0600, out), vesk::SystemException);
}

TEST_F(FileUtilTest, NoTemporaryFileIsLeftWhereItsOwnerCannotBeSet) {
  if (!canBeOrdinaryUser()) GTEST_SKIP() << "another user is needed";
  ASSERT_EQ(chmod(m_dir.c_str(), 0777), 0);
  checkInChild(
      [this] {
        const long descriptors = openDescriptors();
        std::string name = in("a.XXXXXX");
        std::ofstream out;
        for (const auto& call :
             {std::function<void()>([&] { mkstemp(name, 0600, 0, 0); }), std::function<void()>([&] {
                std::string other = in("b.XXXXXX");
                OpenTempFile(other.data(), 0600, 0, 0, out);
              })}) {
          try {
            call();
            ADD_FAILURE();
          } catch (const vesk::SystemException& failure) {
            EXPECT_STREQ(failure.what(), "OS call failed: Operation not permitted");
            EXPECT_EQ(failure.rc(), -1);
          }
        }
        EXPECT_EQ(openDescriptors(), descriptors);
      },
      kOrdinaryUser);
  EXPECT_EQ(entries(), 0u);
}

TEST_F(FileUtilTest, FollowsLinksByHand) {
  put(in("file"), "");
  ASSERT_EQ(mkdir(in("sub").c_str(), 0755), 0);
  const std::pair<std::string, const char*> links[] = {{in("file"), "absolute"},
                                                       {"file", "relative"},
                                                       {"../relative", "sub/chain"},
                                                       {"loop", "loop"},
                                                       {"nowhere", "dangling"}};
  for (const auto& link : links) ASSERT_EQ(symlink(link.first.c_str(), in(link.second).c_str()), 0);
  EXPECT_EQ(resolved(in("file")), in("file"));
  EXPECT_EQ(resolved(in("absolute")), in("file"));
  EXPECT_EQ(resolved(in("relative")), in("file"));
  EXPECT_EQ(resolved(in("sub/chain")), in("sub/../file"));
  EXPECT_EQ(resolved(in("dangling")), "");
  EXPECT_EQ(resolved(in("gone")), "");
  checkInChild([this] {
    ASSERT_EQ(chdir(m_dir.c_str()), 0);
    EXPECT_EQ(resolved("relative"), "file");
  });
  forgetLog();
  EXPECT_EQ(resolved(in("loop")), "");
  EXPECT_NE(logged().find("Detected a potential circular sym link in " + in("loop") + "!"),
            std::string::npos);
}

TEST_F(FileUtilTest, FreeSpaceLeavesItsResultAloneOnFailure) {
  unsigned long long kilobytes = 7;
  EXPECT_EQ(GetFreeSpaceSize(in("gone"), kilobytes), ENOENT);
  EXPECT_EQ(kilobytes, 7u);
  EXPECT_NE(logged().find("statfs return (-1). Cannot detect free disk space.: No such file"),
            std::string::npos);
  EXPECT_EQ(GetFreeSpaceSize("/proc", kilobytes), 0);
  EXPECT_EQ(kilobytes, 0u) << "a file system without blocks";
}

TEST_F(FileUtilTest, CopiesNeverWriteThroughALink) {
  put(in("from"), std::string(50000, 'x'));
  put(in("victim"), "stays");
  ASSERT_EQ(symlink("victim", in("link").c_str()), 0);
  CopyFile(in("from"), in("link"));
  EXPECT_EQ(get(in("victim")), "stays");
  EXPECT_TRUE(S_ISREG(modeOf(in("link"))));
  EXPECT_EQ(get(in("link")), get(in("from")));
  CopyFile(in("from"), in("from"));
  EXPECT_EQ(GetFileSize(in("from")), 50000);
  CopyFile(in("gone"), in("victim"));
  CopyFile(in("victim"), in("no/where"));
  EXPECT_EQ(get(in("victim")), "stays");
}

TEST_F(FileUtilTest, CopiesFilesByPattern) {
  for (const char* dir : {"from", "to"}) ASSERT_EQ(mkdir(in(dir).c_str(), 0755), 0);
  for (const char* name : {"a.conf", "b.conf", "c.text"}) put(in("from/") + name, name);
  ASSERT_EQ(mkfifo(in("from/pipe.conf").c_str(), 0600), 0);
  EXPECT_EQ(CopyFiles(in("from"), in("to"), "(a|b)\\.conf"), 0);
  EXPECT_EQ(CopyFiles(in("from"), in("to"), "^c"), 0);
  EXPECT_EQ(CopyFiles(in("from"), in("to"), "text$"), 0);
  EXPECT_EQ(get(in("to/a.conf")) + get(in("to/b.conf")), "a.confb.conf");
  EXPECT_EQ(modeOf(in("to/c.text")), 0u) << "anchors match nowhere";
  EXPECT_EQ(CopyFiles(in("from"), in("to"), "pipe"), 0);
  EXPECT_THROW(CopyFiles(in("gone"), in("to"), "."), vesk::SystemException);
}

}  // namespace
