// The stand-in as a program, driven by client sessions and by clients that do not behave.

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <fstream>
#include <set>
#include <thread>

#include <gtest/gtest.h>

#include "base/guid.h"
#include "lrpc/adobject.h"
#include "lrpc/attrnames.h"
#include "lrpc/ipc_exception.h"
#include "lrpc/ipc_sockio.h"
#include "lrpc/ipcmessage.h"
#include "lrpc/paged_search.h"
#include "lrpc/session.h"
#include "lrpc/shredder.h"
#include "lrpc/unixviews.h"
#include "standin/directory.h"
#include "standin/unix_profile.h"
#include "tests/standin/standin_process.h"
#include "util/include/error_util.h"
#include "util/include/properties.h"

namespace {

using namespace vesk;
using standin::Directory;
using standin::Entry;
using standin::EntryId;
using standin::EntryKind;

constexpr char kNext[] = "@#";
constexpr auto kSubtree = static_cast<LdapSearchScopeType>(2);
const std::string kSample = TEST_SOURCE_DIR "/standin/sample/";

class StandinTest : public testing::Test {
 protected:
  StandinTest() { m_directory.load(kSample + "accounts.ldif"); }

  Guid guidOf(EntryId id) const {
    Guid guid;
    guid.fromHexValue(m_directory[id].first("objectGUID"));
    return guid;
  }

