// Sessions and the stand-in, whole: every operation over connections good and bad, a large directory, and
// many clients through restarts.

#include <gtest/gtest.h>
#include <lber.h>
#include <ldif.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstring>
#include <fstream>
#include <functional>
#include <set>
#include <thread>

#include "base/guid.h"
#include "lrpc/session.h"
#include "lrpc/shredder.h"
#include "tests/standin/standin_process.h"
#include "tests/support/operations.h"
#include "tests/support/told.h"
#include "util/include/properties.h"

using namespace vesk;
using namespace testsupport;
using vesk::SID;

namespace {

constexpr auto kTree = static_cast<LdapSearchScopeType>(2);

struct Step {
  const char* call;
  std::function<std::string(LocalRpcSession&)> make;
  std::string outcome;
};

// Operations with out arguments, or with many others.

std::string renew(LocalRpcSession& session, const char* user) {
  int count = -1;
  const std::string result = told([&] { return session.renewCredentials(user, count); });
  return result + " " + text(count);
}

std::string mapDomain(LocalRpcSession& session, const char* name) {
  std::string first, second;
  const std::string result = told([&] { return session.mapDomain(name, first, second, 0); });
  return result + " " + first + " " + second;
}

std::string samChange(LocalRpcSession& session, const char* user, const char* wanted) {
  int status = -1;
  std::string why;
  const std::string result =
      told([&] { return session.samChangeUserPassword2(user, wanted, "bad", "", "", status, why); });
  return result + " " + text(status) + " " + why;
}

std::string logon(LocalRpcSession& session, const char* user, const char* domain, const char* token) {
  int status = -1;
  std::string key, why;
  const std::string result =
      told([&] { return session.netLogonSamLogon(user, domain, token, 0, key, status, why); });
  return result + " " + text(status) + " " + std::to_string(key.size());
}

std::string health(LocalRpcSession& session) {
  ValidationResult health = VR_VALUE_NOT_SET;
  int a = 0, b = 0;
  std::string why;
  const std::string result = told([&] { return session.systemHealthInfo(true, health, a, b, why); });
  return result + " " + text(health) + (why.empty() ? "" : " told");
}

std::string add(LocalRpcSession& session, const char* name, const char* uid, const char* container) {
  return told([&] {
    return session.addUser(name, Shredder("Fresh-start-1"), uid, "20000", "New, Person", "/home/new",
                           "/bin/sh", container, "Administrator", Shredder("Turn-the-key-1"));
  });
}

std::string findAdded(LocalRpcSession& session) {
  const auto added = session.getUser(40000, 0);
  const bool isSame = session.getUser(added->getSid(), 0)->getDN() == added->getDN() &&
                      session.getUser(added->getGuid(), 0)->getDN() == added->getDN();
  return (isSame ? "" : "not by SID or GUID: ") + added->unixName() + " " + added->getDN();
}

// clang-format off
#define ASK(...) #__VA_ARGS__, [](LocalRpcSession& session) { return __VA_ARGS__; }
#define CALL(...) ASK(told([&] { return session.__VA_ARGS__; }))
#define DOMAIN "DC=example,DC=com"

#define ROLES ",CN=Containers,OU=Corp," DOMAIN
#define TWO_ROLES "CN=Web operators" ROLES " CN=Release crew" ROLES
#define ALL_ROLES TWO_ROLES " CN=Auditors" ROLES

// One after the other: what is refused, and what changes the directory.
const Step kSteps[] = {
    {ASK(health(session)), "0 0 told"},
    {CALL(getUser("nosuch", 0)), "NotFoundException 0 User not found"},
    {CALL(getUser("", 0)), "NotFoundException 0 User not found"},
    {CALL(getUser("*", 0)), "NotFoundException 0 User not found"},
    {CALL(getUser("Büro", 0)), "NotFoundException 0 User not found"},
    {CALL(getGroup("lquispe", 0)), "NotFoundException 0 Group not found"},
    {CALL(getShadow("rmacdonald", 0)), "NotFoundException 0 User not found"},
    {CALL(getUser("rmacdonald", 0)->isUnix()), "false"},
    {CALL(ldapFetch("", "CN=nosuch", nullptr, false)), " 0 No such object"},
    {CALL(ldapFetch("", "", nullptr, false)["defaultNamingContext"].front()), DOMAIN},
    {CALL(ldapPagedSearch("", "", "(cn=nosuch)", nullptr, kTree, 0, false).getNext()), "empty"},
    {CALL(validateUserGroup("asharma", {"nosuch", "nest6"}, false, UNIX_NAME | WINDOWS_NAME)), "0"},
    {CALL(validateUserGroup("asharma", {"empty"}, false, UNIX_NAME | WINDOWS_NAME)), "45"},
    {CALL(validateUserGroup("asharma", {}, false, UNIX_NAME | WINDOWS_NAME)), "45"},
    {CALL(validateUserGroup("dgruber", {"EXAMPLE\\Büro"}, false, WINDOWS_NAME)), "0"},
    {CALL(validateUserGroup("dgruber", {"EXAMPLE\\Büro"}, false, UNIX_NAME)), "45"},
    {CALL(validateUserGroup("nosuch", {"Büro"}, false, WINDOWS_NAME)), "1"},
    {CALL(userLogin("asharma")), "false"},
    {ASK(renew(session, "asharma")), "0 1"},
    {CALL(userLogout("asharma")), "false"},
    {CALL(userLogout("asharma")), "true"},
    {CALL(getServicePrincipal("linux01.example.com", "nfs")), "nfs/linux01.example.com@EXAMPLE.COM"},
    {CALL(getServicePrincipal("nowhere", "host")), "NotFoundException 0 failed to get canonicalized service principal name"},
    {CALL(getADDomain("nowhere")), " 0 Unknown domain: nowhere"},
    {CALL(getNtlmDomain("nowhere")), " 0 Unknown domain: nowhere"},
    {ASK(mapDomain(session, "nowhere")), "17  "},
    {CALL(samIsSandboxed("asharma", false)), "true"},
    {CALL(samGetUserRoles("all users", false)), "3 " ALL_ROLES},
    {CALL(samGetUserRoles("nosuch", false)), "SystemException 0 could not get roles"},
    {CALL(samGetUserRolesLocal("mabara", 1, 1)), "2 " TWO_ROLES},
    {CALL(samGetUserRolesLocal("all users", 0, 0)), "3 " ALL_ROLES},
    {CALL(updateUserPolicy("nosuch")), "SystemException 17 User not found"},
    {CALL(getSystemInfo(99)), "SystemException 0 could not get sysinfo"},
    {CALL(getSystemInfo(0).substr(0, 45)), "program: brondalt-standin (no product daemon)"},

    {CALL(validatePlainTextUser("mgruber", Shredder(), false)), "2"},
    {CALL(validatePlainTextUser("zsimunek", Shredder(), false)), "2"},  // has no password at all
    {CALL(validatePlainTextUser("mionescu", Shredder("Pass:with:colons-1"), false)), "0"},
    {CALL(changePassword("tbjork", Shredder("wrong"), Shredder("New-stone-10"), false)), "2"},
    {CALL(changePassword("tbjork", Shredder("Stone-bridge-9"), Shredder("short"), false)), "5"},
    {CALL(changePassword("tbjork", Shredder("Stone-bridge-9"), Shredder("Stone-bridge-9"), false)), "5"},
    {CALL(changePassword("tbjork", Shredder("Stone-bridge-9"), Shredder("New-stone-10"), false)), "0"},
    {CALL(validatePlainTextUser("tbjork", Shredder("Stone-bridge-9"), false)), "2"},
    {CALL(validatePlainTextUser("tbjork", Shredder("New-stone-10"), false)), "0"},
    {ASK(samChange(session, "tbjork", "Stone-11-new")), "2 -1073741718 Invalid password"},
    {CALL(changePassword("yfernandezlopez", Shredder("First-day-here-1"), Shredder("Second-day-2"), false)), "0"},
    {CALL(validatePlainTextUser("yfernandezlopez", Shredder("Second-day-2"), false)), "0"},
    {CALL(setPassword("rmacdonald", Shredder("Unlocked-again-1"), "lquispe", Shredder("Paper-boat-42"))), "10"},
    {CALL(setPassword("rmacdonald", Shredder("Unlocked-again-1"), "Administrator", Shredder("wrong"))), "2"},
    {CALL(setPassword("rmacdonald", Shredder("Unlocked-again-1"), "Administrator", Shredder("Turn-the-key-1"))), "0"},
    {CALL(validatePlainTextUser("rmacdonald", Shredder("Unlocked-again-1"), false)), "0"},
    {CALL(validatePlainTextUser("lquispe", Shredder("guess"), false)), "2"},
    {CALL(validatePlainTextUser("lquispe", Shredder("guess"), false)), "2"},
    {CALL(validatePlainTextUser("lquispe", Shredder("guess"), false)), "2"},
    {CALL(validatePlainTextUser("lquispe", Shredder("Paper-boat-42"), false)), "3"},
    {CALL(setPasswordKrb5("lquispe", Shredder("My-lquispe-1"))), "5"},
    {CALL(setPasswordKrb5("lquispe", Shredder("only letters"))), "5"},
    {CALL(setPasswordKrb5("lquispe", Shredder("New-boat-43"))), "0"},
    {CALL(validatePlainTextUser("lquispe", Shredder("New-boat-43"), false)), "0"},
    {CALL(setMachinePassword(Shredder(std::string("\0\xff", 2)))), "0"},
    {CALL(setMachinePassword("lquispe", Shredder("No-computer-1"), "", Shredder())), "1"},
    {ASK(add(session, "new, person", "40000", "OU=People,OU=Corp," DOMAIN)), "0"},
    {ASK(add(session, "lquispe", "40001", "")), "33"},
    {ASK(add(session, "other", "40000", "")), "33"},
    {ASK(add(session, "other", "40x", "")), "33"},
    {ASK(add(session, "other", "", "OU=nowhere")), "24"},
    {ASK(findAdded(session)), "new, person CN=new\\, person,OU=People,OU=Corp," DOMAIN},
    {CALL(validatePlainTextUser("new, person", Shredder("Fresh-start-1"), false)), "0"},
    {CALL(validateUserGroup("new, person", {"Domain Users"}, false, WINDOWS_NAME)), "0"},
    {CALL(addUserKrb5("plain", Shredder("Fresh-start-1"), "", "", "", "", "", "")), "0"},
};
// clang-format on

// Over connections that are good, slow, and lost or spoiled at every third request: whatever is not sent
// again fails in that way then, and comes to the same when it is asked for once more.
TEST(StandinOperations, ComeToTheSameOverBadConnections) {
  Props(false, false)->setString("lrpc.timeout", "1");
  const struct {
    const char *fault, *failure;
  } kRows[] = {
      {"huge@100000", "none"},
      {"trickle", "none"},
      {"stall@3", "none"},
      {"drop%3", "ConnectionBrokenException "},
      {"lose%3", "ConnectionBrokenException "},
      {"short%3", "ConnectionBrokenException "},
      {"cut%3", "ConnectionBrokenException "},
      {"restart%3", "ConnectionBrokenException "},
      {"garbage%3", "IOException 1 ber_scanf failure (received garbled message?)"},
      {"empty%3", "IOException 1 read 0 bytes from IPC: Success"},
      {"refuse%3", "SystemException 3 Unsuccesful IPC execute: not authorized"},
  };
  for (const auto& row : kRows) {
    StandinProcess standin({"--fault", row.fault});
    LocalRpcSession session(standin.socket(), false, false);
    for (const Operation& operation : operations()) {
      if (operation.sent == Sent::InParts) continue;
      std::string outcome = operation.make(session);
      if (operation.sent == Sent::Once && outcome != operation.outcome) {
        EXPECT_EQ(outcome.find(row.failure), 0u) << outcome << row.fault;
        outcome = operation.make(session);
      }
      EXPECT_EQ(outcome, operation.outcome) << row.fault << " " << operation.call;
    }
  }
  Props(false, false)->setString("lrpc.timeout", "300");
}

TEST(StandinOperations, ComeToWhatTheDirectoryHolds) {
  StandinProcess standin;
  LocalRpcSession session(standin.socket(), false, true);
  for (const Step& step : kSteps) EXPECT_EQ(step.make(session), step.outcome) << step.call;
}

TEST(StandinOperations, TellTheStateOfAnAccount) {
  const struct {
    const char *user, *password;
    ValidationResult result;
    unsigned ntStatus;
  } kRows[] = {
      {"lquispe", "Paper-boat-42", VR_SUCCESS, 0},
      {"EXAMPLE\\xbjork", "Grüne-Lampe-2", VR_SUCCESS, 0},
      {"lquispe", "paper-boat-42", VR_INVALID_PASSWORD, 0xC000006A},
      {"nosuch", "x", VR_INVALID_PRINCIPAL, 0xC0000064},
      {"rmacdonald", "Wrong-three-times-1", VR_ACCOUNT_LOCKED, 0xC0000234},
      {"oyilmaz", "Gone-for-good-1", VR_ACCOUNT_DISABLED, 0xC0000072},
      {"dtran", "Was-here-once-1", VR_ACCOUNT_EXPIRED, 0xC0000193},
      {"yfernandezlopez", "First-day-here-1", VR_PASSWORD_EXPIRED, 0xC0000224},
  };
  StandinProcess standin;
  LocalRpcSession session(standin.socket(), false, false);
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.user);
    const bool isGood = row.result == VR_SUCCESS;
    EXPECT_EQ(session.validatePlainTextUser(row.user, Shredder(row.password), false), row.result);
    EXPECT_EQ(session.statusMessage(), isGood ? "" : LocalRpcSession::errorString(row.result));
    EXPECT_EQ(logon(session, row.user, "example.com", row.password),
              isGood ? "0 0 16" : "36 " + text(static_cast<int>(row.ntStatus)) + " 0");
    EXPECT_EQ(
        told([&] { return session.validateKerberosUser(row.user, row.password); }),
        isGood ? text(session.getUser(row.user, 0)) : "SystemException 0 failed to validate Kerberos user");
  }
  const std::string challenge = session.getNtlmChallenge("");
  EXPECT_EQ(challenge.size(), 8u);
  const std::string token = challenge + "tbjork" + '\0' + "Stone-bridge-9";
  EXPECT_EQ(session.validateNtlmUser(token)->getName(), "tbjork");
  EXPECT_THROW(session.validateNtlmUser(token), SystemException);  // a challenge counts once
}

