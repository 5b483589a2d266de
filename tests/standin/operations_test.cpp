// Sessions and the stand-in, whole: every operation over connections good and bad, a large directory, and
// many clients through restarts.

#include <gtest/gtest.h>
#include <lber.h>
#include <ldif.h>
#include <sys/mman.h>
#include <sys/wait.h>
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
#include "tests/support/told.h"

using namespace vesk;
using namespace testsupport;
using vesk::SID;

namespace {

constexpr char kNext[] = "@#";
constexpr auto kTree = static_cast<LdapSearchScopeType>(2);

struct Operation {
  const char* call;
  std::function<std::string(LocalRpcSession&)> make;
  const char* outcome;
  bool resent = true;
};

// Operations with out arguments.

std::string renew(LocalRpcSession& session) {
  int count = -1;
  const std::string result = told([&] { return session.renewCredentials("xbjork", count); });
  return result + " " + text(count);
}

std::string mapDomain(LocalRpcSession& session) {
  std::string first, second;
  const std::string result = told([&] { return session.mapDomain("EXAMPLE", first, second, 0); });
  return result + " " + first + " " + second;
}

std::string samChange(LocalRpcSession& session) {
  int status = -1;
  std::string why;
  const std::string result =
      told([&] { return session.samChangeUserPassword2("nobody", "x", "y", "", "", status, why); });
  return result + " " + text(status) + " " + why;
}

std::string logon(LocalRpcSession& session) {
  int status = -1;
  std::string key, why;
  const std::string result =
      told([&] { return session.netLogonSamLogon("xbjork", "", "Grüne-Lampe-2", 0, key, status, why); });
  return result + " " + text(status) + " " + std::to_string(key.size());
}

std::string health(LocalRpcSession& session) {
  ValidationResult health = VR_VALUE_NOT_SET;
  int a = 0, b = 0;
  std::string why;
  const std::string result = told([&] { return session.systemHealthInfo(true, health, a, b, why); });
  return result + " " + text(health);
}

std::string flushObject(LocalRpcSession& session) {
  ADObject object("CN=x,DC=y");
  return told([&] { return session.flushCache(object); });
}

// clang-format off
#define CALL(...) \
  #__VA_ARGS__, [](LocalRpcSession& session) { return told([&] { return session.__VA_ARGS__; }); }
#define DOMAIN "DC=example,DC=com"
#define USER "CN=Ximena Björk,OU=People,OU=Corp," DOMAIN
#define GROUP "CN=Büro,OU=Groups,OU=Corp," DOMAIN

const SID kUserSid("S-1-5-21-359486819-752017888-1696740182-1246");
const char* kNames[] = {"cn", nullptr};

// Those of the sample directory. None changes what another one gives.
const Operation kOperations[] = {
    {CALL(getObject("xbjork", DSUser, UNIX_ONLY)), USER},
    {CALL(getUserObj("xbjork", 0)), USER},
    {CALL(getGroupObj("Büro", 0)), GROUP},
    {CALL(getUser("xbjork", 0)), USER},
    {CALL(getGroup("Büro", 0)), GROUP},
    {CALL(getUser(kUserSid, 0)), USER},
    {CALL(getObject(kUserSid, 0)), USER},
    {CALL(getUser2("xbjork", 0)), USER},
    {CALL(getGroup2("Büro", 0)), GROUP},
    {CALL(getShadow("xbjork", 0)), USER},
    {CALL(getUserObj("nobody", 0)), "empty"},
    {CALL(getUserObj(12345, 0)), "empty"},
    {CALL(startListUser()), "false"},
    {CALL(startListGroup(true)), "false"},
    {CALL(startListShadow()), "false"},
    {CALL(endListUser()), "false", false},
    {CALL(endListGroup()), "false", false},
    {CALL(endListShadow()), "false", false},
    {CALL(ldapSearch("", "", "(sAMAccountName=xbjork)", kNames, kTree, 0, false)), "1 " USER},
    {CALL(ldapPagedSearch("", "", "(cn=*)", nullptr, kTree, 0, false)), "handle"},
    {CALL(ldapFetch("EXAMPLE", USER, nullptr, false)), USER},
    {CALL(validatePlainTextUser("xbjork", Shredder("Grüne-Lampe-2"), false)), "0"},
    {CALL(validatePlainTextUser("nobody", Shredder(), false)), "1"},
    {CALL(validateKerberosUser("xbjork", "Grüne-Lampe-2")), USER},
    {CALL(getNtlmChallenge("").substr(8)), ""},
    {CALL(validateNtlmUser("")), "SystemException 0 failed to validate NTLM user", false},
    {CALL(validateUserGroup("asharma", {"nest6"}, false, UNIX_NAME | WINDOWS_NAME)), "0"},
    {CALL(getServicePrincipal("DC1", "host")), "HOST/DC1@EXAMPLE.COM"},
    {CALL(userLogin("nobody")), "true", false},
    {CALL(userLogout("nobody")), "true", false},
    {"renewCredentials", renew, "0 0"},
    {CALL(changePassword("nobody", Shredder("x"), Shredder("y"), false)), "1", false},
    {CALL(setPassword("nobody", Shredder("y"), "Administrator", Shredder("Turn-the-key-1"))), "1", false},
    {CALL(setPasswordKrb5("nobody", Shredder("y"))), "1", false},
    {CALL(addUser("xbjork", Shredder("Good-enough-1"), "", "", "", "", "", "", "Administrator", Shredder("Turn-the-key-1"))), "33", false},
    {CALL(addUserKrb5("xbjork", Shredder("Good-enough-1"), "", "", "", "", "", "")), "33", false},
    {CALL(setMachinePassword("linux04", Shredder("Machine-Secret-5"), "", Shredder())), "0"},
    {CALL(setMachinePassword(Shredder("Machine-Secret-5"))), "0"},
    {"netLogonSamLogon", logon, "0 0 16"},
    {"samChangeUserPassword2", samChange, "1 -1073741724 Invalid principal"},
    {CALL(flushCache("xbjork")), "0"},
    {"flushCache(object)", flushObject, "0"},
    {CALL(flushCache(FLUSH_OBJ_CACHE | FLUSH_PMON)), "0"},
    {CALL(networkChange()), "0"},
    {CALL(updateUserPolicy("xbjork")), "User Policy Refresh has completed.", false},
    {CALL(updateMachinePolicy()), "Computer Policy Refresh has completed.", false},
    {CALL(getSystemInfo(3)), "example.com"},
    {CALL(dumpCache("", "", "")), "0"},
    {CALL(samEnabled()), "true"},
    {CALL(samIsSandboxed("xbjork", false)), "false"},
    {CALL(samGetUserRoles("asharma", false)), "1 CN=Release crew,CN=Containers,OU=Corp," DOMAIN},
    {CALL(samGetUserRolesLocal("nobody", 5, 6)), "0"},
    {"mapDomain", mapDomain, "0 example.com EXAMPLE", false},
    {CALL(getADDomain("EXAMPLE")), "example.com", false},
    {CALL(getNtlmDomain("xbjork")), "EXAMPLE", false},
    {CALL(setSessionID("17")), "0"},
    {"systemHealthInfo", health, "0 0"},
};
// clang-format on

// Over connections that are good, slow, and lost before or behind every third request.
TEST(StandinOperations, ComeToTheSameOverBadConnections) {
  for (const char* fault : {"huge@100000", "trickle", "drop%3", "restart%3"}) {
    StandinProcess standin({"--fault", fault});
    LocalRpcSession session(standin.socket(), false, false);
    for (const Operation& operation : kOperations) {
      std::string outcome = operation.make(session);
      const bool lost = outcome.find("ConnectionBrokenException") == 0;
      EXPECT_TRUE(!lost || (!operation.resent && strchr(fault, '%'))) << fault << " " << operation.call;
      if (lost) outcome = operation.make(session);
      EXPECT_EQ(outcome, operation.outcome) << fault << " " << operation.call;
    }
  }
}

// A directory of so many users, in groups of 100, all of which are in one group more. Even users are named by
// their group, odd ones name it themselves.
class LargeDirectory {
 public:
  static constexpr int kUsers = TEST_USERS;
  static constexpr int kGroupSize = 100;