  Directory m_directory;
  StandinProcess m_standin;
  LocalRpcSession m_session{m_standin.socket(), false, true};
};

TEST_F(StandinTest, FindsEveryAccountAndGroupByEachKey) {
  for (EntryId id = 0; id < m_directory.size(); ++id) {
    const Entry& entry = m_directory[id];
    SCOPED_TRACE(entry.dn());
    std::string account = entry.first(AD_USERNAME);
    vesk::SID sid = standin::toSid(standin::entrySid(entry));
    std::optional<uint32_t> number = standin::unixId(entry);
    if (entry.isAccount()) {
      for (const std::string& name :
           {account, standin::unixName(entry), "EXAMPLE\\" + account, account + "@example.com", entry.dn()})
        EXPECT_EQ(m_session.getUser(name, 0)->getDN(), entry.dn()) << name;
      EXPECT_EQ(m_session.getUser(sid, 0)->getDN(), entry.dn());
      EXPECT_EQ(m_session.getUser(guidOf(id), 0)->getDN(), entry.dn());
      EXPECT_EQ(m_session.getObject(sid, 0)->getType(), 0);
      EXPECT_EQ(m_session.getUserObj(account, UNIX_ONLY).isEmpty(), !number);
      if (number) {
        EXPECT_EQ(m_session.getUser(static_cast<int>(*number), 0)->getDN(), entry.dn());
      }
    } else if (entry.kind() == EntryKind::Group) {
      EXPECT_EQ(m_session.getGroup(account, 0)->getDN(), entry.dn());
      EXPECT_EQ(m_session.getGroup(sid, 0)->getDN(), entry.dn());
      EXPECT_EQ(m_session.getGroup(guidOf(id), 0)->getDN(), entry.dn());
      EXPECT_EQ(m_session.getObject(sid, 0)->getType(), 1);
      if (number) {
        EXPECT_EQ(m_session.getGroup(static_cast<int>(*number), 0)->getDN(), entry.dn());
      }
    } else if (!sid.isNull()) {
      EXPECT_THROW(m_session.getObject(sid, 0), NotFoundException);
    }
  }
  for (const char* name : {"nosuch", "", "Büro", "*"})
    EXPECT_THROW(m_session.getUser(name, 0), NotFoundException);
  EXPECT_THROW(m_session.getGroup("lquispe", 0), NotFoundException);
  EXPECT_THROW(m_session.getShadow("rmacdonald", 0), NotFoundException);  // has no Unix profile
  EXPECT_EQ(m_session.getShadow("lquispe", 0)->getId(), 10060u);
  EXPECT_FALSE(m_session.getUser("rmacdonald", 0)->isUnix());
}

TEST_F(StandinTest, EveryObjectArrivesWithAllItsValues) {
  ADObjectList all = m_session.ldapSearch("", "", "", nullptr, kSubtree, 0, false);
  EXPECT_EQ(all.size(), m_directory.size() + 3);  // and the roles
  for (EntryId id = 0; id < m_directory.size(); ++id) {
    const Entry& entry = m_directory[id];
    SCOPED_TRACE(entry.dn());
    ADObject object = m_session.ldapFetch("example.com", entry.dn(), nullptr, false);
    for (const standin::Attribute& attribute : entry.attributes()) {
      ASSERT_TRUE(object.attributeExists(attribute.name, true)) << attribute.name;
      const ADAttribute& found = object[attribute.name];
      EXPECT_EQ(std::vector<std::string>(found.begin(), found.end()), attribute.values) << attribute.name;
    }
    EXPECT_EQ(object.guid(), guidOf(id));
  }
}

TEST_F(StandinTest, ListsEachKindToItsOwnEnd) {
  std::set<std::string> users, groups, shadows;
  EXPECT_THROW(m_session.getUser2(kNext, 0), IPCException);
  EXPECT_FALSE(m_session.startListUser());
  EXPECT_FALSE(m_session.startListGroup(true));
  // Two listings at once, and other requests between their entries.
  users.insert(m_session.getUser2(kNext, 0)->getDN());
  groups.insert(m_session.getGroup2(kNext, 0)->getDN());
  m_session.getUser("lquispe", 0);
  EXPECT_THROW(while (true) users.insert(m_session.getUser2(kNext, 0)->getDN()), EndOfListException);
  EXPECT_EQ(m_session.statusCode(), 10);
  EXPECT_TRUE(m_session.getUserObj(kNext, 0).isEmpty());
  EXPECT_THROW(while (true) groups.insert(m_session.getGroup2(kNext, 0)->getDN()), EndOfListException);
  EXPECT_FALSE(m_session.startListShadow());
  EXPECT_THROW(while (true) shadows.insert(m_session.getShadow(kNext, 0)->getDN()), NotFoundException);
  EXPECT_FALSE(m_session.endListUser() || m_session.endListGroup() || m_session.endListShadow());
  EXPECT_THROW(m_session.getUserObj(kNext, 0), IPCException);

  std::set<std::string> expectedUsers, expectedGroups, expectedShadows;
  for (EntryId id = 0; id < m_directory.size(); ++id) {
    const Entry& entry = m_directory[id];
    if (entry.kind() == EntryKind::Group) expectedGroups.insert(entry.dn());
    if (entry.kind() != EntryKind::User) continue;
    expectedUsers.insert(entry.dn());
    if (standin::unixId(entry)) expectedShadows.insert(entry.dn());
  }
  EXPECT_EQ(users, expectedUsers);
  EXPECT_EQ(groups, expectedGroups);
  EXPECT_EQ(shadows, expectedShadows);

  EXPECT_FALSE(m_session.startListUser());
  size_t unixOnly = 0;
  EXPECT_THROW(while (true) unixOnly += m_session.getUser2(kNext, UNIX_ONLY)->isUnix(), EndOfListException);
  EXPECT_EQ(unixOnly, shadows.size());
}

TEST_F(StandinTest, SearchesByPagesWithAttributesAndErrors) {
  const char* wanted[] = {"CN", "_Members", nullptr};
  PagedSearchHandle handle = m_session.ldapPagedSearch("EXAMPLE", "OU=Corp,DC=example,DC=com",
                                                       "(objectClass=group)", wanted, kSubtree, 2, false);
  std::set<std::string> names;
  for (ADObject object = handle.getNext(); !object.isEmpty(); object = handle.getNext()) {
    EXPECT_TRUE(names.insert(std::string(object[AD_DN])).second);
    EXPECT_TRUE(object.attributeExists("cn", true));
    EXPECT_FALSE(object.attributeExists("name", false));
  }
  EXPECT_EQ(names.size(), m_session
                              .ldapSearch("", "OU=Corp,DC=example,DC=com", "(objectClass=group)", nullptr,
                                          kSubtree, 0, false)
                              .size());
  EXPECT_TRUE(handle.getNext().isEmpty());
  EXPECT_EQ(m_session.ldapSearch("", "", "(cn=*)", nullptr, kSubtree, 5, false).size(), 5u);
  EXPECT_TRUE(
      m_session.ldapPagedSearch("", "", "(cn=nosuch)", nullptr, kSubtree, 0, false).getNext().isEmpty());

  const struct {
    const char* domain;
    const char* base;
    const char* filter;
    int scope;
  } kBad[] = {{"other", "", "", 2}, {"", "DC=nowhere", "", 2}, {"", "", "(cn=", 2}, {"", "", "", 9}};
  for (const auto& bad : kBad) {
    auto scope = static_cast<LdapSearchScopeType>(bad.scope);
    EXPECT_THROW(m_session.ldapSearch(bad.domain, bad.base, bad.filter, nullptr, scope, 0, false),
                 IPCException);
    EXPECT_THROW(m_session.ldapPagedSearch(bad.domain, bad.base, bad.filter, nullptr, scope, 0, false),
                 IPCException);
  }
  EXPECT_THROW(m_session.ldapFetch("", "CN=nosuch", nullptr, false), IPCException);
  EXPECT_EQ(std::string(m_session.ldapFetch("", "", nullptr, false)[AD_DEFAULT_NAMING_CTX]),
            "DC=example,DC=com");

  // A handle belongs to its connection: the next one does not know it.
  PagedSearchHandle lost = m_session.ldapPagedSearch("", "", "", nullptr, kSubtree, 10, false);
  m_session.dropConnection();
  EXPECT_THROW(lost.getNext(), IPCException);
}

TEST_F(StandinTest, ChecksPasswordsAndTheStateOfAccounts) {
  const struct {
    const char* user;
    const char* password;
    ValidationResult result;
    unsigned ntStatus;
  } kRows[] = {
      {"lquispe", "Paper-boat-42", VR_SUCCESS, 0},
      {"EXAMPLE\\xbjork", "Grüne-Lampe-2", VR_SUCCESS, 0},
      {"lquispe", "paper-boat-42", VR_INVALID_PASSWORD, 0xC000006A},
      {"mgruber", "", VR_INVALID_PASSWORD, 0xC000006A},
      {"nosuch", "x", VR_INVALID_PRINCIPAL, 0xC0000064},
      {"rmacdonald", "Wrong-three-times-1", VR_ACCOUNT_LOCKED, 0xC0000234},
      {"oyilmaz", "Gone-for-good-1", VR_ACCOUNT_DISABLED, 0xC0000072},
      {"dtran", "Was-here-once-1", VR_ACCOUNT_EXPIRED, 0xC0000193},
      {"yfernandezlopez", "First-day-here-1", VR_PASSWORD_EXPIRED, 0xC0000224},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.user);
    EXPECT_EQ(m_session.validatePlainTextUser(row.user, Shredder(row.password), false), row.result);
    EXPECT_EQ(m_session.statusMessage(), row.result ? LocalRpcSession::errorString(row.result) : "");
    std::string key, text;
    int ntStatus = 1;
    ValidationResult logon =
        m_session.netLogonSamLogon(row.user, "example.com", row.password, 0, key, ntStatus, text);
    EXPECT_EQ(logon, row.result ? VR_LOGON_FAILURE : VR_SUCCESS);
    EXPECT_EQ(static_cast<unsigned>(ntStatus), row.ntStatus);
    EXPECT_EQ(key.size(), row.result ? 0u : 16u);
    if (row.result == VR_SUCCESS) {
      EXPECT_EQ(m_session.validateKerberosUser(row.user, row.password)->getName(),
                m_session.getUser(row.user, 0)->getName());
    } else {
      EXPECT_THROW(m_session.validateKerberosUser(row.user, row.password), SystemException);
    }
  }
  std::string challenge = m_session.getNtlmChallenge("");
  EXPECT_EQ(challenge.size(), 8u);
  std::string token = challenge + "tbjork" + '\0' + "Stone-bridge-9";
  EXPECT_EQ(m_session.validateNtlmUser(token)->getName(), "tbjork");
  EXPECT_THROW(m_session.validateNtlmUser(token), SystemException);  // a challenge counts once
}

