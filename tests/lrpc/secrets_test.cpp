// What a secret leaves behind: nothing in the memory of the process once its owner has wiped it, and nothing
// in any log.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <functional>
#include <memory>
#include <new>
#include <string>

#include "lrpc/ipcmessage.h"
#include "lrpc/session.h"
#include "lrpc/shredder.h"
#include "lrpc/unixviews.h"
#include "tests/standin/standin_process.h"
#include "tests/support/syslog_socket.h"
#include "tests/support/world_test.h"
#include "util/include/circular_buffer.h"
#include "util/include/log.h"
#include "util/include/unique_fd.h"

using namespace vesk;
using namespace testsupport;

namespace {

// A secret is one of these, repeated. It is found where it stands twice in a row, which the test itself never
// lets happen.
using Unit = uint64_t;
constexpr size_t kPair = 2 * sizeof(Unit);

Unit newUnit() {
  static unsigned count = 0;
  char text[sizeof(Unit) + 1];
  snprintf(text, sizeof text, "Key-%04u", ++count);
  Unit unit;
  memcpy(&unit, text, sizeof unit);
  return unit;
}

std::string textOf(Unit unit) {
  return std::string(reinterpret_cast<const char*>(&unit), sizeof unit);
}

std::unique_ptr<Shredder> secretOf(Unit unit, size_t size) {
  auto secret = std::make_unique<Shredder>(std::string(size, '\0'));
  for (size_t i = 0; i + sizeof unit <= size; i += sizeof unit) memcpy(&(*secret)[i], &unit, sizeof unit);
  return secret;
}

// The mappings of the process's private writable memory where the unit stands twice in a row; empty if there
// is none. Read piece by piece into a shared page, which is none of it.
std::string found(Unit unit) {
  constexpr size_t kPiece = 1 << 20;
  static auto* const piece =
      static_cast<char*>(mmap(nullptr, kPiece, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
  const UniqueFd memory(open("/proc/self/mem", O_RDONLY | O_CLOEXEC));
  const auto isAt = [unit](const char* place) {
    return memcmp(place, &unit, sizeof unit) == 0 && memcmp(place + sizeof unit, &unit, sizeof unit) == 0;
  };
  std::string all;
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    uint64_t start, end;
    char permissions[5];
    sscanf(line.c_str(), "%lx-%lx %4s", &start, &end, permissions);
    if (strcmp(permissions, "rw-p") != 0) continue;
    bool isHere = false;
    for (; start + kPair <= end && !isHere; start += kPiece - kPair) {
      const ssize_t size = pread(memory.get(), piece, std::min(kPiece, end - start), start);
      for (ssize_t i = 0; i + static_cast<ssize_t>(kPair) <= size && !isHere; ++i) isHere = isAt(piece + i);
    }
    if (isHere) all += line + "\n";
  }
  return all;
}

struct Operation {
  const char* name;
  std::function<void(LocalRpcSession&, const Shredder&)> call;
};

std::string gText;  // an out argument
int gStatus;

// clang-format off
const Operation kOperations[] = {
    {"validatePlainTextUser", [](auto& c, auto& secret) { c.validatePlainTextUser("lquispe", secret, false); }},
    {"validateKerberosUser", [](auto& c, auto& secret) { c.validateKerberosUser("lquispe", secret); }},
    {"getNtlmChallenge", [](auto& c, auto& secret) { c.getNtlmChallenge(secret); }},
    {"validateNtlmUser", [](auto& c, auto& secret) { c.validateNtlmUser(secret); }},
    {"changePassword", [](auto& c, auto& secret) { c.changePassword("lquispe", secret, secret, false); }},
    {"setPassword", [](auto& c, auto& secret) { c.setPassword("lquispe", secret, "", secret); }},
    {"setPasswordKrb5", [](auto& c, auto& secret) { c.setPasswordKrb5("lquispe", secret); }},
    {"addUser", [](auto& c, auto& secret) { c.addUser("new", secret, "", "", "", "", "", "", "", secret); }},
    {"addUserKrb5", [](auto& c, auto& secret) { c.addUserKrb5("new", secret, "", "", "", "", "", ""); }},
    {"setMachinePassword", [](auto& c, auto& secret) { c.setMachinePassword("linux04", secret, "", secret); }},
    {"setMachinePassword of this host", [](auto& c, auto& secret) { c.setMachinePassword(secret); }},
    {"netLogonSamLogon",
     [](auto& c, auto& secret) { c.netLogonSamLogon("lquispe", secret, secret, 0, gText, gStatus, gText); }},
    {"samChangeUserPassword2",
     [](auto& c, auto& s) { c.samChangeUserPassword2("lquispe", s, s, s, s, gStatus, gText); }},
};
// clang-format on

class SecretsTest : public WorldTest {
 protected:
  // Makes each operation with a secret of its own, and looks for the secret after that.
  void checkMemory(const std::string& socket, size_t size) {
    for (const Operation& operation : kOperations) {
      const Unit unit = newUnit();
      LocalRpcSession session(socket, false, false);
      call(operation, session, secretOf(unit, size));
      EXPECT_EQ(found(unit), "") << operation.name;
    }
  }

  static void call(const Operation& operation, LocalRpcSession& session, std::unique_ptr<Shredder> secret) {
    try {
      operation.call(session, *secret);
    } catch (const VESKException&) {
    }
  }
};

TEST_F(SecretsTest, NoneIsLeftInMemory) {
  const Unit unit = newUnit();
  auto secret = secretOf(unit, 48);
  EXPECT_NE(found(unit), "");
  secret.reset();
  EXPECT_EQ(found(unit), "");

  checkMemory(in("nobody"), 48);
  for (const char* fault : {"", "lose%1", "refuse%1", "stall%1"}) {
    SCOPED_TRACE(fault);
    configure(std::string("lrpc.timeout: ") + (*fault == 's' ? "0" : "5") + "\n");
    StandinProcess standin(*fault ? std::vector<std::string>{"--fault", fault} : std::vector<std::string>());
    checkMemory(standin.socket(), 48);
    checkMemory(standin.socket(), 70000);  // a message grows
  }
}

TEST_F(SecretsTest, NoneIsLogged) {
  StandinProcess standin({"--fault", "lose%4"});
  SyslogSocket syslogd;
  Logger::SetBufferActive(true);
  for (const char* destination : {"", "logger.destination: syslog\n"}) {
    configure(destination + std::string("logger.memory.enabled: true\nlogger.memory.log: TRACE\n"
                                        "logger.facility.*: auth\n"));
    ASSERT_TRUE(CircularBuffer::GetCircularBuffer()->isEnabled());
    for (const Operation& operation : kOperations) {
      const Unit unit = newUnit();
      LocalRpcSession session(standin.socket(), false, false);
      forgetLog();
      call(operation, session, secretOf(unit, 48));
      std::string lines = logged();
      for (const SyslogLine& line : syslogd.take()) lines += line.text;
      EXPECT_NE(lines.find("write size"), std::string::npos);
      EXPECT_EQ(lines.find(textOf(unit)), std::string::npos) << operation.name << lines;
      EXPECT_EQ(found(unit), "") << operation.name;  // the memory log
    }
  }
}

TEST_F(SecretsTest, NoneIsLeftOfAReplyThatBreaksOff) {
  configure("lrpc.timeout: 0\n");
  int ends[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
  const UniqueFd own(ends[0]), peer(ends[1]);
  const Unit unit = newUnit();
  const pid_t child = fork();
  if (child == 0) {  // whose memory is another
    std::string frame = {100, 0, 0, 0};
    for (int i = 0; i < 8; ++i) frame += textOf(unit);
    _exit(write(peer.get(), frame.data(), frame.size()) == static_cast<ssize_t>(frame.size()) ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_EQ(status, 0);
  IPCReply reply;
  EXPECT_THROW(reply.get(own.get()), TimeoutException);
  EXPECT_EQ(found(unit), "");
}

// A short text stands in the object itself, where it can be looked at afterwards.
TEST(ShredderTest, WipesItsOwnTextAlone) {
  alignas(Shredder) static unsigned char place[sizeof(Shredder)];
  const std::string original = "short";
  auto* secret = new (place) Shredder(original);
  Shredder copy = *secret;
  secret->assign("no");
  secret->~Shredder();
  const volatile unsigned char* bytes = place;
  const std::string left(bytes, bytes + sizeof place);
  EXPECT_EQ(left.find("no"), std::string::npos);
  EXPECT_EQ(left.find("rt"), std::string::npos);
  EXPECT_EQ(original, "short");
  EXPECT_EQ(copy, "short");
}

}  // namespace
