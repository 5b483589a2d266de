#include "tests/support/operations.h"

#include <zlib.h>

#include <cstdint>
#include <set>

#include <fokrazo/ipcmessage.h>
#include "tests/support/wire.h"

using namespace vesk;

namespace testsupport {

namespace {

constexpr Sent kAgain = Sent::Again, kOnce = Sent::Once, kInParts = Sent::InParts;
constexpr int kBoth = CHECK_AD_FIRST | GROUP_MEMBERSHIP;
constexpr char kSame[] = "=";  // an outcome: that of the first reply
constexpr char kNone[] = "";   // an outcome: not for the sample
const char* kNames[] = {"cn", "", nullptr};

#define DOMAIN "DC=example,DC=com"
#define USER "CN=Ximena Björk,OU=People,OU=Corp," DOMAIN
#define GROUP "CN=Büro,OU=Groups,OU=Corp," DOMAIN

constexpr auto i = integer;
constexpr auto s = octets;

const SID kUserSid("S-1-5-21-359486819-752017888-1696740182-1246");
const SID kGroupSid("S-1-5-21-359486819-752017888-1696740182-1410");
const std::string kDomainSid = "0105 000000000005 15000000 63556d15 e0e1d22c 56332265";
const std::string kUserSidKey = s(hex(kDomainSid + "de040000")),
                  kGroupSidKey = s(hex(kDomainSid + "82050000"));
const std::string kUserGuidKey = s(hex("acb2cfd6 0c0e ef4b 914e d7d9842d9002"));
const std::string kGroupGuidKey = s(hex("577546aa 2ad6 8749 a14a 6f93cc3cba98"));
const std::string kIdKey = hex("0202 279f"), kNegativeKey = hex("0202 fe0c");

Guid guid(const char* text) {
  Guid guid;
  guid.fromRealMSString(text);
  return guid;
}

// clang-format off
const std::string kSystem = "SystemException 0 ", kNull = kSystem + "Null adobject", kUnread = "IOException 0 ber_scanf ";
const std::string kNoUser = "NotFoundException 0 User not found", kNoGroup = "NotFoundException 0 Group not found";
const std::string kNoRoles = kSystem + "could not get roles", kNoTest = kSystem + "could do sandbox test";
const std::string kDebug = "DEBUG lrpc.session ", kRenewed = kDebug + "O:LRPC::renewCredentials user=xbjork ";
const std::string kLoggedOn = kDebug + "O:LRPC::netLogonSamLogon - user=xbjork ";
const std::string kChanged = kDebug + "O:LRPC::samChangeUserPassword - user=nobody ";
const std::string kMachine = kDebug + "LocalRpcSession::setMachinePassword returns ";
const std::string kRemote = i(3) + s("no such base"), kRemoteText = " 0 no such base";  // an exception without class name
const std::string kRefused = reply(0, status(36, 0, static_cast<int>(0xC000006D), "Logon failure"));
const std::string kSearch = s("EXAMPLE") + s("OU=Corp," DOMAIN) + s("(sAMAccountName=xbjork)") + sequence(s("cn") + s("")) + i(2) + i(9) + i(1);
const std::string kSearchAll = s("") + s("") + s("") + sequence("") + i(0) + i(-1) + i(0);
const std::string kSix = s("1") + s("2") + s("3") + s("4") + s("5") + s("");

// The usual replies: a result that is returned, one that is true on failure, a value with one exception for every failure,
// and a value with the daemon's own exceptions.
const Answers kResult = {{answer(0), "0"}, {answer(2), "2"}, {answer(14, kRemote), "14"}, {reply(0), "11"}};
const Answers kFailure = {{answer(0), "false"}, {answer(17), "true"}, {answer(17, kRemote), "true"}, {reply(0), "true"}};
const Answers kMachineResult = {{answer(0), "0", kMachine + "(0)\n"}, {answer(10), "10", kMachine + "(10)\n"}};

Answers operator+(Answers some, const Answers& more) {
  some.insert(some.end(), more.begin(), more.end());
  return some;
}
Answers value(const std::string& fields, const std::string& read, const std::string& failure) { return {{answer(0, fields), read}, {answer(2), failure}, {answer(2, kRemote), failure}, {reply(0), failure}}; }
Answers value(const std::string& fields, const std::string& read) {
  const std::string none = kUnread + "IPCException::decode";
  return {{answer(0, fields), read}, {answer(33, kRemote), kRemoteText}, {answer(33), none}, {reply(0), none}};
}
// By name the daemon's own exceptions come through; `none` is for all that is not found otherwise.
Answers named(const std::string& dn, const std::string& none, const std::string& emptied) { return {{answer(0, object(dn)), dn}, {answer(17), none}, {answer(13, kRemote), kRemoteText}, {reply(0), none}, {answer(0, s("")), emptied}}; }
Answers keyed(const std::string& dn, const std::string& none, const std::string& emptied) { return value(object(dn), dn, none) + Answers{{answer(0, s("")), emptied}}; }
Answers listed(const std::string& dn, const std::string& none) { return named(dn, none, kNull) + Answers{{reply(0, status(42, 10)), "EndOfListException 0 End of list"}}; }
Answers yes(const std::string& failure) { return value(i(-1), "true", failure) + Answers{{answer(0, i(0)), "false"}}; }
const Answers kUserOrEmpty = named(USER, "empty", "empty"), kGroupOrEmpty = named(GROUP, "empty", "empty");
const Answers kList = value(i(1) + object(USER), "1 " USER) + Answers{
    {answer(0, i(2) + s("") + object(USER)), "2 empty " USER},
    {answer(0, i(0)), "0"},
    {answer(0, i(-1) + object(USER)), "0"},
    {answer(0, i(0x7fffffff) + object(USER)), kUnread + "adobj"},
    {answer(33, i(6) + s("x")), " 0 Unknown error"}};
Answers refreshed(const std::string& done) {
  return {{answer(0), done},
          {reply(0, status(0, 0, 5, "as you wish")), "as you wish"},
          {reply(0, status(14, 0, 0, "5% joined")), "5% joined"},
          {answer(14), done},
          {reply(0), done},
          {answer(9), "SystemException 9 Unknown error"},
          {reply(0, status(9, 0, 77)), "SystemException 77 Unknown error"},
          {reply(0, status(9, 0, -5, "100%% of %s, %n%")), "SystemException -5 100% of %s, %n%"},
          {reply(0, status(9, 0, 0, std::string(600, 'x'))), "SystemException 9 " + std::string(511, 'x')}};
}
// clang-format on

// With all attributes, to reveal an answer that is cut short or mixed with another.
std::string whole(LocalRpcSession& session) {
  return outcomeOf([&] {
    ADObject object = session.getUserObj("xbjork", GROUP_MEMBERSHIP);
    uLong sum = crc32(0, nullptr, 0);
    for (const auto& entry : object.attributes())
      for (const std::string& value : entry.second)
        sum = crc32(sum, reinterpret_cast<const Bytef*>(value.data()), static_cast<uInt>(value.size()));
    return std::to_string(object.attributes().size()) + " " + std::to_string(sum);
  });
}

std::string pages(LocalRpcSession& session) {
  return outcomeOf([&] {
    PagedSearchHandle handle =
        session.ldapPagedSearch("", "", "(objectClass=group)", nullptr, ScopeSubtree, 5, false);
    int count = 0;
    while (!handle.getNext().isEmpty()) ++count;
    return count;
  });
}

std::string ownRequest(LocalRpcSession& session) {
  return thrownBy([&] {
    IPCRequest request(IPC_OP_PING);
    IPCReply reply;
    session.lrpc(request, reply);
  });
}

std::string health(LocalRpcSession& session) {
  ValidationResult health = VR_VALUE_NOT_SET;
  int a = 0, b = 0;
  std::string why;
  return outcomeOf([&] { return session.systemHealthInfo(true, health, a, b, why); });
}

std::string flushObject(LocalRpcSession& session) {
  std::string blob = object(USER).substr(2);  // without tag and length
  ADObject object(static_cast<unsigned>(blob.size()), blob.data(), false, nullptr);
  return outcomeOf([&] { return session.flushCache(object); });
}

constexpr char kHealth[] = "health";

// clang-format off
#define SENDS(opcode, ...) \
  [](const Secrets& p) { static_cast<void>(p); return request(opcode, __VA_ARGS__); }
#define FINDS(opcode, header, key) SENDS(opcode, lookupFields(header, key))
#define LISTING(start, next) \
  ASK(outcomeOf([&] { return session.start ? "true" : text(session.next); }))

const std::vector<Operation> kOperations = {
    {ASK(thrownBy([&] { session.ping(); })), kSame, kAgain, SENDS(0, ""), {{reply(0), "nothing"}}},
    {"lrpc", [](LocalRpcSession& session, const Secrets&) { return ownRequest(session); }, kSame, kOnce, SENDS(0, ""), {{reply(0), "nothing"}, {reply(1), "SystemException 1 Unsuccesful IPC execute: system error"}}},
    {ASK(thrownBy([&] { session.stop(); })), kSame, kOnce, SENDS(1, ""), {{reply(0), "nothing"}, {reply(2), "SystemException 2 Unsuccesful IPC execute: bad data"}}},

    {CALL(getObject("xbjork", DSShadow, kBoth)), kNone, kAgain, FINDS(11, "0202000101", s("xbjork")), kUserOrEmpty},
    {CALL(getObject("xbjork", DSUser, UNIX_ONLY)), kSame, kAgain, FINDS(11, "0000000000", s("xbjork")), kUserOrEmpty},
    {CALL(getObject(NEXT_ENTRY, DSUser, UNIX_NAME)), kNone, kOnce, FINDS(11, "0002000000", s("@#")), kUserOrEmpty},
    {CALL(getUserObj("xbjork", kBoth)), kSame, kAgain, FINDS(11, "0002000101", s("xbjork")), kUserOrEmpty},
    {CALL(getUserObj("nobody", 0)), "empty", kAgain, FINDS(11, "0002000000", s("nobody")), kUserOrEmpty},
    {"getUserObj, whole", [](LocalRpcSession& session, const Secrets&) { return whole(session); }, "63 1102651791"},
    {CALL(getGroupObj("Büro", CHECK_AD_FIRST)), kSame, kAgain, FINDS(11, "0102000100", s("Büro")), kGroupOrEmpty},
    {CALL(getUserObj(10143, kBoth)), kSame, kAgain, FINDS(11, "0000020101", kIdKey), keyed(USER, "empty", "empty")},
    {CALL(getUserObj(-500, kBoth)), "empty", kAgain, FINDS(11, "0000020101", kNegativeKey), keyed(USER, "empty", "empty")},
    {CALL(getGroupObj(20002, kBoth)), kSame, kAgain, FINDS(11, "0100020101", i(20002)), keyed(GROUP, "empty", "empty")},
    {CALL(getUser("xbjork", kBoth)), kSame, kAgain, FINDS(11, "0002000101", s("xbjork")), named(USER, kNoUser, kNoUser)},
    {CALL(getGroup("Büro", kBoth)), kSame, kAgain, FINDS(11, "0102000101", s("Büro")), named(GROUP, kNoGroup, kNoGroup)},
    {CALL(getUser(10143, kBoth)), kSame, kAgain, FINDS(11, "0000020101", kIdKey), keyed(USER, kNoUser, kNoUser)},
    {CALL(getGroup(20002, kBoth)), kSame, kAgain, FINDS(11, "0100020101", i(20002)), keyed(GROUP, kNoGroup, kNoGroup)},
    {CALL(getUser(kUserSid, kBoth)), kSame, kAgain, FINDS(11, "0002030101", kUserSidKey), keyed(USER, kNoUser, kNull)},
    {CALL(getGroup(kGroupSid, UNIX_ONLY)), kSame, kAgain, FINDS(11, "0100030000", kGroupSidKey), keyed(GROUP, "NotFoundException 0 Object not found", kNull)},
    {CALL(getUser(guid("d6cfb2ac-0e0c-4bef-914e-d7d9842d9002"), kBoth)), kSame, kAgain, FINDS(11, "0002010101", kUserGuidKey), keyed(USER, kNoUser, kNull)},
    {CALL(getGroup(guid("aa467557-d62a-4987-a14a-6f93cc3cba98"), kBoth)), kSame, kAgain, FINDS(11, "0102010101", kGroupGuidKey), keyed(GROUP, kNoGroup, kNull)},
    {CALL(getObject(kUserSid, 0)), USER},
    {CALL(getUser2("xbjork", kBoth)), kSame, kAgain, FINDS(12, "0002000101", s("xbjork")), listed(USER, kNoUser)},
    {CALL(getGroup2("Büro", 0)), kSame, kAgain, FINDS(12, "0102000000", s("Büro")), listed(GROUP, kNoGroup)},
    {CALL(getGroup2(NEXT_ENTRY, UNIX_ONLY)), kNone, kOnce, FINDS(12, "0100000000", s("@#")), listed(GROUP, kNoGroup)},
    {CALL(getShadow("xbjork", kBoth)), kSame, kAgain, FINDS(11, "0200000100", s("xbjork")), keyed(USER, kNoUser, kNull)},
    {CALL(getShadow(NEXT_ENTRY, 0)), kNone, kOnce, FINDS(11, "0200000000", s("@#")), keyed(USER, kNoUser, kNull)},

    {CALL(startListUser()), kSame, kAgain, SENDS(13, i(0) + i(0) + i(0)), kFailure},
    {CALL(startListGroup(false)), kNone, kAgain, SENDS(13, i(1) + i(0) + i(0)), kFailure},
    {CALL(startListGroup(true)), kSame, kAgain, SENDS(13, i(1) + i(0) + i(1)), kFailure},
    {CALL(startListShadow()), kSame, kAgain, SENDS(13, i(2) + i(0) + i(0)), kFailure},
    {LISTING(startListUser(), getUser2(NEXT_ENTRY, 0)), "CN=Guest,CN=Users," DOMAIN, kInParts},
    {LISTING(startListGroup(true), getGroup2(NEXT_ENTRY, 0)), "CN=Domain Users,CN=Users," DOMAIN, kInParts},
    {LISTING(startListShadow(), getShadow(NEXT_ENTRY, 0)->unixName()), "asharma", kInParts},
    {CALL(endListUser()), kSame, kOnce, SENDS(14, i(0) + i(0)), kFailure},
    {CALL(endListGroup()), kSame, kOnce, SENDS(14, i(1) + i(0)), kFailure},
    {CALL(endListShadow()), kSame, kOnce, SENDS(14, i(2) + i(0)), kFailure},
    {CALL(ldapSearch("EXAMPLE", "OU=Corp," DOMAIN, "(sAMAccountName=xbjork)", kNames, ScopeSubtree, 9, true)), kSame, kAgain, SENDS(16, kSearch), kList},
    {CALL(ldapSearch("", "", "", nullptr, ScopeBase, -1, false)), kNone, kAgain, SENDS(16, kSearchAll), kList},
    {CALL(ldapPagedSearch("EXAMPLE", "OU=Corp," DOMAIN, "(sAMAccountName=xbjork)", kNames, ScopeSubtree, 9, true)), kNone, kAgain, SENDS(22, kSearch), value(i(7), "handle") + Answers{{answer(0), kUnread + "int"}}},
    {"ldapPagedSearch, all pages", [](LocalRpcSession& session, const Secrets&) { return pages(session); }, "11", kInParts},
    {CALL(ldapFetch("EXAMPLE", USER, kNames, true)), kSame, kAgain, SENDS(21, s("EXAMPLE") + s(USER) + sequence(s("cn") + s("")) + i(1)), value(object(USER), USER) + Answers{{answer(0, s("")), "empty"}}},

    {CALL(validatePlainTextUser("xbjork", p.first, true)), kSame, kAgain, SENDS(3, s("xbjork") + s(p.first) + i(1)), kResult},
    {CALL(validatePlainTextUser("nobody", p.second, false)), "1", kAgain, SENDS(3, s("nobody") + s(p.second) + i(0)), kResult},
    {CALL(validateKerberosUser("xbjork", p.first)), kSame, kAgain, SENDS(4, s("xbjork") + s(p.first)), value(object(USER), USER, kSystem + "failed to validate Kerberos user") + Answers{{answer(0, s("")), kNull}}},
    {CALL(getNtlmChallenge(p.first).size()), kSame, kAgain, SENDS(5, s(p.first)), value(s(std::string("p\0\xff%s\nq", 8)), "8", kSystem + "failed to get NLTM challenge")},
    {CALL(validateNtlmUser(p.first)), kSystem + "failed to validate NTLM user", kOnce, SENDS(6, s(p.first)), value(object(USER), USER, kSystem + "failed to validate NTLM user")},
    {CALL(validateUserGroup("asharma", {"nest6", ""}, false, UNIX_NAME | WINDOWS_NAME)), kSame, kAgain, SENDS(10, s("asharma") + i(2) + s("nest6") + s("") + i(0) + i(2)), kResult},
    {CALL(validateUserGroup("al", {"a"}, true, 0)), kNone, kAgain, SENDS(10, s("al") + i(1) + s("a") + i(1) + i(1)), kResult},
    {CALL(validateUserGroup("al", {"a"}, false, UNIX_NAME | UNIX_ONLY)), kNone, kAgain, SENDS(10, s("al") + i(1) + s("a") + i(0) + i(0)), kResult},
    {CALL(validateUserGroup("", {}, false, WINDOWS_NAME)), kNone, kAgain, SENDS(10, s("") + i(0) + i(0) + i(1)), kResult},
    {CALL(getServicePrincipal("DC1", "Host")), "HOST/DC1@EXAMPLE.COM", kAgain, SENDS(20, s("Host/dc1")), value(s("nfs/h@X"), "nfs/h@X", "NotFoundException 0 failed to get canonicalized service principal name")},
    {CALL(userLogin("nobody")), "true", kOnce, SENDS(25, s("nobody")), kFailure},
    {CALL(userLogout("nobody")), "true", kOnce, SENDS(26, s("nobody")), kFailure},
    {ASK(renewed(session, "xbjork")), "0 0", kAgain, SENDS(42, s("xbjork")),
     {{answer(0, i(3)),  "0 3",  kRenewed + "(count=3) (rc=0)\n"},
      {answer(14, i(3)), "14 5", kRenewed + "(count=5) (rc=14)\n"},
      {answer(0),        kUnread + "int 5"}},
     " 5", kDebug + "I:LRPC::renewCredentials - user=xbjork\n"},

    {CALL(changePassword("nobody", p.first, p.second, true)), "1", kOnce, SENDS(7, s("nobody") + s(p.first) + s(p.second) + i(1)), kResult},
    {CALL(setPassword("nobody", p.first, "Administrator", p.second)), "1", kOnce, SENDS(8, s("nobody") + s(p.first) + s("Administrator") + s(p.second)), kResult},
    {CALL(setPasswordKrb5("nobody", p.first)), "1", kOnce, SENDS(9, s("nobody") + s(p.first)), kResult},
    {CALL(addUser("xbjork", p.first, "1", "2", "3", "4", "5", "", "Administrator", p.second)), "33", kOnce, SENDS(18, s("xbjork") + s(p.first) + kSix + s("Administrator") + s(p.second)), kResult},
    {CALL(addUserKrb5("xbjork", p.first, "1", "2", "3", "4", "5", "")), "33", kOnce, SENDS(18, s("xbjork") + s(p.first) + kSix), kResult},
    {CALL(setMachinePassword("linux04", p.first, "Administrator", p.second)), kSame, kAgain, SENDS(29, s("linux04") + s(p.first) + s("Administrator") + s(p.second)), kMachineResult},
    {CALL(setMachinePassword(p.first)), kSame, kAgain, SENDS(29, s("") + s(p.first) + s("") + s("")), kMachineResult},
    {ASK(loggedOn(session, "xbjork", "example.com", p.first, 0xffffffff)), "0 0  16", kAgain, SENDS(36, s("xbjork") + s("example.com") + s(p.first) + i(-1)),
     {{answer(0, s(std::string("k\0y", 3))), "0 0  3",                            kLoggedOn + "(rc=0) (ntStatus=0x0)\n"},
      {kRefused,                             "36 -1073741715 Logon failure key", kLoggedOn + "(rc=36) (ntStatus=0xc000006d)\n"},
      {reply(0),                             "11 0  key",                        kLoggedOn + "(rc=11) (ntStatus=0x0)\n"},
      {answer(0),                            kUnread + "string 0  key"}},
     " 0 why key", kDebug + "I:LRPC::netLogonSamLogon - user=xbjork\n"},
    {ASK(samChanged(session, "nobody", p.second, p.first, "4")), "1 -1073741724 Invalid principal", kAgain, SENDS(38, s("nobody") + s(p.second) + s(p.first) + s("") + s("4")),
     {{answer(0), "0 0 ",                         kChanged + "(rc=0) (ntStatus=0x0)\n"},
      {kRefused,  "36 -1073741715 Logon failure", kChanged + "(rc=36) (ntStatus=0xc000006d)\n"}},
     " 0 why", kDebug + "I:LRPC::samChangeUserPassword2 - user=nobody\n"},

    {CALL(flushCache("xbjork")), kSame, kAgain, SENDS(24, s("") + i(1) + s("xbjork")), kResult},
    {"flushCache(object)", [](LocalRpcSession& session, const Secrets&) { return flushObject(session); }, kSame, kAgain, SENDS(24, object(USER) + i(1) + s("")), kResult},
    {CALL(flushCache(FLUSH_DNS_CACHE | FLUSH_AUTH_STORE)), kSame, kAgain, SENDS(24, s("") + i(6) + s("")), kResult},
    {CALL(flushCache(0xffffffffu)), kNone, kAgain, SENDS(24, s("") + i(-1) + s("")), kResult},
    {CALL(networkChange()), kSame, kAgain, SENDS(40, ""), kResult},
    {CALL(updateUserPolicy("xbjork")), kSame, kOnce, SENDS(17, i(1) + s("xbjork")), refreshed("User Policy Refresh has completed.")},
    {CALL(updateMachinePolicy()), kSame, kOnce, SENDS(17, i(0)), refreshed("Computer Policy Refresh has completed.")},
    {CALL(getSystemInfo(3)), kSame, kAgain, SENDS(41, i(3)), value(s("example.com"), "example.com", kSystem + "could not get sysinfo")},
    {CALL(getSystemInfo(0x80000000)), kNone, kAgain, SENDS(41, i(INT32_MIN)), value(s("up"), "up", kSystem + "could not get sysinfo")},
    {CALL(dumpCache("a", "", "c")), kSame, kAgain, SENDS(43, s("a") + s("") + s("c")), kResult},
    {CALL(samEnabled()), kSame, kAgain, SENDS(47, ""), yes(kNoTest)},
    {CALL(samIsSandboxed("xbjork", true)), "false", kAgain, SENDS(46, s("xbjork") + i(1)), yes(kNoTest)},
    {CALL(samGetUserRoles("asharma", false)), "1 CN=Release crew,CN=Containers,OU=Corp," DOMAIN, kAgain, SENDS(44, s("asharma") + i(0)), value(i(1) + object(USER), "1 " USER, kNoRoles)},
    {CALL(samGetUserRolesLocal("nobody", 5, 4294967295u)), "0", kAgain, SENDS(45, s("nobody") + s("5") + s("4294967295")), value(i(1) + s(""), "1 empty", kNoRoles)},
    {CALL(samGetUserRolesLocal("all users", 5, 6)), kNone, kAgain, SENDS(45, s("all users")), value(i(0), "0", kNoRoles)},
    {ASK(mapped(session, "EXAMPLE", 0xffffffff)), kSame, kOnce, SENDS(28, s("EXAMPLE") + i(-1)),
     {{answer(0, s("example.com") + s("EXAMPLE")), "0 example.com EXAMPLE"},
      {answer(17, s("x.org") + s("X")),            "17 first second"},
      {answer(0, s("x.org")),                      kUnread + "string first second"}},
     " first second"},
    {CALL(getADDomain("EXAMPLE")), kSame, kOnce, SENDS(39, s("EXAMPLE")), value(s("example.com"), "example.com")},
    {CALL(getNtlmDomain("xbjork")), kSame, kOnce, SENDS(27, s("xbjork")), value(s("EXAMPLE"), "EXAMPLE")},
    {CALL(setSessionID("17")), kSame, kAgain, SENDS(2, s("17")), kResult},
    {kHealth, [](LocalRpcSession& session, const Secrets&) { return health(session); }, "0"},
};
// clang-format on

template <class Condition>
std::vector<Operation> operationsWith(Condition isWanted) {
  std::vector<Operation> wanted;
  for (const Operation& operation : kOperations) {
    if (!isWanted(operation)) continue;
    wanted.push_back(operation);
    if (operation.outcome == kSame) wanted.back().outcome = operation.answers[0].outcome;
  }
  return wanted;
}

bool isStop(const Operation& operation) {
  return operation.request && operation.request({}) == request(1);
}

}  // namespace

const Secrets& samplePasswords() {
  static const Secrets passwords = {Shredder("Grüne-Lampe-2"), Shredder("Turn-the-key-1")};
  return passwords;
}

const std::vector<Operation>& operations() {
  static const std::vector<Operation> all = operationsWith(
      [](const Operation& operation) { return operation.outcome != kNone && !isStop(operation); });
  return all;
}

const std::vector<Operation>& exchanges() {
  static const std::vector<Operation> all =
      operationsWith([](const Operation& operation) { return operation.request != nullptr; });
  return all;
}

const Operation& stopOperation() {
  static const std::vector<Operation> stop = operationsWith(isStop);
  return stop.at(0);
}

bool isFailure(const Operation& operation, const std::string& outcome) {
  // The daemon's exceptions have no class name: it sends one for an unknown listing.
  static const std::set<std::string> kClasses = {"",
                                                 "ConnectionBrokenException",
                                                 "TimeoutException",
                                                 "IOException",
                                                 "SystemException",
                                                 "vesk::SystemException"};
  if (outcome == std::to_string(VR_DAEMON_NOT_RUNNING)) return operation.name == kHealth;
  const size_t end = outcome.find(' ');
  if (end == std::string::npos) return false;
  const std::string name = outcome.substr(0, end);
  return kClasses.count(name) > 0 || (operation.sent == kInParts && name == "NotFoundException");
}

std::string lookupFields(const std::string& header, const std::string& key) {
  std::string fields;
  for (const char byte : hex(header)) fields += i(byte);
  return fields + key;
}

std::string renewed(LocalRpcSession& session, const std::string& user) {
  int count = 5;
  return outcomeOf([&] { return session.renewCredentials(user, count); }, count);
}

std::string mapped(LocalRpcSession& session, const std::string& name, unsigned options) {
  std::string first = "first", second = "second";
  return outcomeOf([&] { return session.mapDomain(name, first, second, options); }, first, second);
}

std::string samChanged(LocalRpcSession& session, const std::string& user, const std::string& newPassword,
                       const std::string& oldPassword, const std::string& text) {
  int status = 5;
  std::string why = "why";
  return outcomeOf(
      [&] { return session.samChangeUserPassword2(user, newPassword, oldPassword, "", text, status, why); },
      status, why);
}

std::string loggedOn(LocalRpcSession& session, const std::string& user, const std::string& domain,
                     const std::string& token, unsigned option) {
  int status = 5;
  std::string key = "key", why = "why";
  const std::string result = outcomeOf(
      [&] { return session.netLogonSamLogon(user, domain, token, option, key, status, why); }, status, why);
  return result + " " + (key == "key" ? key : text(key.size()));
}

}  // namespace testsupport