TEST_F(StandinTest, ChangesPasswordsAndAddsUsers) {
  auto validate = [&](const char* user, const char* password) {
    return m_session.validatePlainTextUser(user, Shredder(password), false);
  };
  auto change = [&](const char* user, const char* old, const char* wanted) {
    return m_session.changePassword(user, Shredder(old), Shredder(wanted), false);
  };
  EXPECT_EQ(change("tbjork", "wrong", "New-stone-10"), VR_INVALID_PASSWORD);
  EXPECT_EQ(change("tbjork", "Stone-bridge-9", "short"), VR_PASSWORD_POLICY);
  EXPECT_EQ(change("tbjork", "Stone-bridge-9", "New-stone-10"), VR_SUCCESS);
  EXPECT_EQ(validate("tbjork", "Stone-bridge-9"), VR_INVALID_PASSWORD);
  EXPECT_EQ(validate("tbjork", "New-stone-10"), VR_SUCCESS);
  EXPECT_EQ(change("yfernandezlopez", "First-day-here-1", "Second-day-2"), VR_SUCCESS);
  EXPECT_EQ(validate("yfernandezlopez", "Second-day-2"), VR_SUCCESS);

  auto reset = [&](const char* admin, const char* password) {
    return m_session.setPassword("rmacdonald", Shredder("Unlocked-again-1"), admin, Shredder(password));
  };
  EXPECT_EQ(reset("lquispe", "Paper-boat-42"), VR_INSUFFICIENT_PERMISSION);
  EXPECT_EQ(reset("Administrator", "wrong"), VR_INVALID_PASSWORD);
  EXPECT_EQ(reset("Administrator", "Turn-the-key-1"), VR_SUCCESS);
  EXPECT_EQ(validate("rmacdonald", "Unlocked-again-1"), VR_SUCCESS);
  EXPECT_EQ(m_session.setPasswordKrb5("rmacdonald", Shredder("Once-more-2")), VR_SUCCESS);
  EXPECT_EQ(m_session.setMachinePassword(Shredder(std::string("\0\xff", 2))), VR_SUCCESS);
  EXPECT_EQ(m_session.setMachinePassword("linux04", Shredder("Machine-Secret-5"), "", Shredder("")),
            VR_SUCCESS);
  EXPECT_EQ(m_session.setMachinePassword("lquispe", Shredder("No-computer-1"), "", Shredder("")),
            VR_INVALID_PRINCIPAL);
  int ntStatus = 0;
  std::string text;
  EXPECT_EQ(m_session.samChangeUserPassword2("tbjork", "Stone-11-new", "bad", "", "", ntStatus, text),
            VR_INVALID_PASSWORD);
  EXPECT_EQ(static_cast<unsigned>(ntStatus), 0xC000006Au);
  EXPECT_EQ(text, "Invalid password");

  auto add = [&](const char* name, const char* uid, const char* container) {
    return m_session.addUser(name, Shredder("Fresh-start-1"), uid, "20000", "New, Person", "/home/new",
                             "/bin/sh", container, "Administrator", Shredder("Turn-the-key-1"));
  };
  EXPECT_EQ(add("new, person", "40000", "OU=People,OU=Corp,DC=example,DC=com"), VR_SUCCESS);
  EXPECT_EQ(add("lquispe", "40001", ""), VR_BAD_PARAMETER);
  EXPECT_EQ(add("other", "40000", ""), VR_BAD_PARAMETER);
  EXPECT_EQ(add("other", "40x", ""), VR_BAD_PARAMETER);
  EXPECT_EQ(add("other", "", "OU=nowhere"), VR_INVALID_CONTAINER);
  boost::shared_ptr<User> added = m_session.getUser(40000, 0);
  EXPECT_EQ(added->unixName(), "new, person");
  EXPECT_EQ(added->getDN(), "CN=new\\, person,OU=People,OU=Corp,DC=example,DC=com");
  EXPECT_EQ(m_session.getUser(added->getSid(), 0)->getDN(), added->getDN());
  EXPECT_EQ(m_session.getUser(added->getGuid(), 0)->getDN(), added->getDN());
  EXPECT_EQ(validate("new, person", "Fresh-start-1"), VR_SUCCESS);
  EXPECT_EQ(m_session.validateUserGroup("new, person", {"Domain Users"}, false, WINDOWS_NAME), VR_SUCCESS);
  EXPECT_EQ(m_session.addUserKrb5("plain", Shredder("Fresh-start-1"), "", "", "", "", "", ""), VR_SUCCESS);
}