// A directory of so many users, in groups of 100, all of which are in one group more. Even users are named by
// their group, odd ones name it themselves.
constexpr int kUsers = TEST_USERS;
constexpr int kGroupSize = 100;
constexpr int kAll = kUsers / kGroupSize;

std::string userDn(int user) {
  return "CN=User " + std::to_string(user) + ",DC=big,DC=org";
}
std::string groupDn(int group) {
  return "CN=GROUP" + std::to_string(group) + ",DC=big,DC=org";
}
SID userSid(int user) {
  return SID("S-1-5-21-1-2-3-" + std::to_string(user));
}
SID groupSid(int group) {
  return userSid(1000000 + group);
}

std::string entry(const std::string& dn, const SID& sid, const std::string& fields) {
  const std::string bytes = sid.checkedBytes();
  char* line = ldif_put(LDIF_PUT_BINARY, "objectSid", bytes.data(), bytes.size());
  const std::string text = "\ndn: " + dn + "\n" + line + fields;
  ber_memfree(line);
  return text;
}

void writeLargeDirectory(const std::string& path) {
  std::ofstream ldif(path);
  ldif << "dn: DC=big,DC=org\nobjectClass: domainDNS\n";
  for (int user = 0; user < kUsers; ++user) {
    const std::string n = std::to_string(user);
    ldif << entry(userDn(user), userSid(user),
                  "objectClass: user\nuid: u" + n + "\nsAMAccountName: Account" + n +
                      "\nuserPrincipalName: p" + n + "@other.org\nuidNumber: " + n + "\n");
    if (user % 2) ldif << "memberOf: " << groupDn(user / kGroupSize) << "\n";
  }
  for (int group = 0; group <= kAll; ++group) {
    const std::string n = std::to_string(group);
    ldif << entry(groupDn(group), groupSid(group),
                  "objectClass: group\nsAMAccountName: g" + n + "\ngidNumber: " + n + "\n");
    const bool isAll = group == kAll;
    for (int i = 0; i < (isAll ? kAll : kGroupSize); i += isAll ? 1 : 2)
      ldif << "member: " << (isAll ? groupDn(i) : userDn(group * kGroupSize + i)) << "\n";
  }
}

