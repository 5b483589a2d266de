// Operations of a session against a whole stand-in: their results, over good connections and bad ones.

#include "tests/support/operations.h"
#include "tests/support/rows.h"
#include "tests/support/standin_process.h"

using namespace vesk;
using namespace testsupport;

namespace {

std::string add(LocalRpcSession& session, const char* name, const char* uid, const char* container) {
  return outcomeOf([&] {
    return session.addUser(name, Shredder("Fresh-start-1"), uid, "20000", "New, Person", "/home/new",
                           "/bin/sh", container, "Administrator", Shredder("Turn-the-key-1"));
  });
}

// As a line of passwd, found by each of its keys.
std::string findAdded(LocalRpcSession& session) {
  const auto added = session.getUser(40000, 0);
  const bool isSame = session.getUser(added->getSid(), 0)->getDN() == added->getDN() &&
                      session.getUser(added->getGuid(), 0)->getDN() == added->getDN();
  ADObject object = session.getUserObj(40000, 0);
  std::string line = isSame ? "" : "not by SID or GUID: ";
  for (const std::string& name : {VESK_UNIXNAME, VESK_UID, VESK_GID, VESK_GECOS, VESK_HOMEDIR, VESK_SHELL})
    line += std::string(object[name]) + ":";
  return line + added->getDN();
}

// clang-format off
#define TRY(user, password) CALL(validatePlainTextUser(user, Shredder(password), false))
#define GIVE(user, password) CALL(setPasswordKrb5(user, Shredder(password)))
#define DOMAIN "DC=example,DC=com"
#define ROLES ",CN=Containers,OU=Corp," DOMAIN
#define TWO_ROLES "CN=Web operators" ROLES " CN=Release crew" ROLES

// In order: refused operations, and changes of the directory. transcript.txt has the tool's operations.
const Operation kSteps[] = {
    {CALL(getUser("", 0)), "NotFoundException 0 User not found"},
    {CALL(ldapPagedSearch("", "", "", nullptr, static_cast<LdapSearchScopeType>(9), 0, false)), " 0 Unknown search scope 9"},
    {CALL(ldapSearch("", "", "", nullptr, static_cast<LdapSearchScopeType>(9), 0, false)), " 0 Unknown search scope 9"},
    {CALL(userLogin("asharma")), "false"},
    {ASK(renewed(session, "asharma")), "0 1"},
    {CALL(userLogout("asharma")), "false"},
    {CALL(userLogout("asharma")), "true"},
    {CALL(samIsSandboxed("asharma", false)), "true"},
    {CALL(samGetUserRolesLocal("mabara", 1, 1)), "2 " TWO_ROLES},
    {CALL(samGetUserRolesLocal("all users", 0, 0)), "3 " TWO_ROLES " CN=Auditors" ROLES},
    {ASK(samChanged(session, "tbjork", "Third-stone-11", "Stone-bridge-9", "")), "0 0 "},
    {TRY("tbjork", "Third-stone-11"), "0"},
    {ASK(samChanged(session, "tbjork", "Stone-11-new", "bad", "")), "2 -1073741718 Invalid password"},
    // The policy wants 7 characters of three kinds, without the name.
    {GIVE("lquispe", "My-lquispe-1"), "5"},
    {GIVE("lquispe", "only letters"), "5"},
    {GIVE("lquispe", "Bo-1xy"), "5"},
    {GIVE("lquispe", "Boat-1x"), "0"},
    {TRY("lquispe", "Boat-1x"), "0"},
    {CALL(setMachinePassword(Shredder(std::string("\0\xff", 2)))), "0"},
    {CALL(setMachinePassword("lquispe", Shredder("No-computer-1"), "", Shredder())), "1"},
    {ASK(add(session, "new, person", "40000", "OU=People,OU=Corp," DOMAIN)), "0"},
    {ASK(add(session, "lquispe", "40001", "")), "33"},
    {ASK(add(session, "other", "40000", "")), "33"},
    {ASK(add(session, "other", "40x", "")), "33"},
    {ASK(add(session, "other", "", "OU=nowhere")), "24"},
    {ASK(findAdded(session)), "new, person:40000:20000:New, Person:/home/new:/bin/sh:CN=new\\, person,OU=People,OU=Corp," DOMAIN},
    {TRY("new, person", "Fresh-start-1"), "0"},
    {CALL(validateUserGroup("new, person", {"Domain Users"}, false, WINDOWS_NAME)), "0"},
    {CALL(addUserKrb5("plain", Shredder("Fresh-start-1"), "", "", "", "", "", "")), "0"},
};
// clang-format on

// The connections are slow, or lost or spoiled at every third request. An operation that is not sent again
// fails as expected, and succeeds when the test repeats it.
TEST(StandinOperations, ReturnTheSameOverBadConnections) {
  for (const auto& [fault, failure] : rowsOf<2>("standin/rows.txt", "faults")) {
    StandinProcess standin({"--fault", fault});
    LocalRpcSession session(standin.socket(), false, false);
    int failures = 0;
    for (const Operation& operation : operations()) {
      if (operation.sent == Sent::InParts) continue;
      std::string outcome = operation.make(session);
      if (operation.sent == Sent::Once && outcome != operation.outcome) {
        ++failures;
        EXPECT_EQ(outcome.find(failure), 0u) << outcome << fault;
        outcome = operation.make(session);
      }
      EXPECT_EQ(outcome, operation.outcome) << fault << " " << operation.name;
    }
    EXPECT_EQ(failures > 0, failure != "none") << fault;
  }
}

TEST(StandinOperations, ReturnWhatTheDirectoryHolds) {
  StandinProcess standin;
  LocalRpcSession session(standin.socket(), false, true);
  for (const Operation& step : kSteps) EXPECT_EQ(step.make(session), step.outcome) << step.name;
}

// Also those that a failure follows with an exception. Authentication, which comes first, succeeds.
TEST(StandinOperations, AreAllAnsweredWithTheSameResultInTime) {
  const StandinProcess standin({"--answer", "VR_TRY_AGAIN=not yet", "--delay", "1"});
  LocalRpcSession session(standin.socket(), false, true);
  const auto start = std::chrono::steady_clock::now();
  for (const Operation& operation : operations()) {
    SCOPED_TRACE(operation.name);
    EXPECT_EQ(operation.make(session).find("ber_scanf"), std::string::npos);
    const bool isPing = strstr(operation.name, "ping") || operation.name == std::string("lrpc");
    EXPECT_EQ(session.lastResult(), isPing ? VR_NO_REPLY_YET : VR_TRY_AGAIN);
  }
  EXPECT_EQ(session.statusMessage(), "not yet");
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(operations().size()));
}

