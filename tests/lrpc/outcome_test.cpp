// What modules answer: no class and no result without a row, no two outcomes mixed up, and docs/outcomes.md
// says the same.

#include "lrpc/outcome.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "lrpc/ipc_exception.h"
#include "lrpc/outcome_tables.h"
#include "util/include/error_util.h"

using namespace vesk;

namespace {

constexpr const char* kOutcomes[] = {"success", "not found", "try again", "unavailable", "refused"};
constexpr const char* kStatus[] = {"TRYAGAIN", "UNAVAIL", "NOTFOUND", "SUCCESS"};  // from -2 on
constexpr const char* kLogin[] = {"SUCCESS",      "USER_UNKNOWN",         "AUTH_ERR",
                                  "MAXTRIES",     "CRED_INSUFFICIENT",    "AUTHINFO_UNAVAIL",
                                  "ACCT_EXPIRED", "NEW_AUTHTOK_REQD",     "PERM_DENIED",
                                  "AUTHTOK_ERR",  "AUTHTOK_RECOVERY_ERR", "TRY_AGAIN"};

std::string login(LoginAnswer answer) {
  return kLogin[static_cast<int>(answer)];
}

std::string columns(const Answer& answer) {
  const int status = static_cast<int>(answer.nameStatus());
  return std::string(kOutcomes[static_cast<int>(answer.outcome)]) + " | " + kStatus[status + 2] + " | " +
         (answer.error == 0 ? "0" : strerrorname_np(answer.error)) + " | " + login(answer.authenticate) +
         " | " + login(answer.account) + " | " + login(answer.password) + " |\n";
}

/// The first group of all matches in a header.
std::vector<std::string> namesIn(const char* header, const char* pattern) {
  std::ifstream file(std::string(TEST_SOURCE_DIR "/") + header);
  const std::string text(std::istreambuf_iterator<char>(file), {});
  const std::regex regex(pattern);
  std::vector<std::string> names;
  for (std::sregex_iterator match(text.begin(), text.end(), regex), end; match != end; ++match)
    names.push_back((*match)[1]);
  return names;
}

const ExceptionRow& rowFor(const std::string& className) {
  for (const ExceptionRow& row : kExceptionRows)
    if (row.className == className && *row.text == 0) return row;
  throw std::out_of_range(className);
}

template <class Exception>
Exception thrown(const char* message = "message") {
  if constexpr (std::is_constructible_v<Exception, const char*, int, const char*, const char*, int>)
    return Exception("file", 1, message, "", 0);
  else if constexpr (std::is_constructible_v<Exception, const char*, const char*, int>)
    return Exception(message, "", 0);
  else if constexpr (std::is_constructible_v<Exception, std::string>)
    return Exception(std::string(message));
  else
    return Exception();
}

#define THROWN(Exception) \
  { #Exception, columns(answerOf(thrown <Exception>())) }

TEST(OutcomeTest, EveryExceptionClassHasARowAndIsAnsweredByIt) {
  const std::map<std::string, std::string> answers = {
      THROWN(NotFoundException), THROWN(EndOfListException),  THROWN(TimeoutException),
      THROWN(TryAgainException), THROWN(BufferFullException), THROWN(ConnectionBrokenException),
      THROWN(IOException),       THROWN(SystemException),     THROWN(AlreadyException),
      THROWN(BadDataException),  THROWN(EndOfFileException),  THROWN(IPCException),
      THROWN(QueueInterrupted),  THROWN(Base_Exception),      THROWN(BaseException),
      THROWN(ZKTException),      THROWN(VESKException),       THROWN(std::bad_alloc),
      THROWN(std::exception),
  };
  std::set<std::string> classes = {"std::bad_alloc", "std::exception"};
  for (const char* header : {"util/include/error_util.h", "lrpc/ipc_exception.h"})
    for (const std::string& name : namesIn(header, R"(class FOKRAZO_API (\w+) : public)"))
      classes.insert(name);
  EXPECT_EQ(classes.erase("IPCExceptionDerived"), 1u);  // an IPCException to every module
  EXPECT_EQ(columns(answerOf(thrown<IPCExceptionDerived<3>>())), columns(rowFor("IPCException").answer));
  EXPECT_EQ(classes.size(), answers.size());
  for (const std::string& name : classes) {
    ASSERT_TRUE(answers.count(name)) << name;
    EXPECT_EQ(answers.at(name), columns(rowFor(name).answer)) << name;
  }
}

TEST(OutcomeTest, TextsTellSomeExceptionsApartAndWhateverElseHasAnAnswer) {
  const std::string connect = "ipc socket connect: ";
  const auto current = [](bool isException) {
    try {
      if (isException) throw thrown<TimeoutException>();
      throw 1;
    } catch (...) {
      return answerOfCurrentException();
    }
  };
  const struct {
    Answer answer;
    Outcome expected;
    int error;
  } rows[] = {
      {current(true), Outcome::TryAgain, EAGAIN},
      {current(false), Outcome::Unavailable, EIO},
      {answerOf(thrown<IOException>("ipc socket create: whatever")), Outcome::TryAgain, EMFILE},
      {answerOf(thrown<IOException>("ipc socket connect timed out")), Outcome::TryAgain, EAGAIN},
      {answerOf(thrown<IOException>((connect + strerror(EAGAIN)).c_str())), Outcome::TryAgain, EAGAIN},
      {answerOf(thrown<IOException>((connect + strerror(EACCES)).c_str())), Outcome::Refused, EACCES},
      {answerOf(thrown<IOException>((connect + strerror(ENOENT)).c_str())), Outcome::Unavailable, EIO},
      {answerOf(thrown<IOException>("a pipc socket create")), Outcome::Unavailable, EIO},
      {answerOf(thrown<SystemException>("Unsuccesful IPC execute: not authorized")), Outcome::Refused,
       EACCES},
      {answerOf(thrown<SystemException>("Unsuccesful IPC execute: bad data")), Outcome::Unavailable, EIO},
      {answerOf(static_cast<ValidationResult>(-1)), Outcome::Unavailable, EIO},
      {answerOf(static_cast<ValidationResult>(48)), Outcome::Unavailable, EIO},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.answer.outcome, row.expected) << &row - rows;
    EXPECT_EQ(row.answer.error, row.error) << &row - rows;
  }
}

// Programs take these for "there is no such user", see getpwnam(3).
bool readsAsNotFound(int error) {
  return error == 0 || error == ENOENT || error == ESRCH || error == EBADF || error == EPERM;
}

TEST(OutcomeTest, NoOutcomeIsMixedUpWithAnother) {
  std::vector<Answer> answers;
  for (const ResultRow& row : kResultRows) answers.push_back(row.answer);
  for (const ExceptionRow& row : kExceptionRows) answers.push_back(row.answer);
  for (const Answer& answer : answers) {
    const std::string row = columns(answer);
    const bool isThere = answer.outcome == Outcome::Success, isNotFound = answer.outcome == Outcome::NotFound;
    EXPECT_EQ(readsAsNotFound(answer.error), isThere || isNotFound) << row;
    EXPECT_NE(answer.error, ERANGE) << row;
    EXPECT_EQ(answer.nameStatus() == NameStatus::TryAgain, answer.outcome == Outcome::TryAgain) << row;
    for (const LoginAnswer task : {answer.authenticate, answer.account, answer.password}) {
      const bool isAway = task == LoginAnswer::AuthInfoUnavail || task == LoginAnswer::TryAgain;
      EXPECT_EQ(task == LoginAnswer::Success, isThere) << row;
      EXPECT_EQ(task == LoginAnswer::UserUnknown, isNotFound) << row;
      EXPECT_EQ(isAway, answer.outcome == Outcome::TryAgain || answer.outcome == Outcome::Unavailable) << row;
    }
  }
}

TEST(OutcomeTest, TheDocumentPrintsTheTables) {
  const std::vector<std::string> results = namesIn("lrpc/validation_result.h", R"((VR_\w+) = \d+)");
  ASSERT_EQ(results.size(), std::size(kResultRows));
  std::string tables =
      "| Result | | Outcome | Name service | errno | Authenticate | Account | Password |\n"
      "|---|---|---|---|---|---|---|---|\n";
  for (size_t i = 0; i < results.size(); ++i)
    tables += "| " + std::to_string(i) + " | `" + results[i] + "` | " +
              columns(answerOf(static_cast<ValidationResult>(i)));
  tables +=
      "| Exception | Its message | Outcome | Name service | errno | Authenticate | Account | Password |\n"
      "|---|---|---|---|---|---|---|---|\n";
  for (const ExceptionRow& row : kExceptionRows) {
    const std::string suffix = row.error ? std::string(": (") + strerrorname_np(row.error) + ")" : " …";
    tables += "| `" + std::string(row.className) + "` | " +
              (*row.text ? "\"" + (row.text + suffix) + "\"" : "any") + " | " + columns(row.answer);
  }
  std::ifstream file(TEST_SOURCE_DIR "/docs/outcomes.md");
  std::string printed;
  for (std::string line; std::getline(file, line);)
    if (line[0] == '|') printed += line + "\n";
  EXPECT_EQ(printed, tables) << "These are the tables as they should be:\n" << tables;
}

}  // namespace