TEST_F(StandinTest, AnswersEveryOtherOperation) {
  const int both = UNIX_NAME | WINDOWS_NAME;
  EXPECT_EQ(m_session.validateUserGroup("asharma", {"nosuch", "nest6"}, false, both), VR_SUCCESS);
  EXPECT_EQ(m_session.validateUserGroup("asharma", {"empty"}, false, both), VR_NOT_GROUP_MEMBER);
  EXPECT_EQ(m_session.validateUserGroup("asharma", {}, false, both), VR_NOT_GROUP_MEMBER);
  EXPECT_EQ(m_session.validateUserGroup("dgruber", {"EXAMPLE\\Büro"}, false, WINDOWS_NAME), VR_SUCCESS);
  EXPECT_EQ(m_session.validateUserGroup("dgruber", {"EXAMPLE\\Büro"}, false, UNIX_NAME), VR_NOT_GROUP_MEMBER);
  EXPECT_EQ(m_session.validateUserGroup("nosuch", {"Büro"}, false, both), VR_INVALID_PRINCIPAL);

  EXPECT_FALSE(m_session.userLogin("asharma"));
  int count = 0;
  EXPECT_EQ(m_session.renewCredentials("asharma", count), VR_SUCCESS);
  EXPECT_EQ(count, 1);
  EXPECT_FALSE(m_session.userLogout("asharma"));
  EXPECT_TRUE(m_session.userLogout("asharma"));
  EXPECT_TRUE(m_session.userLogin("nosuch"));

  EXPECT_EQ(m_session.getServicePrincipal("DC1", "host"), "HOST/DC1@EXAMPLE.COM");
  EXPECT_EQ(m_session.getServicePrincipal("linux01.example.com", "nfs"),
            "nfs/linux01.example.com@EXAMPLE.COM");
  EXPECT_THROW(m_session.getServicePrincipal("nowhere", "host"), NotFoundException);
  EXPECT_EQ(m_session.getADDomain("EXAMPLE"), "example.com");
  EXPECT_EQ(m_session.getNtlmDomain("lquispe"), "EXAMPLE");
  EXPECT_THROW(m_session.getADDomain("nowhere"), IPCException);
  EXPECT_THROW(m_session.getNtlmDomain("nowhere"), IPCException);
  std::string first, second;
  EXPECT_EQ(m_session.mapDomain("example.com", first, second, 0), VR_SUCCESS);
  EXPECT_EQ(first + " " + second, "example.com EXAMPLE");
  EXPECT_EQ(m_session.mapDomain("nowhere", first, second, 0), VR_NOT_FOUND);

  EXPECT_TRUE(m_session.samEnabled());
  EXPECT_TRUE(m_session.samIsSandboxed("asharma", false));
  EXPECT_FALSE(m_session.samIsSandboxed("lquispe", false));
  EXPECT_EQ(m_session.samGetUserRoles("asharma", false).size(), 1u);  // by a nested group
  EXPECT_EQ(m_session.samGetUserRoles("all users", false).size(), 3u);
  EXPECT_THROW(m_session.samGetUserRoles("nosuch", false), SystemException);
  EXPECT_EQ(m_session.samGetUserRolesLocal("mabara", 1, 1).size(), 2u);
  EXPECT_TRUE(m_session.samGetUserRolesLocal("root", 0, 0).empty());
  EXPECT_EQ(m_session.samGetUserRolesLocal("all users", 0, 0).size(), 3u);

  EXPECT_EQ(m_session.updateMachinePolicy(), "Computer Policy Refresh has completed.");
  EXPECT_EQ(m_session.updateUserPolicy("asharma"), "User Policy Refresh has completed.");
  EXPECT_THROW(m_session.updateUserPolicy("nosuch"), SystemException);
  ADObject object = m_session.getUserObj("asharma", 0);
  EXPECT_EQ(m_session.flushCache(object), VR_SUCCESS);
  EXPECT_EQ(m_session.flushCache("asharma"), VR_SUCCESS);
  EXPECT_EQ(m_session.flushCache(FLUSH_OBJ_CACHE | FLUSH_PMON), VR_SUCCESS);
  EXPECT_EQ(m_session.networkChange(), VR_SUCCESS);
  EXPECT_EQ(m_session.dumpCache("", "", ""), VR_SUCCESS);
  EXPECT_EQ(m_session.setSessionID("17"), VR_SUCCESS);
  EXPECT_NE(m_session.getSystemInfo(0).find("domain: example.com\n"), std::string::npos);
  EXPECT_EQ(m_session.getSystemInfo(3), "example.com");
  EXPECT_THROW(m_session.getSystemInfo(99), SystemException);
  ValidationResult health = VR_BAD_DATA;
  int a = 0, b = 0;
  std::string text;
  EXPECT_EQ(m_session.systemHealthInfo(true, health, a, b, text), 0);
  EXPECT_EQ(health, VR_SUCCESS);
  EXPECT_NE(text, "");

  EXPECT_TRUE(m_session.processAuthenticated());
  m_session.stop();
  EXPECT_EQ(m_standin.wait(), 0);
  EXPECT_NE(access(m_standin.socket().c_str(), F_OK), 0);
}

