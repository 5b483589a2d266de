// The stand-in program, with client sessions and misbehaving clients.

#include <sys/syscall.h>

#include "standin/directory.h"
#include "standin/unix_profile.h"
#include "tests/support/outcome_text.h"
#include "tests/support/standin_process.h"
#include "tests/support/wire.h"
#include "util/file/unique_fd.h"

namespace {

using namespace testsupport;
using namespace vesk;
using standin::Directory;
using standin::Entry;
using standin::EntryId;
using standin::EntryKind;
using Names = std::set<std::string>;

const std::string kSample = TEST_SOURCE_DIR "/standin/sample/";

class StandinTest : public testing::Test {
 protected:
  StandinTest() { m_directory.load(kSample + "accounts.ldif"); }

  // The DNs in the rest of a listing that ends with `end`, added to `names`.
  template <class Next>
  static Names rest(Next next, const std::string& end, Names names = {}) {
    EXPECT_EQ(thrownBy([&] {
                while (true) EXPECT_TRUE(names.insert(text(next())).second);
              }),
              end);
    return names;
  }

  Directory m_directory;
  StandinProcess m_standin;
  LocalRpcSession m_session{m_standin.socket(), false, true};
};

TEST_F(StandinTest, FindsEveryAccountAndGroupByEachKey) {
  for (EntryId id = 0; id < m_directory.size(); ++id) {
    const Entry& entry = m_directory[id];
    SCOPED_TRACE(entry.dn());
    const SID sid = standin::toSid(standin::entrySid(entry));
    const bool isGroup = entry.kind() == EntryKind::Group;
    if (!isGroup && !entry.isAccount()) {
      for (const int flags : {0, UNIX_ONLY})
        EXPECT_TRUE(sid.isNull() ||
                    outcomeOf([&] { return m_session.getObject(sid, flags); }).find("NotFound") == 0);
      continue;
    }
    const auto find = [&](const auto& key) {
      return isGroup ? outcomeOf([&] { return m_session.getGroup(key, 0); })
                     : outcomeOf([&] { return m_session.getUser(key, 0); });
    };
    const std::string account = entry.first(AD_USERNAME);
    const std::optional<uint32_t> number = standin::unixId(entry);
    Guid guid;
    guid.fromHexValue(entry.first("objectGUID"));
    for (const std::string& name :
         {account, standin::unixName(entry), "EXAMPLE\\" + account, account + "@example.com", entry.dn()})
      EXPECT_EQ(find(name), entry.dn()) << name;
    EXPECT_EQ(find(sid), entry.dn());
    EXPECT_EQ(find(guid), entry.dn());
    EXPECT_EQ(number ? find(static_cast<int>(*number)) : entry.dn(), entry.dn());
    EXPECT_EQ(m_session.getObject(sid, 0)->getType(), isGroup);
    EXPECT_EQ(m_session.getObject(account, isGroup ? DSGroup : DSUser, UNIX_ONLY).isEmpty(), !number);
  }
}

TEST_F(StandinTest, ListsEachKindOfEntryIndependently) {
  const auto user = [&] { return m_session.getUser2(NEXT_ENTRY, 0); };
  const auto group = [&] { return m_session.getGroup2(NEXT_ENTRY, 0); };
  const auto shadow = [&] { return m_session.getShadow(NEXT_ENTRY, 0); };
  const std::string closed = " 0 No listing of this kind is open", end = "EndOfListException 0 End of list";
  Names users, groups, shadows;
  for (EntryId id = 0; id < m_directory.size(); ++id) {
    const Entry& entry = m_directory[id];
    if (entry.kind() == EntryKind::Group) groups.insert(entry.dn());
    if (entry.kind() != EntryKind::User) continue;
    users.insert(entry.dn());
    if (standin::unixId(entry)) shadows.insert(entry.dn());
  }
  EXPECT_EQ(outcomeOf(user), closed);
  EXPECT_FALSE(m_session.startListUser() || m_session.startListGroup(true));
  // Two listings at once, and other requests between their entries.
  Names listed = {outcomeOf(user)}, listedGroups = {outcomeOf(group)};
  m_session.getUser("lquispe", 0);
  EXPECT_EQ(rest(user, end, listed), users);
  EXPECT_EQ(rest(group, end, listedGroups), groups);
  EXPECT_EQ(m_session.statusCode(), END_OF_LIST);
  EXPECT_TRUE(m_session.getUserObj(NEXT_ENTRY, 0).isEmpty());
  EXPECT_FALSE(m_session.startListShadow());
  EXPECT_EQ(rest(shadow, "NotFoundException 0 User not found"), shadows);
  EXPECT_FALSE(m_session.endListUser() || m_session.endListGroup() || m_session.endListShadow());
  EXPECT_EQ(outcomeOf(group), closed);
  EXPECT_FALSE(m_session.startListUser());
  EXPECT_EQ(rest([&] { return m_session.getUser2(NEXT_ENTRY, UNIX_ONLY); }, end), shadows);
}

// It can neither accept a client nor restart; then it gets descriptors again; at last it has none when it
// ends.
TEST_F(StandinTest, ServesOnWhileThereAreNoMoreDescriptors) {
  // The sanitizer needs descriptors for its own checks of addresses.
  if (strstr(SANITIZERS, "undefined")) GTEST_SKIP() << "not with the undefined-behaviour sanitizer";
  m_session.ping();
  rlimit before = {};
  ASSERT_EQ(prlimit(m_standin.pid(), RLIMIT_NOFILE, nullptr, &before), 0);
  const rlimit none = {3, before.rlim_max};
  ASSERT_EQ(prlimit(m_standin.pid(), RLIMIT_NOFILE, &none, nullptr), 0);
  const UniqueFd waiting(IPCconnect(m_standin.socket()));
  const std::string ping = framed(request(0));
  (void)send(waiting.get(), ping.data(), ping.size(), MSG_NOSIGNAL);
  m_session.ping();
  m_standin.signal(SIGHUP);
  m_session.ping();
  EXPECT_EQ(m_session.getSystemInfo(9), "0") << "restarts";
  m_session.dropConnection();
  ASSERT_EQ(prlimit(m_standin.pid(), RLIMIT_NOFILE, &before, nullptr), 0);
  IPCReply reply;
  reply.get(waiting.get());
  EXPECT_EQ(reply.result(), IPC_SUCCESS);
  ASSERT_EQ(prlimit(m_standin.pid(), RLIMIT_NOFILE, &none, nullptr), 0);
  const UniqueFd last(IPCconnect(m_standin.socket()));
  m_standin.signal(SIGTERM);
  EXPECT_EQ(m_standin.wait(), 0);
}

// When another client has its answer, the earlier request has been processed.
TEST(StandinFaults, AStalledRequestHasNeitherAnswerNorEnd) {
  const StandinProcess standin({"--fault", "stall@1", "--fault", "huge@3"});
  const std::string ping = framed(request(0));
  const UniqueFd stalled(IPCconnect(standin.socket()));
  (void)send(stalled.get(), ping.data(), ping.size(), MSG_NOSIGNAL);
  LocalRpcSession session(standin.socket(), false, false);
  session.ping();
  pollfd polled = {stalled.get(), POLLIN, 0};
  EXPECT_EQ(poll(&polled, 1, 0), 0);

  const UniqueFd other(IPCconnect(standin.socket()));
  (void)send(other.get(), ping.data(), ping.size(), MSG_NOSIGNAL);
  unsigned char length[4] = {};
  readN(other.get(), length, sizeof length);
  EXPECT_EQ(std::string(std::begin(length), std::end(length)), word(UINT32_MAX));
}

TEST(StandinFaults, VerboseLinesNameRequestsAndNoSecrets) {
  StandinProcess standin({"--verbose"});
  LocalRpcSession session(standin.socket(), false, false);
  session.setSessionID("a\nb");
  session.validatePlainTextUser("lquispe", Shredder("Paper-boat-42"), false);
  const std::string lines = standin.errors();
  EXPECT_EQ(std::count(lines.begin(), lines.end(), '\n'), 2) << lines;
  EXPECT_EQ(lines.find("request 1, connection "), 0u) << lines;
  EXPECT_EQ(lines.find("Paper"), std::string::npos) << lines;
}

TEST_F(StandinTest, StopsAtAClientsRequest) {
  m_session.stop();
  EXPECT_TRUE(m_session.processAuthenticated());
  EXPECT_EQ(m_standin.wait(), 0);
  EXPECT_NE(access(m_standin.socket().c_str(), F_OK), 0);
}

TEST_F(StandinTest, NoClientDisturbsTheOthers) {
  std::vector<UniqueFd> clients;
  const auto next = [&](const std::string& bytes) {
    clients.emplace_back(IPCconnect(m_standin.socket()));
    (void)send(clients.back().get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    return clients.back().get();
  };
  next("");                                // sends nothing
  next("\x0c");                            // stops inside the length
  next(std::string("\x0c\0\0\0\x30", 5));  // and inside the message
  next(std::string(4, '\0'));
  next("\xff\xff\xff\xff");
  next(framed("no BER at all"));
  next(framed(std::string(1 << 16, '\x30')));
  // Every opcode, also unknown ones, without its fields, with wrong ones and with absurd counts.
  for (int opcode = 0; opcode < 128; ++opcode) {
    if (opcode == IPC_OP_STOP) continue;
    for (const char* body : {"", "020100", "047f78797a", "02047fffffff3084ffffffff"})
      next(framed(request(opcode, hex(body))));
    if (clients.size() > 100) clients.clear();
  }
  // A client that requests everything and reads nothing.
  const std::string everything =
      request(16, octets("") + octets("") + octets("") + sequence("") + integer(2) + integer(0) + integer(0));
  const int deaf = next("");
  for (int i = 0; i < 50; ++i)
    (void)send(deaf, framed(everything).data(), everything.size() + 4, MSG_NOSIGNAL);

  EXPECT_EQ(m_session.getUser("lquispe", 0)->getId(), 10060u);
  const int patient = next("");
  for (const char byte : framed(request(0))) (void)send(patient, &byte, 1, MSG_NOSIGNAL);
  IPCReply reply;
  reply.get(patient);
  EXPECT_EQ(reply.result(), IPC_SUCCESS);
}

// Otherwise a test that is killed would leave a stand-in, and a runner would wait for the end of its output.
TEST(StandinProcess, EndsWithItsTestAndHoldsNoneOfItsStreams) {
  int output[2];
  ASSERT_EQ(pipe2(output, O_CLOEXEC), 0);
  const pid_t test = fork();
  if (test == 0) {
    for (const int stream : {STDOUT_FILENO, STDERR_FILENO}) dup2(output[1], stream);
    const StandinProcess standin;
    dprintf(STDOUT_FILENO, "%d %s", standin.pid(), standin.socket().c_str());
    raise(SIGKILL);
  }
  close(output[1]);
  const UniqueFd reader(output[0]);
  waitpid(test, nullptr, 0);
  std::string told;
  char buffer[256];
  for (pollfd polled = {output[0], POLLIN, 0}; poll(&polled, 1, 100 * 1000) > 0;) {
    const ssize_t count = read(output[0], buffer, sizeof buffer);
    if (count <= 0) break;
    told.append(buffer, static_cast<size_t>(count));
  }
  pollfd ended = {output[0], 0, 0};
  EXPECT_EQ(poll(&ended, 1, 0), 1) << "somebody holds the test's output";
  pid_t pid = 0;
  std::string socket;
  std::istringstream(told) >> pid >> socket;
  ASSERT_GT(pid, 1) << told;
  const UniqueFd standin(static_cast<int>(syscall(SYS_pidfd_open, pid, 0)));
  pollfd gone = {standin.get(), POLLIN, 0};
  EXPECT_TRUE(!standin || poll(&gone, 1, 100 * 1000) == 1) << "the stand-in outlives its test";
  std::filesystem::remove_all(std::filesystem::path(socket).parent_path());
}

}  // namespace
