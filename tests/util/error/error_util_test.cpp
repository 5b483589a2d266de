
#include "tests/support/world_test.h"
#include "util/error/throw.h"

using namespace testsupport;
using namespace vesk;

namespace {

constexpr char kSource[] = "util/error_util_test";

TEST(Exceptions, TheClassTextDeterminesTheId) {
  const std::tuple<const char*, const char*, int> rows[] = {
      {"vesk::SystemException", "SystemException", 3},
      {"ioexception", "ioexception", 2},
      {"ECID_LAST", "ECID_LAST", 53},
      {"QueueInterrupted", "QueueInterrupted", 0},
  };
  EXPECT_STREQ(QueueInterrupted().what(), "QueueInterrupted exception");
  for (const auto& [passed, className, id] : rows) {
    const SystemException error("f", 1, "m", passed, 7);
    EXPECT_STREQ(error.className(), className);
    EXPECT_EQ(error.classID(), id) << passed;
    EXPECT_EQ(error.rc(), 7);
  }
}

TEST(Exceptions, MessagesAreCutAt511Characters) {
  EXPECT_FAILURE(
      "BadDataException|" + std::string(511, 'x'),
      FOKRAZO_THROW(BadDataException, "BadDataException", 0, "%s", std::string(2000, 'x').c_str()));
}

TEST(Exceptions, BaseCodesHaveTexts) {
  EXPECT_STREQ(BaseExceptionToString(1000), "Success");
  EXPECT_STREQ(BaseExceptionToString(1037), "Not implemented in NULL Schema");
  for (const int code : {999, 1039}) EXPECT_STREQ(BaseExceptionToString(code), "Unknown") << code;
}

using ExceptionLog = WorldTest;

TEST_F(ExceptionLog, EachIsLoggedExceptTheEndOfAFile) {
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
