// Every operation of the session: the bytes that it sends, whether they are sent again when the connection is
// lost, and what each answer comes to.

#include <fokrazo/adserializer.h>
#include <fokrazo/attrnames.h>
#include <fokrazo/fixed_paths.h>
#include <fokrazo/session.h>
#include <fokrazo/shredder.h>
#include <fokrazo/strutil.h>
#include "tests/support/out_arguments.h"
#include "tests/support/outcome_text.h"
#include "tests/support/session_test.h"

using namespace vesk;
using namespace testsupport;

namespace {

struct Answer {
  std::string message;
  std::string outcome;  // what the call returns or throws, then its out arguments
  std::string logged{};
};
using Answers = std::vector<Answer>;

struct Operation {
  const char* call;
  std::string (*make)(LocalRpcSession& session);  // returns the outcome
  std::string request;
  bool resent;
  Answers answers;          // the first is that of success
  std::string untouched{};  // the out arguments where no answer came
  std::string logged{};
};
using Operations = std::vector<Operation>;

std::string i(int value) {
  return integer(value);
}
std::string s(const std::string& bytes) {
  return octets(bytes);
}

Answers operator+(Answers some, const Answers& more) {
  some.insert(some.end(), more.begin(), more.end());
  return some;
}

const std::string kDn = "CN=al,DC=x";
const std::string kObject = object(kDn);
const std::string kBinary("p\0\xff%s\n", 6);
const Shredder kSecret(kBinary);
const Shredder kLong(std::string(1 << 20, '\x80'));
const char* kNames[] = {"cn", "", nullptr};
const std::string kSystem = "SystemException 0 ";
const std::string kNull = kSystem + "Null adobject";
const std::string kNoUser = "NotFoundException 0 User not found";
const std::string kNoGroup = "NotFoundException 0 Group not found";
const SID kSid("S-1-5-32-544");
const std::string kSidKey = hex("0410 01 02 000000000005 20000000 20020000");
const Guid kGuid(reinterpret_cast<const unsigned char*>("0123456789abcdef"), 16);
const std::string kGuidKey = s("0123456789abcdef");
const std::string kIdKey = hex("0202 fe0c");
const std::string kUnread = "IOException 0 ber_scanf ";
const std::string kDebug = "DEBUG lrpc.session ";
const std::string kRemote = i(3) + s("no such base");
const std::string kRemoteText = " 0 no such base";  // such an exception has no class text

// The usual answers: a result that is returned, one that is true on failure, a value with one exception for
// every failure, and a value with the daemon's own exceptions.
const Answers kResult = {{answer(0), "0"}, {answer(2), "2"}, {answer(14, kRemote), "14"}, {reply(0), "11"}};
const Answers kFailure = {
    {answer(0), "false"}, {answer(17), "true"}, {answer(17, kRemote), "true"}, {reply(0), "true"}};

Answers value(const std::string& fields, const std::string& told, const std::string& failure) {
  return {
      {answer(0, fields), told}, {answer(2), failure}, {answer(2, kRemote), failure}, {reply(0), failure}};
}
Answers value(const std::string& fields, const std::string& told) {
  const std::string none = kUnread + "IPCException::decode";
  return {
      {answer(0, fields), told}, {answer(33, kRemote), kRemoteText}, {answer(33), none}, {reply(0), none}};
}

std::string flushObject(LocalRpcSession& session) {
  std::string blob = kObject.substr(2);
  ADObject object(blob.size(), &blob[0], false, nullptr);
  return text(session.flushCache(object));
}

// clang-format off
#define ASK(...) #__VA_ARGS__, [](LocalRpcSession& session) { return __VA_ARGS__; }
#define CALL(...) ASK(outcomeOf([&] { return session.__VA_ARGS__; }))

// A lookup's header is the object's type, scope, kind of key, whether to ask the directory first, memberships.
std::string lookup(int opcode, const char* header, const std::string& key) {
  std::string body;
  for (const char byte : hex(header)) body += i(byte);
  return request(opcode, body + key);
}

// By name the daemon's own exceptions come through; `none` is for all that is not found otherwise.
Answers named(const std::string& none, const std::string& emptied) {
  return {{answer(0, kObject), kDn}, {answer(17), none}, {answer(13, kRemote), kRemoteText}, {reply(0), none}, {answer(0, s("")), emptied}};
}
Answers keyed(const std::string& none, const std::string& emptied) {
  return value(kObject, kDn, none) + Answers{{answer(0, s("")), emptied}};
}
Answers listed(const std::string& none) {
  return named(none, kNull) + Answers{{reply(0, status(42, 10)), "EndOfListException 0 End of list"}};
}

constexpr int kBoth = CHECK_AD_FIRST | GROUP_MEMBERSHIP;
const Answers kEmpty = named("empty", "empty");

const Operations kLookups = {
    {CALL(getObject("al", DSShadow, kBoth)),    lookup(11, "0202000101", s("al")), true,  kEmpty},
    {CALL(getObject("al", DSUser, UNIX_ONLY)),  lookup(11, "0000000000", s("al")), true,  kEmpty},
    {CALL(getObject("@#", DSUser, UNIX_NAME)),  lookup(11, "0002000000", s("@#")), false, kEmpty},
    {CALL(getUserObj("al", kBoth)),             lookup(11, "0002000101", s("al")), true,  kEmpty},
    {CALL(getGroupObj("al", CHECK_AD_FIRST)),   lookup(11, "0102000100", s("al")), true,  kEmpty},
    {CALL(getUserObj(-500, kBoth)),             lookup(11, "0000020101", kIdKey),  true,  keyed("empty", "empty")},
    {CALL(getGroupObj(-500, kBoth)),            lookup(11, "0100020101", kIdKey),  true,  keyed("empty", "empty")},
    {CALL(getUser("al", kBoth)),                lookup(11, "0002000101", s("al")), true,  named(kNoUser, kNoUser)},
    {CALL(getGroup("al", kBoth)),               lookup(11, "0102000101", s("al")), true,  named(kNoGroup, kNoGroup)},
    {CALL(getUser(-500, kBoth)),                lookup(11, "0000020101", kIdKey),  true,  keyed(kNoUser, kNoUser)},
    {CALL(getGroup(-500, kBoth)),               lookup(11, "0100020101", kIdKey),  true,  keyed(kNoGroup, kNoGroup)},
    {CALL(getUser(kSid, kBoth)),                lookup(11, "0002030101", kSidKey), true,  keyed(kNoUser, kNull)},
    {CALL(getGroup(kSid, UNIX_ONLY)),           lookup(11, "0100030000", kSidKey), true,  keyed("NotFoundException 0 Object not found", kNull)},
    {CALL(getUser(kGuid, kBoth)),               lookup(11, "0002010101", kGuidKey), true, keyed(kNoUser, kNull)},
    {CALL(getGroup(kGuid, kBoth)),              lookup(11, "0102010101", kGuidKey), true, keyed(kNoGroup, kNull)},
    {CALL(getUser2("al", kBoth)),               lookup(12, "0002000101", s("al")), true,  listed(kNoUser)},
    {CALL(getGroup2("@#", UNIX_ONLY)),          lookup(12, "0100000000", s("@#")), false, listed(kNoGroup)},
    {CALL(getShadow("al", kBoth)),              lookup(11, "0200000100", s("al")), true,  keyed(kNoUser, kNull)},
    {CALL(getShadow("@#", 0)),                  lookup(11, "0200000000", s("@#")), false, keyed(kNoUser, kNull)},
};

const std::string kSearch = s("D") + s("OU=x") + s("(cn=*)") + sequence(s("cn") + s("")) + i(2) + i(9) + i(1);
const std::string kSearchAll = s("") + s("") + s("") + sequence("") + i(0) + i(-1) + i(0);
const Answers kLists = value(i(2) + kObject + kObject, "2 " + kDn + " " + kDn) + Answers{
    {answer(0, i(0)), "0"},
    {answer(0, i(-1) + kObject), "0"},
    {answer(0, i(2) + s("") + kObject), "2 empty " + kDn},
    {answer(0, i(0x7fffffff) + kObject), kUnread + "adobj"},
    {answer(33, i(6) + s("x")), " 0 Unknown error"}};

const Operations kSearches = {
    {CALL(startListUser()),                                   request(13, i(0) + i(0) + i(0)), true,  kFailure},
    {CALL(startListGroup(false)),                             request(13, i(1) + i(0) + i(0)), true,  kFailure},
    {CALL(startListGroup(true)),                              request(13, i(1) + i(0) + i(1)), true,  kFailure},
    {CALL(startListShadow()),                                 request(13, i(2) + i(0) + i(0)), true,  kFailure},
    {CALL(endListUser()),                                     request(14, i(0) + i(0)),        false, kFailure},
    {CALL(endListGroup()),                                    request(14, i(1) + i(0)),        false, kFailure},
    {CALL(endListShadow()),                                   request(14, i(2) + i(0)),        false, kFailure},
    {CALL(ldapSearch("D", "OU=x", "(cn=*)", kNames, ScopeSubtree, 9, true)), request(16, kSearch),    true, kLists},
    {CALL(ldapSearch("", "", "", nullptr, ScopeBase, -1, false)), request(16, kSearchAll),         true, kLists},
    {CALL(ldapPagedSearch("D", "OU=x", "(cn=*)", kNames, ScopeSubtree, 9, true)), request(22, kSearch), true,
     value(i(7), "handle") + Answers{{answer(0), kUnread + "int"}}},
    {CALL(ldapFetch("D", kDn, kNames, true)), request(21, s("D") + s(kDn) + sequence(s("cn") + s("")) + i(1)), true,
     value(kObject, kDn) + Answers{{answer(0, s("")), "empty"}}},
};

const std::string kGroups = s("al") + i(2) + s("a") + s("");
const std::string kRenewed = kDebug + "O:LRPC::renewCredentials user=al ";

const Operations kLogins = {
    {CALL(validatePlainTextUser("al", kSecret, true)),   request(3, s("al") + s(kBinary) + i(1)), true, kResult},
    {CALL(validatePlainTextUser(kLong, kLong, false)),   request(3, s(kLong) + s(kLong) + i(0)),  true, kResult},
    {CALL(validateKerberosUser("al", kBinary)),          request(4, s("al") + s(kBinary)),        true,
     value(kObject, kDn, kSystem + "failed to validate Kerberos user") + Answers{{answer(0, s("")), kNull}}},
    {CALL(getNtlmChallenge(kBinary)),                    request(5, s(kBinary)),                  true,
     value(s(kBinary), kBinary, kSystem + "failed to get NLTM challenge")},
    {CALL(validateNtlmUser("")),                         request(6, s("")),                       false,
     value(kObject, kDn, kSystem + "failed to validate NTLM user")},
    {CALL(validateUserGroup("al", {"a", ""}, true, 0)),                          request(10, kGroups + i(1) + i(1)), true, kResult},
    {CALL(validateUserGroup("al", {"a", ""}, false, UNIX_NAME | UNIX_ONLY)),     request(10, kGroups + i(0) + i(0)), true, kResult},
    {CALL(validateUserGroup("al", {"a", ""}, false, WINDOWS_NAME)),              request(10, kGroups + i(0) + i(1)), true, kResult},
    {CALL(validateUserGroup("al", {"a", ""}, false, UNIX_NAME | WINDOWS_NAME)),  request(10, kGroups + i(0) + i(2)), true, kResult},
    {CALL(validateUserGroup("", {}, false, 0)),          request(10, s("") + i(0) + i(0) + i(1)), true, kResult},
    {CALL(getServicePrincipal("HOST.X.Org", "NFS")),     request(20, s("NFS/host.x.org")),        true,
     value(s("nfs/h@X"), "nfs/h@X", "NotFoundException 0 failed to get canonicalized service principal name")},
    {CALL(userLogin("al")),                              request(25, s("al")), false, kFailure},
    {CALL(userLogout("al")),                             request(26, s("al")), false, kFailure},
    {ASK(renewed(session, "al")),                    request(42, s("al")), true,
     {{answer(0, i(3)),  "0 3",  kRenewed + "(count=3) (rc=0)\n"},
      {answer(14, i(3)), "14 5", kRenewed + "(count=5) (rc=14)\n"},
      {answer(0),        kUnread + "int 5"}},
     " 5", kDebug + "I:LRPC::renewCredentials - user=al\n"},
};

const std::string kSix = s("1") + s("2") + s("3") + s("4") + s("5") + s("");
const std::string kMachine = kDebug + "LocalRpcSession::setMachinePassword returns ";
const Answers kMachineResult = {{answer(0), "0", kMachine + "(0)\n"}, {answer(10), "10", kMachine + "(10)\n"}};
const std::string kLoggedOn = kDebug + "O:LRPC::netLogonSamLogon - user=al ";
const std::string kChanged = kDebug + "O:LRPC::samChangeUserPassword - user=al ";
const std::string kRefused = reply(0, status(36, 0, static_cast<int>(0xC000006D), "Logon failure"));

const Operations kChanges = {
    {CALL(changePassword("al", kSecret, Shredder(), true)),   request(7, s("al") + s(kBinary) + s("") + i(1)),          false, kResult},
    {CALL(setPassword("al", kSecret, "root", kLong)),         request(8, s("al") + s(kBinary) + s("root") + s(kLong)),  false, kResult},
    {CALL(setPasswordKrb5("al", kSecret)),                    request(9, s("al") + s(kBinary)),                         false, kResult},
    {CALL(addUser("al", kSecret, "1", "2", "3", "4", "5", "", "root", kSecret)),
     request(18, s("al") + s(kBinary) + kSix + s("root") + s(kBinary)), false, kResult},
    {CALL(addUserKrb5("al", kSecret, "1", "2", "3", "4", "5", "")), request(18, s("al") + s(kBinary) + kSix),           false, kResult},
    {CALL(setMachinePassword("al", kSecret, "root", kSecret)), request(29, s("al") + s(kBinary) + s("root") + s(kBinary)), true, kMachineResult},
    {CALL(setMachinePassword(kSecret)),                       request(29, s("") + s(kBinary) + s("") + s("")),          true, kMachineResult},
    {ASK(loggedOn(session, "al", kBinary, "", 0xffffffff)),                               request(36, s("al") + s(kBinary) + s("") + i(-1)),        true,
     {{answer(0, s(kBinary)), "0 0  " + kBinary,                    kLoggedOn + "(rc=0) (ntStatus=0x0)\n"},
      {kRefused,              "36 -1073741715 Logon failure key",   kLoggedOn + "(rc=36) (ntStatus=0xc000006d)\n"},
      {reply(0),              "11 0  key",                          kLoggedOn + "(rc=11) (ntStatus=0x0)\n"},
      {answer(0),             kUnread + "string 0  key"}},
     " 0 why key", kDebug + "I:LRPC::netLogonSamLogon - user=al\n"},
    {ASK(samChanged(session, "al", "1", kBinary, "", "4")),                request(38, s("al") + s("1") + s(kBinary) + s("") + s("4")), true,
     {{answer(0), "0 0 ",                         kChanged + "(rc=0) (ntStatus=0x0)\n"},
      {kRefused,  "36 -1073741715 Logon failure", kChanged + "(rc=36) (ntStatus=0xc000006d)\n"}},
     " 0 why", kDebug + "I:LRPC::samChangeUserPassword2 - user=al\n"},
};

Answers refreshed(const std::string& done) {
  return {{answer(0),                                             done},
          {reply(0, status(0, 0, 5, "as you wish")),              "as you wish"},
          {reply(0, status(14, 0, 0, "5% joined")),               "5% joined"},
          {answer(14),                                            done},
          {reply(0),                                              done},
          {answer(9),                                             "SystemException 9 Unknown error"},
          {reply(0, status(9, 0, 77)),                            "SystemException 77 Unknown error"},
          {reply(0, status(9, 0, -5, "100%% of %s, %n%")),        "SystemException -5 100% of %s, %n%"},
          {reply(0, status(9, 0, 0, std::string(600, 'x'))),      "SystemException 9 " + std::string(511, 'x')}};
}

Answers yes(const std::string& failure) {
  return value(i(-1), "true", kSystem + failure) + Answers{{answer(0, i(0)), "false"}};
}

const std::string kNoRoles = kSystem + "could not get roles";

const Operations kAdministration = {
    {CALL(flushCache("al")),                               request(24, s("") + i(1) + s("al")),        true,  kResult},
    {"flushCache(object)", flushObject,                    request(24, kObject + i(1) + s("")),        true,  kResult},
    {CALL(flushCache(FLUSH_DNS_CACHE | FLUSH_AUTH_STORE)), request(24, s("") + i(6) + s("")),          true,  kResult},
    {CALL(flushCache(0xffffffffu)),                        request(24, s("") + i(-1) + s("")),         true,  kResult},
    {CALL(networkChange()),                                request(40),                                true,  kResult},
    {CALL(updateUserPolicy("al")),                         request(17, i(1) + s("al")),                false, refreshed("User Policy Refresh has completed.")},
    {CALL(updateMachinePolicy()),                          request(17, i(0)),                          false, refreshed("Computer Policy Refresh has completed.")},
    {CALL(getSystemInfo(0x80000000)),                      request(41, i(INT32_MIN)),                  true,  value(s("up"), "up", kSystem + "could not get sysinfo")},
    {CALL(dumpCache("a", "", "c")),                        request(43, s("a") + s("") + s("c")),       true,  kResult},
    {CALL(samEnabled()),                                   request(47),                                true,  yes("could do sandbox test")},
    {CALL(samIsSandboxed("al", true)),                     request(46, s("al") + i(1)),                true,  yes("could do sandbox test")},
    {CALL(samGetUserRoles("al", false)),                   request(44, s("al") + i(0)),                true,  value(i(1) + kObject, "1 " + kDn, kNoRoles)},
    {CALL(samGetUserRolesLocal("al", 5, 4294967295u)),     request(45, s("al") + s("5") + s("4294967295")), true, value(i(1) + s(""), "1 empty", kNoRoles)},
    {CALL(samGetUserRolesLocal("all users", 5, 6)),        request(45, s("all users")),                true,  value(i(0), "0", kNoRoles)},
    {ASK(mapped(session, "X", 0xffffffff)),                        request(28, s("X") + i(-1)),                false,
     {{answer(0, s("x.org") + s("")),   "0 x.org "},
      {answer(17, s("x.org") + s("X")), "17 first second"},
      {answer(0, s("x.org")),           kUnread + "string first second"}},
     " first second"},
    {CALL(getADDomain("X")),                               request(39, s("X")),                        false, value(s("x.org"), "x.org")},
    {CALL(getNtlmDomain("x.org")),                         request(27, s("x.org")),                    false, value(s("X"), "X")},
    {CALL(setSessionID("17")),                             request(2, s("17")),                        true,  kResult},
};
// clang-format on

class OperationsTest : public SessionTest {
 protected:
  std::string make(const Operation& operation) {
    forgetLog();
    return outcomeOf([&] { return operation.make(session()); });
  }