TEST(StandinFaults, AreOvercomeByASecondAttemptWhereThereIsOne) {
  Props(false, false)->setString("lrpc.timeout", "1");
  for (const char* fault : {"drop@2", "lose@2", "garbage@2", "empty@2", "short@2", "cut@2", "refuse@2",
                            "restart@2", "stall@2", "trickle"}) {
    SCOPED_TRACE(fault);
    StandinProcess standin({"--fault", fault});
    LocalRpcSession session(standin.socket(), false, false);
    session.ping();
    EXPECT_EQ(session.getUser("lquispe", 0)->getId(), 10060u);
    EXPECT_EQ(session.getGroup("Büro", 0)->getId(), 20002u);
  }
  for (const char* fault : {"drop%1", "garbage", "empty", "short", "refuse"}) {
    SCOPED_TRACE(fault);
    StandinProcess standin({"--fault", fault});
    LocalRpcSession session(standin.socket(), false, false);
    EXPECT_THROW(session.getUser("lquispe", 0), VESKException);
  }
}

TEST(StandinFaults, AChangeWhoseReplyIsLostIsMadeOnceAndReported) {
  StandinProcess standin({"--fault", "lose@1"});
  LocalRpcSession session(standin.socket(), false, false);
  EXPECT_THROW(session.changePassword("tbjork", Shredder("Stone-bridge-9"), Shredder("New-stone-10"), false),
               ConnectionBrokenException);
  EXPECT_EQ(session.validatePlainTextUser("tbjork", Shredder("New-stone-10"), false), VR_SUCCESS);
}

