#include "util/include/error_util.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <type_traits>

#include "tests/support/world_test.h"
#include "util/include/throw.h"

namespace {

using namespace vesk;

constexpr char kSource[] = "util/error_util_test";

TEST(Exceptions, ClassTextDecidesTheId) {
  struct Row {
    const char* passed;
    const char* className;
    int id;
  };
  const Row rows[] = {
      {"vesk::SystemException", "SystemException", 3},
      {"SystemException", "SystemException", 3},
      {"ioexception", "ioexception", 2},
      {"EndOfListException", "EndOfListException", 52},
      {"vesk::TryAgainException", "TryAgainException", 5},
      {"BaseException", "BaseException", 23},
      {"ECID_LAST", "ECID_LAST", 53},
      {"QueueInterrupted", "QueueInterrupted", 0},
      {"", "", 0},
  };
  for (const Row& row : rows) {
    SystemException error("f", 1, "m", row.passed, 7);
    EXPECT_STREQ(error.className(), row.className);
    EXPECT_EQ(error.classID(), row.id) << row.passed;
    EXPECT_STREQ(error.what(), "m");
    EXPECT_EQ(error.rc(), 7);
  }
}

TEST(Exceptions, TreeDecidesWhoCatches) {
  EXPECT_TRUE((std::is_base_of_v<Base_Exception, IOException>));
  EXPECT_TRUE((std::is_base_of_v<VESKException, Base_Exception>));
  EXPECT_TRUE((std::is_base_of_v<ZKTException, BaseException>));
  EXPECT_TRUE((std::is_base_of_v<VESKException, ZKTException>));
  EXPECT_FALSE((std::is_base_of_v<Base_Exception, BaseException>));
  EXPECT_FALSE((std::is_base_of_v<Base_Exception, QueueInterrupted>));
  EXPECT_STREQ(QueueInterrupted().what(), "QueueInterrupted exception");
  EXPECT_EQ(QueueInterrupted().classID(), 0);
}

TEST(Exceptions, MessagesAreCutAt511CharactersAndCarryTheSystemText) {
  const std::string longText(2000, 'x');
  try {
    FOKRAZO_THROW_ERRNO(IOException, "IOException", 1, ENOENT, "Cannot open file %s", "/nowhere");
  } catch (const VESKException& error) {
    EXPECT_EQ(error.what(), std::string("Cannot open file /nowhere: ") + strerror(ENOENT));
  }
  try {
    FOKRAZO_THROW(BadDataException, "BadDataException", 0, "%s", longText.c_str());
  } catch (const VESKException& error) {
    EXPECT_EQ(error.what(), longText.substr(0, 511));
  }
}

TEST(Exceptions, BaseCodesHaveTexts) {
  EXPECT_STREQ(BaseExceptionToString(1000), "Success");
  EXPECT_STREQ(BaseExceptionToString(1004), "Bad Data");
  EXPECT_STREQ(BaseExceptionToString(1037), "Not implemented in NULL Schema");
  EXPECT_STREQ(BaseExceptionToString(999), "Unknown");
  EXPECT_STREQ(BaseExceptionToString(1039), "Unknown");
}

using ExceptionLog = testsupport::WorldTest;

TEST_F(ExceptionLog, EachIsToldOfButTheEndOfAFile) {
  IOException("a/b", 5, "text", "vesk::IOException", 3);
  BaseException("a/b", 6, "text", "BaseException", 1004);
  EndOfFileException("a/b", 7, "text", "EndOfFileException", 0);
  EndOfFileException("a/b", 8, "text", "vesk::EndOfFileException", 0);
  EXPECT_TRUE(isLogged("(vesk::IO) : text (reference a/b:5 rc: 3)"));
  EXPECT_TRUE(isLogged("Module=Base : text (reference a/b:6 rc: 1004)"));
  EXPECT_FALSE(isLogged("a/b:7"));
  EXPECT_TRUE(isLogged("(vesk::EndOfFile) : text (reference a/b:8 rc: 0)"));
}

}  // namespace