  void checkAnswers(const Operation& operation) {
    for (const Answer& each : operation.answers) {
      peer().expect(operation.request).send(each.message);
      EXPECT_EQ(make(operation), each.outcome);
      EXPECT_TRUE(isLogged(operation.logged)) << logged();
      EXPECT_TRUE(isLogged(each.logged)) << logged();
    }
  }

  void checkCarrier(const Operation& operation) {
    const Answer& good = operation.answers[0];
    peer().accept().expect(operation.request).hangUp();
    if (operation.resent) {
      peer().accept().expect(operation.request).send(good.message);
      EXPECT_EQ(make(operation), good.outcome);
      ASSERT_TRUE(peer().finished());
      for (int attempt = 0; attempt < 2; ++attempt) peer().accept().expect(operation.request).hangUp();
      session().dropConnection();
    }
    const std::string failure = make(operation);
    EXPECT_EQ(failure.find("ConnectionBrokenException"), 0u) << failure;
    EXPECT_EQ(failure.substr(failure.size() - operation.untouched.size()), operation.untouched);
    EXPECT_TRUE(good.logged.empty() || !isLogged(good.logged));
    EXPECT_TRUE(peer().finished());
  }

  // A reply whose body ends anywhere is never taken for a whole one.
  void checkCutReplies(const Operation& operation) {
    const Answer& good = operation.answers[0];
    const bool hasFields = good.message.size() > answer(0).size();
    for (size_t size = reply(0).size(); size < good.message.size(); ++size) {
      peer().expect(operation.request).send(good.message.substr(0, size));
      const std::string outcome = make(operation);
      EXPECT_TRUE(!hasFields || outcome != good.outcome) << size;
    }
  }
};

TEST_F(OperationsTest, SendTheirFieldsAndTakeEachAnswer) {
  for (const Operations* family : {&kLookups, &kSearches, &kLogins, &kChanges, &kAdministration})
    for (const Operation& operation : *family) {
      SCOPED_TRACE(operation.call);
      session().dropConnection();
      peer().accept();
      checkAnswers(operation);
      if (operation.request.size() < kLong.size()) checkCutReplies(operation);
      ASSERT_TRUE(peer().finished());
      session().dropConnection();
      checkCarrier(operation);
    }
}

TEST_F(OperationsTest, TheCategoryOfASidDecidesTheView) {
  const struct {
    const char *category, *view;
  } rows[] = {{"Person", "User"}, {"Computer", "User"}, {"Group", "Group"}, {"person", ""}};
  for (const auto& row : rows) {
    ADObject found(kDn);
    found[VESK_OBJECT_CATEGORY] = row.category;
    const ADSerializer& blob = *found.getSerialized();
    peer().expect(lookup(11, "1802030000", kSidKey));
    peer().send(answer(0, s(std::string(blob.data(), blob.size()))));
    boost::shared_ptr<VeskObj> view;
    EXPECT_EQ(thrownBy([&] { view = session().getObject(kSid, 0); }),
              *row.view ? "nothing" : "NotFoundException 0 SID is not a user or group");
    EXPECT_EQ(dynamic_cast<const User*>(view.get()) != nullptr, row.view == std::string("User"));
    EXPECT_EQ(dynamic_cast<const Group*>(view.get()) != nullptr, row.view == std::string("Group"));
  }
  peer().expect(lookup(11, "1800030101", kSidKey)).send(answer(2));
  EXPECT_EQ(thrownBy([&] { session().getObject(kSid, UNIX_ONLY | kBoth); }), kNoGroup);
  EXPECT_EQ(thrownBy([&] { session().getObject(SID(), 0); }), "BadDataException 0 SID is Null");
  EXPECT_TRUE(peer().finished());
}

TEST_F(OperationsTest, TheHealthIsThatOfTheLastReplyOrOfAProbe) {
  ValidationResult health = VR_SUCCESS;
  int a = 1, b = 2;
  std::string why = "why";
  const auto healthInfo = [&](bool refresh) {
    const std::string result = text(session().systemHealthInfo(refresh, health, a, b, why));
    return result + ": " + text(health) + " " + text(a) + " " + text(b) + " " + why;
  };
  const std::string probe = request(21, s("") + s("") + sequence("") + i(0));
  const std::string tired = i(0) + i(0) + i(0) + s("") + i(44) + i(6) + i(-7) + s("tired");
  EXPECT_EQ(healthInfo(false), "0: 48 0 0 ");
  peer().expect(probe).send(answer(33, kRemote));
  EXPECT_EQ(healthInfo(true), "0: 0 0 0 ");
  peer().expect(probe).send(reply(0, tired));  // without its object
  EXPECT_EQ(healthInfo(true), "38: 0 0 0 ");
  EXPECT_EQ(healthInfo(false), "0: 44 6 -7 tired");
  peer().expect(probe).hangUp().accept().expect(probe).hangUp();
  EXPECT_EQ(healthInfo(true), "0: 44 6 -7 tired");  // the connection was lost, but there is a daemon
  peer().down();
  ASSERT_TRUE(peer().finished());
  EXPECT_EQ(healthInfo(true), "38: 44 6 -7 tired");
  EXPECT_EQ(session().getFipsMode(), 0);
}

TEST_F(OperationsTest, ASearchIsAskedForPageByPageAndOutlivesFailures) {
  const std::string next = request(23, i(-7)), a = object("a"), b = object("b");
  peer()
      .expect(request(22, s("") + s("") + s("") + sequence("") + i(0) + i(0) + i(0)))
      .send(answer(0, i(-7)))
      .hangUp();
  PagedSearchHandle handle = session().ldapPagedSearch("", "", "", nullptr, ScopeBase, 0, false);
  const struct {
    std::string reply, told;
  } pages[] = {{answer(9, kRemote), kRemoteText},
               {answer(0, i(0x7fffffff) + a), kUnread + "adobj"},
               {answer(0, i(2) + a + b), "a b"},
               {answer(0, i(1) + b), "b"}};
  for (const auto& page : pages) {
    ASSERT_TRUE(peer().finished());  // nothing has been asked for yet
    peer().accept().expect(next).send(page.reply);
    std::string all = outcomeOf([&] { return handle.getNext(); });
    if (page.told == "a b") all += " " + text(handle.getNext());
    EXPECT_EQ(all, page.told);
    peer().hangUp();  // the next page is asked for on a new connection, with the old number
  }
  for (int attempt = 0; attempt < 2; ++attempt) peer().accept().expect(next).hangUp();
  EXPECT_EQ(outcomeOf([&] { return handle.getNext(); }).find("ConnectionBrokenException"), 0u);
  peer().accept().expect(next).send(answer(0, i(0)));
  for (int again = 0; again < 3; ++again) EXPECT_TRUE(handle.getNext().isEmpty());
  EXPECT_TRUE(peer().finished());
}

TEST_F(OperationsTest, TheServicePrincipalForAKerberosLibrary) {
  char name[65] = {};
  ASSERT_EQ(gethostname(name, 64), 0);
  const std::string local = "host/" + lower(std::string(name));
  const std::string found = answer(0, s(std::string("nfs/h@X\0y", 9)));
  const struct {
    const char *host, *service;
    int type;
    std::string sent;  // nothing if empty
    std::string reply;
    const char* permitted;
    unsigned result;
  } rows[] = {
      {"H.X", "NFS", 1, "", "", "", 0x96c73ada},
      {"H.X", "NFS", 0, "NFS/h.x", found, "", 1},
      {nullptr, nullptr, 3, local, found, "", 1},
      {"H", nullptr, 3, "host/h", answer(17), "", 0x96c73ad8},
      {"H", "", 3, "/h", answer(17), "no", 0x96c73ad8},
      {"H", "", 3, "/h", answer(17), "YES", 0x96c73af5},
      {"H", "", 3, "/h", answer(0), "", 0x96c73af5},
  };
  for (const auto& row : rows) {
    configure("krb5.permit.dns.spn.lookups: " + std::string(row.permitted) + "\n");
    forgetLog();
    ScriptedPeer daemon(paths::kDaemonSocket);
    if (!row.sent.empty()) daemon.expect(request(20, s(row.sent))).send(row.reply).expectClosed();
    char out[32] = "untouched";
    const int result = velmora_sname_to_principal(nullptr, row.host, row.service, row.type, out);
    EXPECT_EQ(static_cast<unsigned>(result), row.result);
    EXPECT_STREQ(out, row.result == 1 ? "nfs/h@X" : "untouched");
    EXPECT_EQ(isLogged("DEBUG lrpc.session SPN wasn't found in AD.  Trying DNS...\n"),
              row.result == 0x96c73af5 && *row.permitted);
    EXPECT_TRUE(daemon.finished()) << row.sent;
  }
  char out[1];
  EXPECT_EQ(static_cast<unsigned>(velmora_sname_to_principal(nullptr, "h", "s", 3, out)), 0x96c73af5);
}

}  // namespace