  LargeDirectory() {
    std::ofstream ldif(path());
    ldif << "dn: DC=big,DC=org\nobjectClass: domainDNS\n\n";
    for (int user = 0; user < kUsers; ++user) writeUser(ldif, user);
    for (int group = 0; group < kUsers / kGroupSize; ++group) {
      writeGroup(ldif, group);
      for (int user = group * kGroupSize; user < (group + 1) * kGroupSize; user += 2)
        ldif << "member: " << userDn(user) << "\n";
      ldif << "\n";
    }
    writeGroup(ldif, kAll);
    for (int group = 0; group < kUsers / kGroupSize; ++group) ldif << "member: " << groupDn(group) << "\n";
  }

  static constexpr int kAll = kUsers / kGroupSize;
  std::string path() const { return m_scratch.path("large.ldif"); }

  static std::string userDn(int user) { return "CN=User " + std::to_string(user) + ",DC=big,DC=org"; }
  static std::string groupDn(int group) { return "CN=GROUP" + std::to_string(group) + ",DC=big,DC=org"; }
  static SID sid(int number) { return SID("S-1-5-21-1-2-3-" + std::to_string(number)); }
  static SID groupSid(int group) { return sid(1000000 + group); }
  static Guid guid(int user) {
    Guid guid;
    guid.fromHexValue("0123456789ab" + std::string(reinterpret_cast<const char*>(&user), 4));
    return guid;
  }

