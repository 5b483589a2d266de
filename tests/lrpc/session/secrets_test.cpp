// No copy of a secret remains in the memory of the process once its owner has wiped it, and none reaches a
// log.

#include <sys/mman.h>

#include "tests/support/operations.h"
#include "tests/support/rows.h"
#include "tests/support/standin_process.h"
#include "tests/support/syslog_socket.h"
#include "tests/support/world_test.h"
#include "util/file/unique_fd.h"

using namespace vesk;
using namespace testsupport;

namespace {

// A secret repeats one of these. The search looks for two in a row, which the test itself never has in
// memory.
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

std::unique_ptr<Secrets> secretsOf(Unit unit, size_t size) {
  const Shredder room(std::string(size, '\0'));
  auto secrets = std::make_unique<Secrets>(Secrets{room, room});
  for (Shredder* secret : {&secrets->first, &secrets->second})
    for (size_t i = 0; i + sizeof unit <= size; i += sizeof unit) memcpy(&(*secret)[i], &unit, sizeof unit);
  return secrets;
}

// The first mapping of the process's private writable memory with the unit twice in a row; empty if
// there is none. Read piece by piece into a shared page, which is none of it.
std::string found(Unit unit) {
  constexpr size_t kPiece = 1 << 20;
  static auto* const piece = static_cast<char*>(
      mmap(nullptr, kPiece + kPair, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
  char* const pair = piece + kPiece;
  for (size_t i = 0; i < kPair; i += sizeof unit) memcpy(pair + i, &unit, sizeof unit);
  const UniqueFd memory(open("/proc/self/mem", O_RDONLY | O_CLOEXEC));
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    uint64_t start, end;
    char permissions[5];
    sscanf(line.c_str(), "%lx-%lx %4s", &start, &end, permissions);
    if (strcmp(permissions, "rw-p") != 0) continue;
    for (; start + kPair <= end; start += kPiece - kPair) {
      const ssize_t size = pread(memory.get(), piece, std::min(kPiece, end - start), start);
      if (size > 0 && memmem(piece, size, pair, kPair)) return line;
    }
  }
  return "";
}

bool takesSecrets(const Operation& operation) {
  return operation.request({}) != operation.request(samplePasswords());
}

class SecretsTest : public WorldTest {
 protected:
  void check(SyslogSocket& syslogd, const std::string& socket, size_t size) {
    for (const Operation& operation : exchanges()) {
      if (!takesSecrets(operation)) continue;
      SCOPED_TRACE(operation.name);
      const Unit unit = newUnit();
      LocalRpcSession session(socket, false, false);
      forgetLog();
      auto secrets = secretsOf(unit, size);
      operation.make(session, *secrets);
      secrets.reset();
      std::string lines = logged();
      for (const std::string& line : syslogd.texts()) lines += line;
      EXPECT_NE(lines, "");
      EXPECT_EQ(lines.find(textOf(unit)), std::string::npos) << lines;
      EXPECT_EQ(found(unit), "");
    }
  }
};

TEST_F(SecretsTest, NoOperationLeavesASecretInMemoryOrInALog) {
  SyslogSocket syslogd;
  const Unit unit = newUnit();
  auto secrets = secretsOf(unit, 48);
  EXPECT_NE(found(unit), "");
  secrets.reset();
  EXPECT_EQ(found(unit), "");

  const std::string all = "logger.memory.enabled: true\nlogger.memory.log: TRACE\nlogger.facility.*: auth\n";
  Logger::SetBufferActive(true);
  configure(all);
  ASSERT_TRUE(CircularBuffer::GetCircularBuffer()->isEnabled());
  check(syslogd, in("nobody"), 48);
  for (const auto& [fault, settings] : rowsOf<2>("lrpc/session/rows.txt", "faults")) {
    SCOPED_TRACE(fault);
    configure(all + settings);
    const StandinProcess standin({"--fault", fault});
    check(syslogd, standin.socket(), 48);
    check(syslogd, standin.socket(), 70000);  // makes a message grow
  }
}

TEST_F(SecretsTest, APartialReplyIsWiped) {
  configure("lrpc.timeout: 0\n");
  int ends[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
  const UniqueFd own(ends[0]), peer(ends[1]);
  const Unit unit = newUnit();
  checkInChild([&] {  // has its own memory
    std::string frame = {100, 0, 0, 0};
    for (int i = 0; i < 8; ++i) frame += textOf(unit);
    EXPECT_EQ(write(peer.get(), frame.data(), frame.size()), static_cast<ssize_t>(frame.size()));
  });
  IPCReply reply;
  EXPECT_THROW(reply.get(own.get()), TimeoutException);
  EXPECT_EQ(found(unit), "");
}

// A short text is stored in the object itself, whose bytes the test can inspect after the destructor.
TEST(ShredderTest, WipesOnlyItsOwnText) {
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