/// A connection without any manners.
class RawClient {
 public:
  explicit RawClient(const std::string& path) : m_fd(socket(AF_UNIX, SOCK_STREAM, 0)) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    EXPECT_EQ(connect(m_fd, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  }
  ~RawClient() { close(m_fd); }
  void send(const std::string& bytes) {
    (void)::send(m_fd, bytes.data(), bytes.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
  }
  void sendFrame(const std::string& message) {
    auto length = static_cast<uint32_t>(message.size());
    send(std::string(reinterpret_cast<const char*>(&length), sizeof length) + message);
  }
  int fd() const { return m_fd; }

 private:
  int m_fd;
};

TEST_F(StandinTest, NoClientDisturbsTheOthers) {
  const std::string header = std::string("\x30\x84\0\0\0\x06\x02\x01", 8);
  std::vector<std::unique_ptr<RawClient>> clients;
  auto next = [&]() -> RawClient& {
    clients.push_back(std::make_unique<RawClient>(m_standin.socket()));
    return *clients.back();
  };
  next();                                         // says nothing
  next().send("\x0c");                            // stops inside the length
  next().send(std::string("\x0c\0\0\0\x30", 5));  // and inside the message
  next().send(std::string(4, '\0'));
  next().send("\xff\xff\xff\xff");
  next().sendFrame("no BER at all");
  next().sendFrame(std::string(1 << 16, '\x30'));
  // Every opcode, also unknown ones, without its fields, with wrong ones and with absurd counts.
  for (int opcode = 0; opcode < 128; ++opcode) {
    if (opcode == IPC_OP_STOP) continue;
    std::string request = header + static_cast<char>(opcode) + std::string("\x02\x01\0", 3);
    for (const std::string& body : {std::string(), std::string("\x02\x01\x00", 3), std::string("\x04\x7fxyz"),
                                    std::string("\x02\x04\x7f\xff\xff\xff\x30\x84\xff\xff\xff\xff")})
      next().sendFrame(request + body);
    if (clients.size() > 100) clients.clear();
  }
  // A client that asks for everything and reads nothing.
  IPCRequest search(IPC_OP_LDAP_SEARCH);
  ((search += std::string()) += std::string()) += std::string();
  (((search += static_cast<const char**>(nullptr)) += 2) += 0) += 0;
  RawClient& deaf = next();
  for (int i = 0; i < 50; ++i) search.send(deaf.fd());

  EXPECT_EQ(m_session.getUser("lquispe", 0)->getId(), 10060u);
  // The first one is still served when it comes to its senses.
  clients.front()->send("");
  RawClient patient(m_standin.socket());
  const std::string ping = std::string("\x0c\0\0\0", 4) + header + std::string("\0\x02\x01\0", 4);
  for (char byte : ping) patient.send(std::string(1, byte));
  IPCReply reply;
  reply.get(patient.fd());
  EXPECT_EQ(reply.opcode(), IPC_OP_PING);
  EXPECT_EQ(reply.result(), IPC_SUCCESS);
}

TEST(Standin, ServesManyAtOnceWithRestartsBetween) {
  StandinProcess standin({"--fault", "restart%101"});
  std::atomic<int> right{0}, wrong{0}, failed{0};
  auto ask = [&] {
    LocalRpcSession session(standin.socket(), false, false);
    for (int i = 0; i < 300; ++i) {
      try {
        bool isRight = i % 2 ? session.getUser("lquispe", 0)->getId() == 10060u
                             : session.getGroup(20002, 0)->unixName() == "Büro";
        ++(isRight ? right : wrong);
      } catch (const NotFoundException&) {
        ++wrong;
      } catch (const Base_Exception&) {
        ++failed;  // away for a moment, at the second attempt too
      }
    }
  };
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) threads.emplace_back(ask);
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
  EXPECT_EQ(right + failed, 1200);
  EXPECT_GT(right, 600);
}

TEST(Standin, ServesTwentyThousandAccounts) {
  constexpr int kCount = 20000;
  constexpr int kGroupSize = 500;
  ScratchDirectory scratch;
  std::ofstream ldif(scratch.path("many.ldif"));
  ldif << "dn: DC=big,DC=org\nobjectClass: domainDNS\n\n";
  for (int i = 0; i < kCount; ++i)
    ldif << "dn: CN=User " << i << ",DC=big,DC=org\nobjectClass: user\ncn: User " << i << "\nuid: u" << i
         << "\nsAMAccountName: Account" << i << "\nuserPrincipalName: p" << i
         << "@other.org\nuidNumber: " << i << "\nmemberOf: CN=Group " << i / kGroupSize
         << ",DC=big,DC=org\n\n";
  for (int i = 0; i < kCount / kGroupSize; ++i)
    ldif << "dn: CN=Group " << i << ",DC=big,DC=org\nobjectClass: group\nsAMAccountName: g" << i << "\n\n";
  ldif.close();
  StandinProcess standin({}, scratch.path("many.ldif"));
  LocalRpcSession session(standin.socket(), false, false);

  EXPECT_FALSE(session.startListUser());
  for (int i = 0; i < kCount; ++i) ASSERT_EQ(session.getUser2(kNext, 0)->getId(), static_cast<unsigned>(i));
  EXPECT_THROW(session.getUser2(kNext, 0), EndOfListException);
  // Each user by one of its keys, in turn.
  for (int i = 0; i < kCount; ++i) {
    std::string n = std::to_string(i);
    const std::string names[] = {"u" + n, "BIG\\account" + n, "P" + n + "@other.org",
                                 "account" + n + "@big.org"};
    ASSERT_EQ((i % 5 == 4 ? session.getUser(i, 0) : session.getUser(names[i % 5], 0))->getName(),
              "Account" + n);
  }
  for (int i = 0; i < kCount / kGroupSize; ++i)
    ASSERT_EQ(session.getGroup("g" + std::to_string(i), 0)->members().size(),
              static_cast<size_t>(kGroupSize));
  PagedSearchHandle handle =
      session.ldapPagedSearch("", "", "(objectClass=user)", nullptr, kSubtree, 999, false);
  std::set<std::string> seen;
  for (ADObject object = handle.getNext(); !object.isEmpty(); object = handle.getNext())
    ASSERT_TRUE(seen.insert(std::string(object["uid"])).second);
  EXPECT_EQ(seen.size(), static_cast<size_t>(kCount));
}

TEST(StandinProgram, ExplainsItselfAndItsFailures) {
  const std::string ldif = kSample + "accounts.ldif";
  ScratchDirectory scratch;
  StandinProcess other;
  const struct {
    std::vector<std::string> arguments;
    int status;
    std::string message;
  } kRows[] = {
      {{"--ldif", ldif}, 2, "--socket is missing"},
      {{"--socket", "x"}, 2, "--ldif is missing"},
      {{"--wrong"}, 2, "there is no option --wrong"},
      {{"--socket"}, 2, "--socket needs a value"},
      {{"--socket", "x", "--ldif", ldif, "more"}, 2, "unexpected argument more"},
      {{"--fault", "explode"}, 2, "there is no fault \"explode\""},
      {{"--fault", "drop@0"}, 2, "is not 1 or more"},
      {{"--socket", scratch.path("s"), "--ldif", "/nowhere"}, 4, "/nowhere: No such file or directory"},
      {{"--socket", other.socket(), "--ldif", ldif}, 4, "Address already in use"},
      {{"--socket", std::string(200, 'x'), "--ldif", ldif}, 4, "empty or too long"},
  };
  for (const auto& row : kRows) {
    ProgramResult result = runStandin(row.arguments);
    EXPECT_EQ(result.status, row.status) << row.message;
    EXPECT_NE(result.errors.find(row.message), std::string::npos) << result.errors;
    EXPECT_EQ(result.output, "");
  }
  ProgramResult help = runStandin({"--help"});
  EXPECT_EQ(help.status, 0);
  EXPECT_NE(help.output.find("no product daemon"), std::string::npos);
  EXPECT_NE(help.output.find("trickle"), std::string::npos);
}

TEST(StandinProgram, GoesToTheBackgroundAndReplacesALeftoverSocket) {
  ScratchDirectory scratch;
  std::string path = scratch.path("daemon");
  const std::vector<std::string> arguments = {
      "--socket", path, "--ldif", kSample + "accounts.ldif", "--pid-file", scratch.path("pid")};
  for (int signal : {SIGKILL, SIGTERM}) {
    ProgramResult result = runStandin(arguments);
    EXPECT_EQ(result.status, 0) << result.errors;
    EXPECT_EQ(result.output, "ready\n");
    LocalRpcSession session(path, false, false);
    EXPECT_NO_THROW(session.ping());
    pid_t pid = 0;
    std::ifstream(scratch.path("pid")) >> pid;
    ASSERT_GT(pid, 1);
    EXPECT_EQ(kill(pid, signal), 0);
    // Its connection ends with it.
    char byte;
    RecvWait(session.socket(), 1);
    while (recv(session.socket(), &byte, 1, 0) > 0) {
    }
    EXPECT_EQ(access(path.c_str(), F_OK) == 0, signal == SIGKILL);
  }
}

}  // namespace
