// Messages against literal bytes: what is written, what is read, and how damaged ones fail.

#include "tests/support/thrown.h"
#include "tests/support/wire.h"
#include "tests/support/wrapped.h"

using namespace vesk;
using namespace testsupport;

namespace {

bool gNoMemory = false;

}  // namespace

WRAPPED(void*, ber_memcalloc, (ber_len_t n, ber_len_t size),
        gNoMemory ? nullptr : __real_ber_memcalloc(n, size))

namespace {

const std::string kSidBytes = hex("01 02 000000000005 20000000 20020000");  // S-1-5-32-544

class MessageTest : public ::testing::Test {
 protected:
  MessageTest() { EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, m_ends), 0); }
  ~MessageTest() override {
    for (const int end : m_ends) close(end);
  }

  std::string sent(IPCMessage& message) {
    message.send(m_ends[0]);
    char bytes[4096];
    const ssize_t count = recv(m_ends[1], bytes, sizeof bytes, MSG_DONTWAIT);
    return std::string(bytes, count < 0 ? 0 : count);
  }

  std::unique_ptr<IPCReply> received(const std::string& body) {
    put(framed(reply(0, body)));
    auto message = std::make_unique<IPCReply>();
    message->get(m_ends[0]);
    return message;
  }

  void put(const std::string& bytes) {
    EXPECT_EQ(::send(m_ends[1], bytes.data(), bytes.size(), 0), static_cast<ssize_t>(bytes.size()));
  }

  int m_ends[2];
};

TEST_F(MessageTest, EachFieldHasItsBytes) {
  const char* texts[] = {"ab", "", nullptr};
  IPCExceptionDerived<3> exception(std::string("no\0x", 4));  // up to the NUL
  ADObject nobody, empty(""), object("CN=x");
  empty.erase(AD_DN);
  ADObjectList none, list = ADObjectList::create();
  list.push_back(object);
  IPCReply message(IPC_OP_PING);
  message.setResult(IPC_BAD_DATA);
  ((((message += 0) += 128) += INT_MIN) += true) += DSAny;
  (((message += 1LL) += std::string("a\0b", 3)) += std::string(128, 'x')) += std::string(256, 'x');
  ((message += texts) += static_cast<const char**>(nullptr)) += std::vector<std::string>{"a", "b"};
  ((((message += exception) += SID("S-1-5-32-544")) += Guid()) += nobody) += empty;
  (message += none) += list;
  const ADSerializer& blob = *object.getSerialized();
  EXPECT_EQ(
      tohex(sent(message).substr(4)),
      tohex(hex("30 84 00000006 020100 020102 020100 02020080 020480000000 020101 020118"
                "0408 0100000000000000 0403 610062 0481 80") +
            std::string(128, 'x') + hex("0482 0100") + std::string(256, 'x') +
            hex("3084 00000006 0402 6162 0400 3084 00000000 020102 040161 040162 020103 0402 6e6f 0410") +
            kSidBytes + hex("0410") + std::string(16, '\0') + hex("0400 0400 020100 020101") +
            octets(std::string(blob.data(), blob.size()))));
}

TEST_F(MessageTest, EachValueThatCannotBeWrittenHasItsMessage) {
  IPCReply message(IPC_OP_PING);
  ADObjectList list = ADObjectList::create();
  list.push_back(ADObject());
  EXPECT_EQ(thrownBy([&] { message += SID(); }), "BadDataException 0 SID is Null");
  EXPECT_EQ(thrownBy([&] { message += static_cast<ADSerializer*>(nullptr); }),
            "IOException 0 ber_printf ADObject");
  EXPECT_EQ(thrownBy([&] { message += list; }), "SystemException 0 Null adobject");
  EXPECT_EQ(thrownBy([&] { IPCException("x").encode(nullptr); }),
            "IOException 0 ber_printf IPCException::encode");
}

TEST_F(MessageTest, FieldsAreReadInOrderAndAgainAfterRewind) {
  const auto message = received(
      integer(-129) + octets(std::string("a\0b", 3)) + octets("") + hex("04080102000000000000") +
      sequence(octets("x")) + sequence("") + integer(2) + octets("p") + octets("q") + octets(kSidBytes) +
      octets(std::string(16, 'g')) + octets("") + integer(0) + integer(1) + octets(""));
  EXPECT_EQ(message->opcode(), IPC_OP_UNKNOWN);
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(message->getInt(), -129);
    EXPECT_EQ(message->getString(), std::string("a\0b", 3));
    berval* none = message->getBerString();
    EXPECT_EQ(none->bv_len, 0u);
    qtr_ber_bvfree(none);
    EXPECT_EQ(message->getPthreadT(), 0x201u);
    char** texts = message->getCharStringArray();
    EXPECT_STREQ(texts[0], "x");
    EXPECT_EQ(texts[1], nullptr);
    qtr_ber_memvfree(reinterpret_cast<void**>(texts));
    EXPECT_EQ(message->getCharStringArray(), nullptr);
    EXPECT_EQ(message->getStringVector(), (std::vector<std::string>{"p", "q"}));
    EXPECT_EQ(message->getSid().toMSString(), "S-1-5-32-544");
    EXPECT_EQ(message->getGuid(), Guid(reinterpret_cast<const unsigned char*>("gggggggggggggggg"), 16));
    EXPECT_TRUE(message->getADObject().isNull());
    const ADObjectList list = message->getADObjectList();
    EXPECT_TRUE(!list.isNull() && list.empty());
    EXPECT_TRUE(message->hasMore());
    EXPECT_TRUE(message->getADObjectList().begin()->isNull());
    EXPECT_FALSE(message->hasMore());
    message->rewind();
  }
}

