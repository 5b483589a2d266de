// What the stand-in cannot show: fokrazo doctor with an unhealthy daemon, and what the tool sends. Everything
// else is in transcript.txt.

#include <regex>

#include <fokrazo/adserializer.h>
#include "tests/support/objects.h"
#include "tests/support/scripted_peer.h"
#include "tests/support/wire.h"
#include "tests/support/world_test.h"

namespace {

using namespace testsupport;

struct Ran {
  int status;
  std::string out;  // its output, of both streams
};

/// Runs `line`, a program's name and its arguments.
Ran run(const std::string& line) {
  FILE* pipe = popen(("'" TEST_BINARY_DIR "'/bin/" + line + " 2>&1 </dev/null").c_str(), "r");
  Ran ran{-1, ""};
  if (!pipe) return ran;
  char buffer[4096];
  while (size_t count = fread(buffer, 1, sizeof buffer, pipe)) ran.out.append(buffer, count);
  const int status = pclose(pipe);
  ran.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return ran;
}

class ToolTest : public WorldTest {};

TEST_F(ToolTest, DoctorReportsTheDaemonsHealth) {
  const struct {
    int health;
    const char* text;
    const char* finding;
  } rows[] = {
      {16, "dc1",
       "problem  health: Server unreachable: dc1 (16, 3, 4)\n"
       "         -> check the network, the name servers and the clock; then let the daemon try again\n"
       "         run: fokrazo network-changed\n"},
      {14, "",
       "problem  health: Not joined to a domain (14, 3, 4)\n"
       "         -> join this machine to its domain\n         run: fokrazo joined\n"},
      {9, "a\33[2J",
       "problem  health: Extended error: 611b5b324a (9, 3, 4)\n"
       "         -> see the daemon's log\n         run: journalctl -u brondalt -n 50\n"},
  };
  for (const auto& row : rows) {
    ScriptedPeer peer(in("daemon"));
    const std::string status = integer(17) + integer(0) + integer(0) + octets("") + integer(row.health) +
                               integer(3) + integer(4) + octets(row.text);
    peer.expect(request(0)).send(reply(0));
    peer.expect(request(21, octets("") + octets("") + sequence("") + integer(0)));
    peer.send(reply(0, status + integer(1) + octets("no such entry")));
    const Ran ran = run("fokrazo --socket " + in("daemon") + " doctor daemon ping health");
    EXPECT_EQ(ran.status, 1);
    EXPECT_NE(ran.out.find(row.finding), std::string::npos) << ran.out;
    EXPECT_TRUE(peer.finished());
  }
}

TEST_F(ToolTest, DoctorComparesTheClocks) {
  const std::tuple<int, std::string, int, const char*> rows[] = {
      {0, "", 0, "ok       clock: .* the domain's\n"},
      {-40, "", 0, "ok       clock: [0-9]+ s ahead of the domain's\n"},
      {90, "", 0,
       "warning  clock: 1 min [0-9]+ s behind the domain's; Kerberos refuses logins above 5 min\n[^]*"},
      {-7210, "", 1,
       "problem  clock: 2 h [0-9]+ s ahead of the domain's; Kerberos refuses logins above 5 min\n[^]*"},
      {0, "yesterday", 0,
       "warning  clock: the domain's time is unknown: the directory does not tell it\n[^]*"},
  };
  for (const auto& [offset, value, exitStatus, finding] : rows) {
    ScriptedPeer peer(in("daemon"));
    peer.expect(request(16, octets("") + octets("") + octets("(objectClass=*)") +
                                sequence(octets("currentTime")) + integer(0) + integer(1) + integer(0)));
    const time_t remote = time(nullptr) + offset;
    char text[32];
    strftime(text, sizeof text, "%Y%m%d%H%M%S.0Z", gmtime(&remote));
    vesk::ADObject root = objectOf("", "currentTime=" + (value.empty() ? text : value));
    const vesk::ADSerializer& blob = *root.getSerialized();
    peer.send(answer(0, integer(1) + octets(std::string(blob.data(), blob.size()))));
    const Ran ran = run("fokrazo --socket " + in("daemon") + " doctor clock");
    EXPECT_EQ(ran.status, exitStatus) << ran.out;
    EXPECT_TRUE(std::regex_match(ran.out, std::regex(finding))) << ran.out;
    EXPECT_TRUE(peer.finished());
  }
}

TEST_F(ToolTest, MemberAsksForBothFormsOfNamesUnlessOneIsGiven) {
  const std::pair<const char*, int> rows[] = {{"", 2}, {"--unix ", 0}, {"--windows ", 1}};
  for (const auto& [option, form] : rows) {
    ScriptedPeer peer(in("daemon"));
    peer.expect(request(10, octets("al") + integer(1) + octets("g") + integer(0) + integer(form)));
    peer.send(answer(0));
    EXPECT_EQ(run("fokrazo --socket " + in("daemon") + " member " + option + "al g").status, 0) << option;
    EXPECT_TRUE(peer.finished()) << option;
  }
}

}  // namespace