// Every user that the range holds, by each of its keys, with its groups.
void checkUsers(const std::string& socket, int first, int last) {
  LocalRpcSession session(socket, false, false);
  for (int user = first; user < last; ++user) {
    const std::string n = std::to_string(user), dn = userDn(user);
    for (const std::string& name : {"u" + n, "BIG\\account" + n, "P" + n + "@other.org", dn})
      ASSERT_EQ(told([&] { return session.getUser(name, 0); }), dn) << name;
    ASSERT_EQ(told([&] { return session.getUser(user, 0); }), dn);
    const auto found = session.getUser(userSid(user), 0);
    ASSERT_EQ(found->getDN(), dn);
    ASSERT_EQ(std::set<SID>(found->groupSids().begin(), found->groupSids().end()),
              (std::set<SID>{groupSid(user / kGroupSize), groupSid(kAll)}));
  }
}

TEST(StandinOperations, ServeALargeDirectoryWhole) {
  ScratchDirectory scratch;
  writeLargeDirectory(scratch.path("large.ldif"));
  StandinProcess standin({}, scratch.path("large.ldif"));
  LocalRpcSession session(standin.socket(), false, false);
  const auto unixNames = [](int first, int last) {
    std::multiset<std::string> names;
    for (; first < last; ++first) names.insert("u" + std::to_string(first));
    return names;
  };
  std::multiset<std::string> listed, paged;
  EXPECT_FALSE(session.startListUser());
  EXPECT_THROW(while (true) listed.insert(session.getUser2(NEXT_ENTRY, 0)->unixName()), EndOfListException);
  EXPECT_EQ(listed, unixNames(0, kUsers));

  auto handle = session.ldapPagedSearch("", "", "(objectClass=user)", nullptr, kTree, 999, false);
  for (ADObject user = handle.getNext(); !user.isEmpty(); user = handle.getNext())
    paged.insert(User(user).unixName());
  EXPECT_EQ(paged, unixNames(0, kUsers));

  for (int group = 0; group <= kAll; ++group) {
    const std::list<std::string> members = session.getGroup(group, 0)->members();
    const int first = group == kAll ? 0 : group * kGroupSize;
    ASSERT_EQ(std::multiset<std::string>(members.begin(), members.end()),
              unixNames(first, group == kAll ? kUsers : first + kGroupSize));
  }

  std::vector<std::thread> threads;
  for (int first = 0; first < kUsers; first += kUsers / 4)
    threads.emplace_back(checkUsers, standin.socket(), first, first + kUsers / 4);
  for (std::thread& thread : threads) thread.join();
}

