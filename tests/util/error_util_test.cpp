#include "util/include/error_util.h"

#include <cerrno>

#include "tests/support/world_test.h"
#include "util/include/throw.h"

using namespace testsupport;
using namespace vesk;

namespace {

constexpr char kSource[] = "util/error_util_test";

TEST(Exceptions, ClassTextDecidesTheId) {
  const struct {
    const char* passed;
    const char* className;
    int id;
  } rows[] = {
      {"vesk::SystemException", "SystemException", 3}, {"ioexception", "ioexception", 2},
      {"BaseException", "BaseException", 23},          {"ECID_LAST", "ECID_LAST", 53},
      {"QueueInterrupted", "QueueInterrupted", 0},     {"", "", 0},
  };
  for (const auto& row : rows) {
    SystemException error("f", 1, "m", row.passed, 7);
    EXPECT_STREQ(error.className(), row.className);
    EXPECT_EQ(error.classID(), row.id) << row.passed;
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
}

TEST(Exceptions, MessagesAreCutAt511CharactersAndCarryTheSystemText) {
  EXPECT_FAILURE(
      "IOException|Cannot open file /nowhere: No such file or directory",
      FOKRAZO_THROW_ERRNO(IOException, "IOException", 1, ENOENT, "Cannot open file %s", "/nowhere"));
  EXPECT_FAILURE(
      "BadDataException|" + std::string(511, 'x'),
      FOKRAZO_THROW(BadDataException, "BadDataException", 0, "%s", std::string(2000, 'x').c_str()));
}

TEST(Exceptions, BaseCodesHaveTexts) {
  const std::pair<int, const char*> rows[] = {
      {999, "Unknown"}, {1000, "Success"}, {1037, "Not implemented in NULL Schema"}, {1039, "Unknown"}};
  for (const auto& [code, text] : rows) EXPECT_STREQ(BaseExceptionToString(code), text) << code;
}

using ExceptionLog = WorldTest;

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
