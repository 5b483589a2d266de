// A program that links only the shared library, without access to hidden symbols. It catches what the library
// throws by class, which shows that both sides share the classes.

#include <sys/socket.h>
#include <unistd.h>

#include <functional>
#include <string>
#include <typeinfo>

#include <gtest/gtest.h>

#include <fokrazo/fokrazo.h>

namespace {

struct Row {
  const char* className;
  const std::type_info& type;
  std::function<void()> throwIt;
};

void sendException() {
  vesk::IPCReply reply(vesk::IPC_OP_PING);
  vesk::IPCException remote("remote");
  reply += remote;
  reply.rewind();
  reply.getAndThrowIPCException();
}

TEST(SharedLibrary, ThrowsTheClassesThatTheProgramKnows) {
  Props(false, false)->setString(vesk::PN::LRPC_TIMEOUT, "0");
  int ends[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
  unsigned char byte;
  const auto read = [&] { vesk::readN(ends[0], &byte, 1); };
  const auto readWithoutPeer = [&] {
    close(ends[1]);
    read();
  };
  char data[1] = {};
  const Row rows[] = {
      {"NotFoundException", typeid(vesk::NotFoundException),
       [] { vesk::CleanTempSettingFiles("/nonexistent/"); }},
      {"BadDataException", typeid(vesk::BadDataException),
       [&] { vesk::ADObject(sizeof data, data, false, nullptr); }},
      {"SystemException", typeid(vesk::SystemException), [] { vesk::ADObject().isValid(); }},
      {"IOException", typeid(vesk::IOException), [] { vesk::IPCconnect("/nonexistent/daemon"); }},
      {"TimeoutException", typeid(vesk::TimeoutException), read},
      {"ConnectionBrokenException", typeid(vesk::ConnectionBrokenException), readWithoutPeer},
      {"BaseException", typeid(BaseException), [] { vesk::SID().fromMSString("S-2-1"); }},
      {"", typeid(vesk::IPCException), sendException},
  };
  for (const Row& row : rows) {
    try {
      row.throwIt();
      ADD_FAILURE() << row.type.name() << " was not thrown";
    } catch (const VESKException& error) {
      EXPECT_EQ(typeid(error), row.type) << error.what();
      EXPECT_STREQ(error.className(), row.className);
      EXPECT_NE(dynamic_cast<const std::exception*>(&error), nullptr);
    }
  }
  close(ends[0]);
}

}  // namespace