// Asks for this and that until it is over. Whatever comes is right, or a failure that is told.
struct Asker {
  const std::string& socket;
  std::atomic<bool> isOver{false};
  std::atomic<int> right{0}, failed{0};

  void operator()(unsigned number) {
    LocalRpcSession session(socket, false, number % 2);
    for (size_t i = number; !isOver; ++i) {
      const Operation& operation = operations()[i % operations().size()];
      const std::string outcome = operation.make(session);
      const bool hasFailed = outcome != operation.outcome && isFailure(operation, outcome);
      EXPECT_TRUE(hasFailed || outcome == operation.outcome) << operation.call << " came to " << outcome;
      ++(hasFailed ? failed : right);
    }
  }
};

TEST(StandinOperations, ManyClientsGetRightAnswersThroughRestarts) {
  constexpr auto kPatience = std::chrono::seconds(20);
  ScratchDirectory scratch;
  const std::string socket = scratch.path("daemon");
  Asker asker{socket};
  std::vector<std::thread> threads;
  for (unsigned i = 0; i < 8; ++i) threads.emplace_back([&asker, i] { asker(7 * i); });
  for (const int end : {SIGTERM, SIGKILL, SIGTERM, SIGKILL, SIGTERM}) {
    StandinProcess standin({"--socket", socket, "--fault", "restart%97"});
    const int enough = asker.right + 500;
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    while (asker.right < enough && std::chrono::steady_clock::now() < deadline) usleep(1000);
    EXPECT_GE(asker.right, enough);
    standin.signal(end);
    EXPECT_EQ(standin.wait(), end == SIGTERM ? 0 : -1);
  }
  asker.isOver = true;
  for (std::thread& thread : threads) thread.join();
  EXPECT_GT(asker.failed, 0);
}

}  // namespace
