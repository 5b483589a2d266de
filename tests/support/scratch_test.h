/// A fixture with a directory of its own, which also checks that a test leaves no descriptor open and does
/// not change the umask; and children that run as another user.
#pragma once

#include <fokrazo/error_util.h>
#include "tests/support/prelude.h"

namespace testsupport {

constexpr uid_t kOrdinaryUser = 1000;

inline mode_t currentUmask() {
  const mode_t mask = umask(0);
  umask(mask);
  return mask;
}

inline long openDescriptors() {
  namespace fs = std::filesystem;
  return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
}

/// Runs `work` in a child, as `user` if that is not 0. Returns its wait status: 0 if no expectation failed.
template <class Work>
int inChild(Work work, uid_t user = 0) {
  fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    if (user != 0 && (setgid(user) != 0 || setuid(user) != 0)) _exit(99);
    try {
      work();
    } catch (const std::exception& failure) {
      ADD_FAILURE() << failure.what();
    }
    fflush(nullptr);
    _exit(::testing::Test::HasFailure() ? 1 : 0);
  }
  int status = -1;
  waitpid(child, &status, 0);
  return status;
}

/// Runs `work` in a child, as `user` if that is not 0. A failure in the child fails the test.
template <class Work>
void checkInChild(Work work, uid_t user = 0) {
  EXPECT_EQ(inChild(work, user), 0) << "in the child";
}

/// The class and message of what `call` throws, as "IOException|Cannot …"; empty if it throws nothing.
template <class Call>
std::string failureOf(Call call) {
  try {
    call();
  } catch (const VESKException& failure) {
    return std::string(failure.className()) + "|" + failure.what();
  }
  return "";
}

/// Expects the statement after `text` to throw: `text` is what failureOf returns for it.
#define EXPECT_FAILURE(text, ...) EXPECT_EQ(::testsupport::failureOf([&] { __VA_ARGS__; }), text)

/// Whether children can become an ordinary user: only if the tests run as the system's own root.
inline bool canBeOrdinaryUser() {
  return inChild([] {}, kOrdinaryUser) == 0;
}

/// Whether tests can mount file systems, as they can in the private world unless it is a container's own.
inline bool canMount() {
  return inChild([] {
           if (unshare(CLONE_NEWNS) != 0) _exit(1);
         }) == 0;
}

class ScratchTest : public ::testing::Test {
 public:
  static void put(const std::string& path, const std::string& content) {
    std::ofstream file(path, std::ios::binary);
    file << content;
    file.close();
    ASSERT_TRUE(file) << path;
  }

  static std::string get(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>());
  }

 protected:
  void SetUp() override {
    char name[] = "/tmp/scratch-XXXXXX";
    ASSERT_NE(mkdtemp(name), nullptr);
    m_dir = name;
    ASSERT_EQ(chmod(name, 0755), 0);
    m_umask = currentUmask();
    m_descriptors = openDescriptors();
  }

  void TearDown() override {
    EXPECT_EQ(openDescriptors(), m_descriptors);
    EXPECT_EQ(currentUmask(), m_umask);
    std::filesystem::remove_all(m_dir);
  }

  std::string in(const std::string& name) const { return m_dir + "/" + name; }

  /// What lstat() returns; zeros if there is nothing.
  static struct stat infoOf(const std::string& path) {
    struct stat info = {};
    lstat(path.c_str(), &info);
    return info;
  }
  static mode_t modeOf(const std::string& path) { return infoOf(path).st_mode; }
  static std::pair<uid_t, gid_t> ownerOf(const std::string& path) {
    return {infoOf(path).st_uid, infoOf(path).st_gid};
  }

  /// The names in a directory, in order, each followed by a blank.
  static std::string namesIn(const std::string& dir) {
    const std::set<std::filesystem::path> paths(std::filesystem::directory_iterator(dir), {});
    std::string names;
    for (const auto& path : paths) names += path.filename().string() + " ";
    return names;
  }

  /// Runs a script of the shell in the test's directory.
  void shell(const std::string& script) const {
    ASSERT_EQ(system(("cd '" + m_dir + "' && " + script).c_str()), 0) << script;
  }

  /// The text with the test's directory for each "@".
  std::string here(std::string text) const {
    for (size_t at; (at = text.find('@')) != std::string::npos;) text.replace(at, 1, m_dir);
    return text;
  }

  std::string m_dir;

 private:
  mode_t m_umask = 0;
  long m_descriptors = 0;
};

}  // namespace testsupport
