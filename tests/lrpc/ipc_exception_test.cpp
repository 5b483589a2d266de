// The daemon's exceptions: each number comes out as its own class.

#include "lrpc/ipc_exception.h"

#include <gtest/gtest.h>

#include "ber/qtr_ber.h"
#include "lrpc/ipcmessage.h"

using namespace vesk;

namespace {

// What a message with that type and text throws, by the innermost class that catches it.
std::string thrown(int type, const std::string& text) {
  IPCReply reply(IPC_OP_PING);
  reply += type;
  reply += text;
  reply.rewind();
  try {
    reply.getAndThrowIPCException();
  } catch (const Base_Exception&) {
    return "base";
  } catch (const IPCExceptionDerived<2>& error) {
    return std::string("2 ") + error.what();
  } catch (const IPCExceptionDerived<3>& error) {
    return std::string("3 ") + error.what();
  } catch (const IPCExceptionDerived<4>& error) {
    return std::string("4 ") + error.what();
  } catch (const IPCExceptionDerived<5>& error) {
    return std::string("5 ") + error.what();
  } catch (const VESKException& error) {
    const auto* plain = dynamic_cast<const IPCException*>(&error);
    EXPECT_NE(plain, nullptr);
    EXPECT_STREQ(error.className(), "");
    EXPECT_EQ(error.rc() + error.classID(), 0);
    return error.what();
  }
}

TEST(IpcExceptionTest, TheTypeDecidesTheClass) {
  EXPECT_EQ(thrown(1, "x"), "x");
  for (int type = 2; type <= 5; ++type) EXPECT_EQ(thrown(type, "x"), std::to_string(type) + " x");
  for (const int type : {0, 6, -1}) EXPECT_EQ(thrown(type, "x"), "Unknown error");
  EXPECT_EQ(thrown(3, ""), "3 ");
}

TEST(IpcExceptionTest, EncodesItsOwnTypeAndItsTextUpToANul) {
  IPCExceptionDerived<4> exception(std::string("ab\0c", 4));
  IPCReply reply(IPC_OP_PING);
  reply += exception;
  reply.rewind();
  EXPECT_EQ(reply.getInt(), 4);
  EXPECT_EQ(reply.getString(), "ab");
  EXPECT_FALSE(reply.hasMore());
  EXPECT_THROW(exception.encode(nullptr), IOException);
}

}  // namespace
