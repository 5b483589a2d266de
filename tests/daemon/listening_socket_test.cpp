#include "daemon/listening_socket.h"

#include <optional>

#include "tests/support/standin_process.h"
#include "tests/support/thrown.h"

namespace brondalt {
namespace {

std::string connectTo(const std::string& path) {
  return testsupport::thrownBy([&] { vesk::IPCdisconnect(vesk::IPCconnect(path)); });
}

class ListeningSocketTest : public testing::Test {
 protected:
  bool exists(const std::string& name) const { return std::filesystem::exists(m_scratch.path(name)); }
  std::string open() {
    try {
      m_socket.emplace(m_path);
      return "open";
    } catch (const Error& error) {
      return error.what();
    }
  }
  /// A socket file without a listener.
  void leaveSocket(const std::string& name) {
    {
      ListeningSocket gone(m_scratch.path("gone"));
      std::filesystem::create_hard_link(m_scratch.path("gone"), m_scratch.path(name));
    }
    ASSERT_EQ(connectTo(m_scratch.path(name)), "IOException 1 ipc socket connect: Connection refused");
  }

  ScratchDirectory m_scratch;
  const std::string m_path = m_scratch.path("daemon");
  std::optional<ListeningSocket> m_socket;
};

TEST_F(ListeningSocketTest, IsOpenToEveryUserAndClosedOnExec) {
  const mode_t before = umask(0077);
  EXPECT_EQ(open(), "open");
  umask(before);
  struct stat file = {};
  EXPECT_EQ(stat(m_path.c_str(), &file), 0);
  EXPECT_EQ(file.st_mode, S_IFSOCK | 0666u);
  EXPECT_EQ(fcntl(m_socket->fd(), F_GETFD), FD_CLOEXEC);
  EXPECT_TRUE(fcntl(m_socket->fd(), F_GETFL) & O_NONBLOCK);
  EXPECT_FALSE(exists("daemon.new"));
}

TEST_F(ListeningSocketTest, ReplacesOnlyStaleSockets) {
  leaveSocket("daemon");
  leaveSocket("daemon.new");
  EXPECT_EQ(open(), "open");
  EXPECT_EQ(connectTo(m_path), "nothing");
  const std::string inUse = m_path + ": Address already in use";
  EXPECT_THROW(ListeningSocket{m_path}, Error);
  EXPECT_EQ(connectTo(m_path), "nothing")
      << "a daemon that could not start has taken the socket of another one";
  m_socket.reset();
  EXPECT_FALSE(exists("daemon"));

  std::ofstream(m_path) << "kept";
  EXPECT_EQ(open(), inUse);
  EXPECT_EQ(std::filesystem::file_size(m_path), 4u);
  std::filesystem::remove(m_path);
  std::filesystem::create_symlink("nowhere", m_path);
  EXPECT_EQ(open(), inUse);
}

TEST_F(ListeningSocketTest, IsReplacedAndRemovesOnlyItsOwnFile) {
  EXPECT_EQ(open(), "open");
  const int first = m_socket->fd();
  m_socket->replace();
  EXPECT_NE(m_socket->fd(), first);
  EXPECT_EQ(connectTo(m_path), "nothing");
  std::filesystem::create_directory(m_scratch.path("daemon.new"));  // blocks the temporary name
  EXPECT_THROW(m_socket->replace(), Error);
  EXPECT_EQ(connectTo(m_path), "nothing");

  std::filesystem::remove(m_path);
  std::ofstream(m_path) << "of another program";
  m_socket->close();
  EXPECT_TRUE(exists("daemon"));
}

TEST_F(ListeningSocketTest, RefusesAPathThatIsTooLong) {
  const auto create = [&](size_t size) { ListeningSocket socket("/tmp/" + std::string(size - 5, 'x')); };
  EXPECT_NO_THROW(create(ListeningSocket::kLongestPath));
  EXPECT_THROW(create(ListeningSocket::kLongestPath + 1), Error);
  EXPECT_THROW(ListeningSocket(""), Error);
}

}  // namespace
}  // namespace brondalt