 private:
  static void writeBinary(std::ostream& ldif, const char* name, const std::string& bytes) {
    char* line = ldif_put(LDIF_PUT_BINARY, name, bytes.data(), bytes.size());
    ldif << line;
    ber_memfree(line);
  }

  static void writeUser(std::ostream& ldif, int user) {
    const std::string n = std::to_string(user);
    ldif << "dn: " << userDn(user) << "\nobjectClass: user\nuid: u" << n << "\nsAMAccountName: Account" << n
         << "\nuserPrincipalName: p" << n << "@other.org\nuidNumber: " << n << "\n";
    writeBinary(ldif, "objectSid", sid(user).checkedBytes());
    writeBinary(ldif, "objectGUID", std::string(reinterpret_cast<const char*>(guid(user).bytes()), 16));
    if (user % 2) ldif << "memberOf: " << groupDn(user / kGroupSize) << "\n";
    ldif << "\n";
  }

  static void writeGroup(std::ostream& ldif, int group) {
    ldif << "dn: " << groupDn(group) << "\nobjectClass: group\nsAMAccountName: g" << group
         << "\ngidNumber: " << group << "\n";
    writeBinary(ldif, "objectSid", groupSid(group).checkedBytes());
  }

  ScratchDirectory m_scratch;
};

class LargeDirectoryTest : public testing::Test {
 protected:
  using Large = LargeDirectory;

  // Every user that the range holds, by each of its keys, with its groups.
  static void checkUsers(const std::string& socket, int first, int last) {
    EXPECT_EQ(thrownBy([&] { checkEachUser(socket, first, last); }), "nothing");
  }
  static void checkEachUser(const std::string& socket, int first, int last) {
    LocalRpcSession session(socket, false, false);
    for (int user = first; user < last; ++user) {
      const std::string n = std::to_string(user), dn = Large::userDn(user);
      for (const std::string& name : {"u" + n, "BIG\\account" + n, "P" + n + "@other.org", dn})
        ASSERT_EQ(session.getUser(name, 0)->getDN(), dn) << name;
      ASSERT_EQ(session.getUser(user, 0)->getDN(), dn);
      ASSERT_EQ(session.getUser(Large::guid(user), 0)->getDN(), dn);
      const auto found = session.getUser(Large::sid(user), 0);
      ASSERT_EQ(found->getDN(), dn);
      const std::set<SID> groups(found->groupSids().begin(), found->groupSids().end());
      ASSERT_EQ(groups,
                (std::set<SID>{Large::groupSid(user / Large::kGroupSize), Large::groupSid(Large::kAll)}));
    }
  }

  static std::set<std::string> unixNames(int first, int last) {
    std::set<std::string> names;
    for (; first < last; ++first) names.insert("u" + std::to_string(first));
    return names;
  }

  void checkMembers(int group, int first, int last) {
    const std::list<std::string> members = m_session.getGroup(group, 0)->members();
    ASSERT_EQ(members.size(), static_cast<size_t>(last - first));
    ASSERT_EQ(std::set<std::string>(members.begin(), members.end()), unixNames(first, last));
  }

