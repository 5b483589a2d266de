// The modules' answers: every class and result has a row, outcomes are not confused, and docs/outcomes.md
// agrees.

#include <regex>

#include "lrpc/session/outcome_internal.h"

using namespace vesk;

namespace {

constexpr const char* kOutcomes[] = {"success", "not found", "try again", "unavailable", "refused"};
constexpr const char* kStatus[] = {"TRYAGAIN", "UNAVAIL", "NOTFOUND", "SUCCESS"};  // from -2 on
constexpr const char* kLogin[] = {"SUCCESS",      "USER_UNKNOWN",         "AUTH_ERR",
                                  "MAXTRIES",     "CRED_INSUFFICIENT",    "AUTHINFO_UNAVAIL",
                                  "ACCT_EXPIRED", "NEW_AUTHTOK_REQD",     "PERM_DENIED",
                                  "AUTHTOK_ERR",  "AUTHTOK_RECOVERY_ERR", "TRY_AGAIN"};

std::string columns(const Answer& answer) {
  std::string text = kOutcomes[static_cast<int>(answer.outcome)];
  text = text + " | " + kStatus[static_cast<int>(answer.nameStatus()) + 2] + " | " +
         (answer.error == 0 ? "0" : strerrorname_np(answer.error)) + " | ";
  for (const LoginAnswer task : {answer.authenticate, answer.account, answer.password})
    text = text + kLogin[static_cast<int>(task)] + " | ";
  text.back() = '\n';
  return text;
}

// The first group of all matches in a source file.
std::vector<std::string> namesIn(const std::string& name, const char* pattern) {
  std::ifstream file(TEST_SOURCE_DIR "/" + name);
  const std::string text(std::istreambuf_iterator<char>(file), {});
  const std::regex regex(pattern);
  std::vector<std::string> names;
  for (std::sregex_iterator match(text.begin(), text.end(), regex), end; match != end; ++match)
    names.push_back((*match)[1]);
  return names;
}

template <class Exception>
Exception made(const std::string& message = "message") {
  return Exception("file", 1, message.c_str(), "", 0);
}

TEST(OutcomeTest, EachExceptionHasTheOutcomeOfItsClassAndText) {
  const std::string connect = "ipc socket connect: ", execute = "Unsuccesful IPC execute: ";
  const auto current = [](auto thrown) {
    try {
      throw thrown;
    } catch (...) {
      return answerOfCurrentException();
    }
  };
  const std::tuple<Answer, Outcome, int> rows[] = {
      {answerOf(made<NotFoundException>()), Outcome::NotFound, ENOENT},
      {answerOf(made<EndOfListException>()), Outcome::NotFound, ENOENT},
      {answerOf(made<ConnectionBrokenException>()), Outcome::TryAgain, EAGAIN},
      {answerOf(made<TryAgainException>()), Outcome::TryAgain, EAGAIN},
      {answerOf(made<BufferFullException>()), Outcome::TryAgain, EAGAIN},
      {answerOf(made<BadDataException>()), Outcome::Unavailable, EIO},
      {answerOf(QueueInterrupted()), Outcome::TryAgain, EAGAIN},
      {answerOf(IPCExceptionDerived<3>("message")), Outcome::Unavailable, EIO},
      {answerOf(std::bad_alloc()), Outcome::TryAgain, ENOMEM},
      {answerOf(std::exception()), Outcome::Unavailable, EIO},
      {current(made<TimeoutException>()), Outcome::TryAgain, EAGAIN},
      {current(1), Outcome::Unavailable, EIO},
      {answerOf(made<IOException>("ipc socket create: whatever")), Outcome::TryAgain, EMFILE},
      {answerOf(made<IOException>("ipc socket connect timed out")), Outcome::TryAgain, EAGAIN},
      {answerOf(made<IOException>(connect + strerror(EAGAIN))), Outcome::TryAgain, EAGAIN},
      {answerOf(made<IOException>(connect + strerror(EACCES))), Outcome::Refused, EACCES},
      {answerOf(made<IOException>(connect + strerror(ENOENT))), Outcome::Unavailable, EIO},
      {answerOf(made<IOException>("a pipc socket create")), Outcome::Unavailable, EIO},
      {answerOf(made<SystemException>(execute + "not authorized")), Outcome::Refused, EACCES},
      {answerOf(made<SystemException>(execute + "bad data")), Outcome::Unavailable, EIO},
      {answerOf(static_cast<ValidationResult>(-1)), Outcome::Unavailable, EIO},
      {answerOf(static_cast<ValidationResult>(48)), Outcome::Unavailable, EIO},
  };
  for (const auto& row : rows) {
    const auto& [answer, expected, error] = row;
    EXPECT_EQ(answer.outcome, expected) << &row - rows;
    EXPECT_EQ(answer.error, error) << &row - rows;
  }
  std::set<std::string> classes = {"IPCExceptionDerived"};  // an IPCException to every module
  for (const ExceptionRow& row : kExceptionRows) classes.insert(row.className);
  for (const char* header : {"include/fokrazo/error_util.h", "include/fokrazo/ipc_exception.h"})
    for (const std::string& name : namesIn(header, R"(class FOKRAZO_API (\w+) : public)"))
      EXPECT_EQ(classes.count(name), 1u) << name;
}

TEST(OutcomeTest, OutcomesAreNeverConfused) {
  const std::set<int> readAsNotFound = {0, ENOENT, ESRCH, EBADF, EPERM};  // see getpwnam(3)
  std::vector<Answer> answers;
  for (const ResultRow& row : kResultRows) answers.push_back(row.answer);
  for (const ExceptionRow& row : kExceptionRows) answers.push_back(row.answer);
  for (const Answer& answer : answers) {
    SCOPED_TRACE(columns(answer));
    const bool isThere = answer.outcome == Outcome::Success, isNotFound = answer.outcome == Outcome::NotFound;
    const bool isAway = answer.outcome == Outcome::TryAgain || answer.outcome == Outcome::Unavailable;
    EXPECT_EQ(readAsNotFound.count(answer.error) > 0, isThere || isNotFound);
    EXPECT_NE(answer.error, ERANGE);
    EXPECT_EQ(answer.nameStatus() == NameStatus::TryAgain, answer.outcome == Outcome::TryAgain);
    for (const LoginAnswer task : {answer.authenticate, answer.account, answer.password}) {
      EXPECT_EQ(task == LoginAnswer::Success, isThere);
      EXPECT_EQ(task == LoginAnswer::UserUnknown, isNotFound);
      EXPECT_EQ(task == LoginAnswer::AuthInfoUnavail || task == LoginAnswer::TryAgain, isAway);
    }
  }
}

std::vector<std::string> printedTables() {
  const std::string columnNames = "Outcome | Name service | errno | Authenticate | Account | Password |\n";
  const std::string line = "|---|---|---|---|---|---|---|---|\n";
  std::string results = "| Result | | " + columnNames + line;
  for (const std::string& name : namesIn("include/fokrazo/validation_result.h", R"((VR_\w+ = \d+))")) {
    const size_t end = name.find(' ');
    const std::string number = name.substr(end + 3);
    results += "| " + number + " | `" + name.substr(0, end) + "` | " +
               columns(answerOf(static_cast<ValidationResult>(std::stoi(number))));
  }
  std::string exceptions = "| Exception | Its message | " + columnNames + line;
  for (const ExceptionRow& row : kExceptionRows) {
    const std::string suffix = row.error ? std::string(": (") + strerrorname_np(row.error) + ")" : " …";
    exceptions += "| `" + std::string(row.className) + "` | " +
                  (*row.text ? "\"" + (row.text + suffix) + "\"" : "any") + " | " + columns(row.answer);
  }
  return {results, exceptions};
}

// With FOKRAZO_UPDATE in the environment, writes the tables to the document.
TEST(OutcomeTest, TheDocumentPrintsTheTables) {
  const std::string path = TEST_SOURCE_DIR "/docs/outcomes.md";
  std::ifstream file(path);
  const std::string text(std::istreambuf_iterator<char>(file), {});
  const std::vector<std::string> tables = printedTables();
  std::string expected, line;
  size_t next = 0;
  bool isInTable = false;
  for (std::istringstream lines(text); std::getline(lines, line);) {
    const bool isRow = !line.empty() && line[0] == '|';
    if (!isRow) expected += line + "\n";
    if (isRow && !isInTable && next < tables.size()) expected += tables[next++];
    isInTable = isRow;
  }
  EXPECT_EQ(next, tables.size());
  if (getenv("FOKRAZO_UPDATE"))
    std::ofstream(path) << expected;
  else
    EXPECT_EQ(text, expected);
}

}  // namespace
