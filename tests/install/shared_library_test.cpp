// A program over the shared library alone, with no hidden symbol in reach: what the library throws is caught
// here by its class, so the classes on both sides are one.

#include <sys/socket.h>
#include <unistd.h>

#include <functional>
#include <string>
#include <typeinfo>

#include <gtest/gtest.h>

#include "fokrazo.h"

namespace {

struct Row {
  const char* className;
  const std::type_info& type;
  std::function<void()> throwIt;
};

void readFrom(bool withPeer) {
  int ends[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
  if (!withPeer) close(ends[1]);
  unsigned char byte;
  const auto closeAll = [&] {
    close(ends[0]);
    if (withPeer) close(ends[1]);
  };
  try {
    vesk::readN(ends[0], &byte, 1);
  } catch (...) {
    closeAll();
    throw;
  }
  closeAll();
}

void sendException() {
  vesk::IPCReply reply(vesk::IPC_OP_PING);
  vesk::IPCException remote("remote");
  reply += remote;
  reply.rewind();
  reply.getAndThrowIPCException();
}

TEST(SharedLibrary, ThrowsTheClassesThatTheProgramKnows) {
  Props(false, false)->setString(vesk::PN::LRPC_TIMEOUT, "0");
  char data[1] = {};
  const Row rows[] = {
      {"NotFoundException", typeid(vesk::NotFoundException),
       [] { vesk::CleanTempSettingFiles("/nonexistent/"); }},
      {"BadDataException", typeid(vesk::BadDataException),
       [&] { vesk::ADObject(sizeof data, data, false, nullptr); }},
      {"SystemException", typeid(vesk::SystemException), [] { vesk::ADObject().isValid(); }},
      {"IOException", typeid(vesk::IOException), [] { vesk::IPCconnect("/nonexistent/daemon"); }},
      {"ConnectionBrokenException", typeid(vesk::ConnectionBrokenException), [] { readFrom(false); }},
      {"TimeoutException", typeid(vesk::TimeoutException), [] { readFrom(true); }},
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
}

// Inline code of the headers and the library's own work on one object.
TEST(SharedLibrary, SharesItsObjectsWithTheProgram) {
  vesk::ADObject object("CN=a,DC=example,DC=com");
  object[AD_CN] = "a";
  const vesk::ADObject other = object;
  EXPECT_EQ(std::string(object.clone()[AD_CN]), "a");
  EXPECT_TRUE(other.attributeExists(AD_CN, true));
  boost::shared_ptr<vesk::Logger> logger = vesk::getLogger("lrpc.session", false);
  EXPECT_TRUE(logger);
  EXPECT_EQ(logger.get(), vesk::Logger::GetLogger("lrpc.session").get());
}

}  // namespace