  LargeDirectory m_directory;
  StandinProcess m_standin{{}, m_directory.path()};
  LocalRpcSession m_session{m_standin.socket(), false, false};
};

TEST_F(LargeDirectoryTest, IsListedSearchedAndFoundWhole) {
  const std::set<std::string> all = unixNames(0, Large::kUsers);
  std::set<std::string> listed, paged;
  EXPECT_FALSE(m_session.startListUser());
  EXPECT_THROW(while (true) ASSERT_TRUE(listed.insert(m_session.getUser2(kNext, 0)->unixName()).second),
               EndOfListException);
  EXPECT_FALSE(m_session.endListUser());
  EXPECT_EQ(listed, all);

  auto handle = m_session.ldapPagedSearch("", "", "(objectClass=user)", nullptr, kTree, 999, false);
  for (ADObject user = handle.getNext(); !user.isEmpty(); user = handle.getNext())
    ASSERT_TRUE(paged.insert(User(user).unixName()).second);
  EXPECT_EQ(paged, all);

  for (int group = 0; group < Large::kAll; ++group)
    checkMembers(group, group * Large::kGroupSize, (group + 1) * Large::kGroupSize);
  checkMembers(Large::kAll, 0, Large::kUsers);

  std::vector<std::thread> threads;
  constexpr int kShare = Large::kUsers / 4;
  for (int first = 0; first < Large::kUsers; first += kShare)
    threads.emplace_back(checkUsers, m_standin.socket(), first, first + kShare);
  for (std::thread& thread : threads) thread.join();
}

// What all processes of the test see.
struct Score {
  std::atomic<bool> isOver;
  std::atomic<int> right, wrong, failed;
};

// Asks for this and that until it is over. Whatever comes is right, or a failure that is told.
void askAround(const std::string& socket, Score& score, unsigned number) {
  const size_t count = std::size(kOperations);
  LocalRpcSession session(socket, false, number % 2);
  for (size_t i = number; !score.isOver; ++i) {
    const Operation& operation = kOperations[i % count];
    const std::string outcome = operation.make(session);
    const bool failed = outcome.find("ConnectionBrokenException") == 0 || outcome.find("IOException") == 0 ||
                        outcome.find("38 ") == 0;  // the daemon is not running
    if (outcome != operation.outcome && !failed) ADD_FAILURE() << operation.call << " came to " << outcome;
    ++(outcome == operation.outcome ? score.right : failed ? score.failed : score.wrong);
  }
}

[[noreturn]] void askInThreads(const std::string& socket, Score& score, unsigned number) {
  std::vector<std::thread> threads;
  for (unsigned i = 0; i < 3; ++i) threads.emplace_back(askAround, socket, std::ref(score), 7 * i + number);
  for (std::thread& thread : threads) thread.join();
  fflush(nullptr);
  _exit(testing::Test::HasFailure() ? 1 : 0);
}

TEST(StandinOperations, ManyClientsGetRightAnswersThroughRestarts) {
  constexpr auto kPatience = std::chrono::seconds(20);
  void* shared = mmap(nullptr, sizeof(Score), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  Score& score = *new (shared) Score();
  ScratchDirectory scratch;
  const std::string socket = scratch.path("daemon");
  std::vector<pid_t> children;
  for (unsigned number = 0; number < 3; ++number) {
    children.push_back(fork());
    if (children.back() == 0) askInThreads(socket, score, number);
  }
  for (const int end : {SIGTERM, SIGKILL, SIGTERM, SIGKILL, SIGTERM}) {
    StandinProcess standin({"--socket", socket, "--fault", "restart%97"});
    const int enough = score.right + 500;
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    while (score.right < enough && std::chrono::steady_clock::now() < deadline) usleep(1000);
    EXPECT_GE(score.right, enough);
    standin.signal(end);
    EXPECT_EQ(standin.wait(), end == SIGTERM ? 0 : -1);
  }
  score.isOver = true;
  for (const pid_t child : children) {
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
  }
  EXPECT_EQ(score.wrong, 0);
  EXPECT_GT(score.failed, 0);
  munmap(shared, sizeof(Score));
}

}  // namespace