TEST_F(MessageTest, EveryReaderRefusesDamagedFields) {
  const std::pair<void (*)(const IPCMessage&), std::string> rows[] = {
      {[](const IPCMessage& m) { m.getInt(); }, "ber_scanf int"},
      {[](const IPCMessage& m) { m.getString(); }, "ber_scanf string"},
      {[](const IPCMessage& m) { m.getBerString(); }, "ber_scanf string"},
      {[](const IPCMessage& m) { m.getPthreadT(); }, "ber_scanf pthread_t"},
      {[](const IPCMessage& m) { m.getCharStringArray(); }, "ber_scanf char **"},
      {[](const IPCMessage& m) { m.getStringVector(); }, "ber_scanf int"},
      {[](const IPCMessage& m) { m.getSid(); }, "ber_scanf sid"},
      {[](const IPCMessage& m) { m.getGuid(); }, "ber_scanf guid"},
      {[](const IPCMessage& m) { m.getADObject(); }, "ber_scanf adobj"},
      {[](const IPCMessage& m) { m.getADObjectList(); }, "ber_scanf int"},
      {[](const IPCMessage& m) { m.getAndThrowIPCException(); }, "ber_scanf IPCException::decode"},
  };
  const IPCReply empty;
  EXPECT_FALSE(empty.hasMore());
  EXPECT_EQ(thrownBy([&] { empty.rewind(); }), "IOException 0 ber_scanf int");
  for (const auto& row : rows) {
    for (const char* body : {"", "0205", "0401", "04847fffffff41", "0488ffffffffffffffff41",
                             "30847fffffff0400", "04ff", "04890000000000000000014141"}) {
      const auto message = received(hex(body));
      EXPECT_EQ(thrownBy([&] { row.first(*message); }), "IOException 0 " + row.second) << body;
    }
    EXPECT_EQ(thrownBy([&] { row.first(empty); }), "IOException 0 " + row.second);
  }
  // A damaged object is refused when it is received, not when it is first used.
  const std::string cut = object("CN=x").substr(2, object("CN=x").size() - 3);
  EXPECT_EQ(thrownBy([&] { received(octets(cut))->getADObject(); }).find("BadDataException 0 Bad length"),
            0u);
  // A count does not determine memory.
  EXPECT_EQ(thrownBy([&] { received(integer(INT_MAX))->getStringVector(); }),
            "IOException 0 ber_scanf string");
  EXPECT_EQ(thrownBy([&] { received(integer(INT_MAX))->getADObjectList(); }),
            "IOException 0 ber_scanf adobj");
}

TEST_F(MessageTest, TheTypeOfAnExceptionDecidesItsClass) {
  for (int type = -1; type <= 6; ++type) {
    const bool known = 1 <= type && type <= 5;
    try {
      received(integer(type) + octets("x"))->getAndThrowIPCException();
    } catch (IPCException& error) {
      EXPECT_EQ(error.getTypeCode(), known ? type : 1);
      EXPECT_EQ(error.what(), known ? std::string("x") : "Unknown error");
      EXPECT_EQ(error.className() + std::to_string(error.rc() + error.classID()), "0");
    }
  }
  EXPECT_EQ(thrownBy([&] { received(integer(1) + octets(""))->getAndThrowIPCException(); }), " 0 ");
}

TEST_F(MessageTest, AShortSidOrGuidIsFilledWithZeros) {
  for (size_t size = 0; size < kSidBytes.size(); ++size) {
    const auto message = received(octets(kSidBytes.substr(0, size)) + octets(std::string(size % 16, 'g')));
    EXPECT_EQ(message->getSid().isNull(), size == 0);
    EXPECT_EQ(tohex(std::string(reinterpret_cast<const char*>(message->getGuid().bytes()), 16)),
              tohex(std::string(size % 16, 'g') + std::string(16 - size % 16, '\0')));
  }
}

TEST_F(MessageTest, AnAbsurdLengthTakesNoMemory) {
  const std::string limit = std::to_string(256 << 20), above = std::to_string((256 << 20) + 1);
  const auto refused = [](const std::string& length) {
    return "IOException " + std::to_string(ENOMEM) + " read " + length +
           " bytes from IPC: " + strerror(ENOMEM);
  };
  IPCReply message;
  put(hex("01000010"));
  EXPECT_EQ(thrownBy([&] { message.get(m_ends[0]); }), refused(above)) << "by the default limit";
  gNoMemory = true;
  put(hex("00000010"));
  EXPECT_EQ(thrownBy([&] { message.get(m_ends[0]); }), refused(limit));
  EXPECT_EQ(thrownBy([&] { message.getBerString(); }), "IOException 0 ber_malloc");
  gNoMemory = false;

  put(hex("00000010") + "abc");
  shutdown(m_ends[1], SHUT_WR);
  rusage before, after;
  getrusage(RUSAGE_SELF, &before);
  EXPECT_EQ(thrownBy([&] { message.get(m_ends[0]); }),
            "ConnectionBrokenException 0 readMsg: brondalt closed connection");
  getrusage(RUSAGE_SELF, &after);
  EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 128 << 10) << "kB of the 256 MB announced";
}

TEST(MessageTextTest, OtherNumbersPrintAsUnknown) {
  for (const int gap : {-1, 32, 49, 50})
    EXPECT_STREQ(IPCMessage::IPC_OPCODEToStr(static_cast<IPC_OPCODE>(gap)), "(unknown)") << gap;
  EXPECT_STREQ(IPCMessage::IPC_OPCODEToStr(IPC_OP_SAM_TEST_ENABLED), "sam - test enabled");
  EXPECT_STREQ(IPCMessage::IPC_RESULTToStr(static_cast<IPC_RESULT>(4)), "(unknown)");
}

}  // namespace
