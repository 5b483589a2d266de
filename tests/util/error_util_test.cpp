#include "util/include/error_util.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>

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

template <class Thrown, class Caught>
bool caughtAs(Thrown error) {
  try {
    try {
      throw error;
    } catch (const Caught&) {
      return true;
    }
  } catch (const std::exception&) {
    return false;
  }
}

TEST(Exceptions, TreeDecidesWhoCatches) {
  IOException io("f", 1, "m", "IOException", 1);
  BaseException base("f", 1, "m", "BaseException", 1004);
  QueueInterrupted interrupted;
  EXPECT_TRUE((caughtAs<IOException, Base_Exception>(io)));
  EXPECT_TRUE((caughtAs<IOException, VESKException>(io)));
  EXPECT_FALSE((caughtAs<IOException, SystemException>(io)));
  EXPECT_TRUE((caughtAs<BaseException, ZKTException>(base)));
  EXPECT_TRUE((caughtAs<BaseException, VESKException>(base)));
  EXPECT_FALSE((caughtAs<BaseException, Base_Exception>(base)));
  EXPECT_FALSE((caughtAs<QueueInterrupted, Base_Exception>(interrupted)));
  EXPECT_STREQ(interrupted.what(), "QueueInterrupted exception");
  EXPECT_EQ(interrupted.classID(), 0);
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

}  // namespace
