// fokrazo doctor on hosts that are ill in one way or another.

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <string>

#include "tests/support/command_line.h"
#include "tests/support/scripted_peer.h"
#include "tests/support/wire.h"
#include "tests/support/world_test.h"
#include "util/file/unique_fd.h"

namespace {

using namespace testsupport;

class DoctorTest : public WorldTest {
 protected:
  // A host that is joined, with a configuration that nobody complains about.
  void SetUp() override {
    WorldTest::SetUp();
    if (IsSkipped()) return;
    put("/etc/velmora/velmora.conf", "log: INFO\nlrpc.timeout: 20s\n");
    put("/var/velmora/kset.domain", "example.com");
    put("/var/velmora/kset.host", "host1.example.com");
    put("/var/velmora/kset.schema", "NULL");
  }

  std::string socket() const { return in("daemon"); }
  Ran examine(const std::string& options = "") {
    return run("fokrazo --socket " + socket() + " " + options + " doctor");
  }

  static void expectIn(const Ran& ran, const std::string& line) {
    EXPECT_NE(ran.out.find(line), std::string::npos) << line << "\n" << ran.out;
  }

  // All that the daemon is asked in a visit, and that answer to the question for its health.
  static void answerVisit(ScriptedPeer& peer, int health, const std::string& text) {
    const std::string status = integer(17) + integer(0) + integer(0) + octets("") + integer(health) +
                               integer(3) + integer(4) + octets(text);
    peer.expect(request(0)).send(reply(0));
    peer.expect(request(21, octets("") + octets("") + sequence("") + integer(0)));
    peer.send(reply(0, status + integer(1) + octets("no such entry")));
  }
};

TEST_F(DoctorTest, FindsNothingWrongOnAHealthyHost) {
  ScriptedPeer peer(socket());
  ASSERT_EQ(chmod(socket().c_str(), 0666), 0);
  answerVisit(peer, 0, "");
  const Ran ran = examine();
  EXPECT_EQ(ran.status, 0);
  EXPECT_EQ(ran.out.find("warning"), std::string::npos) << ran.out;
  for (const std::string& line :
       {"ok       socket: " + socket() + ", of root, mode 0666\n",
        "ok       daemon: of root, group 0, process " + std::to_string(getpid()) + " (doctor_test)\n",
        std::string("ok       ping: "), std::string("ok       health: Success\n"),
        std::string("ok       joined: example.com as host1.example.com\n"),
        std::string("ok       configuration: /etc/velmora/velmora.conf\n")})
    expectIn(ran, line);
  EXPECT_TRUE(peer.finished());
}

TEST_F(DoctorTest, TellsTheDaemonsComplaint) {
  ScriptedPeer peer(socket());
  answerVisit(peer, 16, "dc1");
  const Ran ran = examine("--json");
  EXPECT_EQ(ran.status, 1);
  expectIn(ran,
           "{\"check\":\"health\",\"state\":\"problem\",\"text\":\"Server unreachable: dc1 (16, 3, 4)\","
           "\"advice\":\"check the network");
  EXPECT_TRUE(peer.finished());
}

TEST_F(DoctorTest, TellsWhyTheDaemonIsOutOfReach) {
  const struct {
    std::string bytes;  // what the daemon says before it hangs up; with none it stays, and stays silent
    int status;
    const char* line;
  } rows[] = {
      {"", 3, "problem  ping: TimeoutException: "},
      {"\4", 3, "problem  ping: ConnectionBrokenException: "},
      {framed("abcd"), 3, "problem  ping: IOException: "},
      {framed(reply(3)), 1, "problem  ping: Unsuccesful IPC execute: not authorized"},
  };
  for (const auto& row : rows) {
    ScriptedPeer peer(socket());
    peer.expect(request(0)).sendRaw(row.bytes);
    if (!row.bytes.empty()) peer.hangUp();
    const Ran ran = examine("--timeout 1");
    EXPECT_EQ(ran.status, row.status) << ran.out;
    expectIn(ran, row.line);
    expectIn(ran, "ok       joined: ");
  }
}

TEST_F(DoctorTest, TellsWhatIsWrongWithTheSocket) {
  const auto expect = [this](const std::string& line) {
    const Ran ran = examine();
    EXPECT_EQ(ran.status, 3) << ran.out;
    expectIn(ran, line);
  };
  expect("problem  socket: " + socket() + ": No such file or directory\n         -> start the daemon");
  put(socket(), "");
  expect("problem  socket: " + socket() + " is no socket\n");
  unlink(socket().c_str());

  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  socket().copy(address.sun_path, sizeof address.sun_path - 1);
  const vesk::UniqueFd left(::socket(AF_UNIX, SOCK_STREAM, 0));
  ASSERT_EQ(bind(left.get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  expect("Connection refused\n         -> the socket was left behind");
  expect("warning  socket: ");  // its mode is not for everybody
}

TEST_F(DoctorTest, TellsWhatIsMissingInTheJoinedState) {
  unlink("/var/velmora/kset.schema");
  expectIn(examine(), "host1.example.com, but: Cannot find key sets of zone schema.");
  unlink("/var/velmora/kset.domain");
  expectIn(examine(), "problem  joined: this machine is not joined");
}

TEST_F(DoctorTest, ReadsTheConfigurationAloud) {
  const struct {
    const char* text;
    const char* complaint;  // empty: none
  } rows[] = {
      {"LOG: WARN\nlog.lrpc: TRACE\nlogger.facility.*: daemon\nlogger.showmore.lrpc: 7", ""},
      {"lrpc.timeout: -1\nlrpc.connect.timeout: 2m\nlogger.destination: /tmp/log", ""},
      {"pam.any: thing\nlogger.openlog.sshd: no", ""},
      {"log: info", "problem  configuration: log: 'info' is not one of TRACE"},
      {"log.lrpc: 3", "log.lrpc: '3' is not one of TRACE"},
      {"logger.facility.*: nosuch", "logger.facility.*: 'nosuch' is not a facility"},
      {"logger.facility: auth", "warning  configuration: logger.facility is no key"},
      {"logger.destnation: file", "warning  configuration: logger.destnation is no key"},
      {"logger.destination: log.txt", "'log.txt' is not syslog, file or an absolute path"},
      {"logger.file.maxsize: 10M", "'10M' is not a whole number"},
      {"logger.file.maxcount: 99999999999999999999", "is not a whole number"},
      {"logger.memory.enabled: on", "'on' is not true or false"},
      {"logger.memory.bufsize: 9", "at least 10"},
      {"lrpc.timeout: 5x", "'5x' is not a time"},
      {"lrpc.timeout: -2", "'-2' is not a time"},
      {"lrpc.connect.timeout: 0", "'0' is not a time above 0"},
      {"lrpc.session.timeout: 1m", "'1m' is not a whole number"},
      {"log: INFO\nLog: WARN", "Log is there more than once"},
      {"logger.program.ignore: file:/nonexistent", "/nonexistent does not exist"},
      {"any.key: file:/proc/self", "/proc/self is a symbolic link"},
  };
  for (const auto& row : rows) {
    put("/etc/velmora/velmora.conf", row.text + std::string("\n"));
    const Ran ran = examine();
    const bool complains = ran.out.find("ok       configuration: ") == std::string::npos;
    EXPECT_EQ(complains, *row.complaint != 0) << row.text << "\n" << ran.out;
    expectIn(ran, row.complaint);
  }
  ASSERT_EQ(chmod("/etc/velmora/velmora.conf", 0666), 0);
  expectIn(examine(), "may be changed by others");
  unlink("/etc/velmora/velmora.conf");
  expectIn(examine(), "every key has its default");
  ASSERT_EQ(mkdir("/etc/velmora/velmora.conf", 0755), 0);
  expectIn(examine(), "problem  configuration: /etc/velmora/velmora.conf is no plain file");
}

}  // namespace