TEST(StandinOperations, ReportTheStateOfAnAccount) {
  StandinProcess standin;
  LocalRpcSession session(standin.socket(), false, false);
  for (const auto& [user, password, result, ntStatus] : rowsOf<4>("standin/rows.txt", "accounts")) {
    SCOPED_TRACE(user);
    const bool isGood = result == "0";
    EXPECT_EQ(text(session.validatePlainTextUser(user, Shredder(password), false)), result);
    EXPECT_EQ(session.statusMessage(),
              isGood ? "" : LocalRpcSession::errorString(static_cast<ValidationResult>(stoi(result))));
    const int number = static_cast<int>(stoul(ntStatus, nullptr, 16));
    EXPECT_EQ(loggedOn(session, user, "example.com", password, 0),
              isGood ? "0 0  16" : "36 " + text(number) + " Logon failure key");
    EXPECT_EQ(outcomeOf([&, &user = user, &password = password] {
                return session.validateKerberosUser(user, password);
              }),
              isGood ? text(session.getUser(user, 0)) : "SystemException 0 failed to validate Kerberos user");
  }
  const std::string challenge = session.getNtlmChallenge("");
  EXPECT_EQ(challenge.size(), 8u);
  const std::string token = challenge + "tbjork" + '\0' + "Stone-bridge-9";
  EXPECT_EQ(session.validateNtlmUser(token)->getName(), "tbjork");
  EXPECT_THROW(session.validateNtlmUser(token), SystemException);  // a challenge is valid once
}

// The peer's effective user decides, not the name in the request.
TEST(StandinOperations, RefuseAdministrationToOtherUsers) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can become another user";
  const Operation kRefused[] = {
      {CALL(setPasswordKrb5("lquispe", Shredder("New-boat-43"))), "10"},
      {CALL(setPassword("lquispe", Shredder("New-boat-43"), "", Shredder())), "10"},
      {CALL(setMachinePassword(Shredder("New-boat-43"))), "10"},
      {CALL(addUserKrb5("plain", Shredder("Fresh-start-1"), "", "", "", "", "", "")), "10"},
      {ASK(thrownBy([&] { session.stop(); })), "SystemException 3 Unsuccesful IPC execute: not authorized"},
      {CALL(validatePlainTextUser("lquispe", Shredder("Paper-boat-42"), false)), "0"},
  };
  constexpr uid_t kNobody = 65534;
  StandinProcess standin;
  std::filesystem::permissions(std::filesystem::path(standin.socket()).parent_path(),
                               std::filesystem::perms(0711));
  ASSERT_EQ(seteuid(kNobody), 0);
  {
    LocalRpcSession session(standin.socket(), false, false);
    for (const Operation& step : kRefused) EXPECT_EQ(step.make(session), step.outcome) << step.name;
  }
  ASSERT_EQ(seteuid(0), 0);
}

}  // namespace
