#include "tests/support/operations.h"

#include <zlib.h>

#include <set>

#include <fokrazo/ipcmessage.h>
#include <fokrazo/session.h>
#include <fokrazo/shredder.h>
#include "tests/support/out_arguments.h"

using namespace vesk;

namespace testsupport {

namespace {

constexpr char kNext[] = "@#";
const char* kNames[] = {"cn", nullptr};

SID sid(const char* account) {
  return SID("S-1-5-21-359486819-752017888-1696740182-" + std::string(account));
}

Guid guid(const char* text) {
  Guid guid;
  guid.fromRealMSString(text);
  return guid;
}

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

// The key is one of random bytes.
std::string logon(LocalRpcSession& session) {
  const std::string outcome = loggedOn(session, "xbjork", "", "Grüne-Lampe-2", 0);
  constexpr size_t kStart = sizeof "0 0  " - 1;
  if (outcome.compare(0, kStart, "0 0  ") != 0) return outcome;
  return outcome.substr(0, kStart) + std::to_string(outcome.size() - kStart);
}

std::string health(LocalRpcSession& session) {
  ValidationResult health = VR_VALUE_NOT_SET;
  int a = 0, b = 0;
  std::string why;
  return outcomeOf([&] { return session.systemHealthInfo(true, health, a, b, why); });
}

std::string flushObject(LocalRpcSession& session) {
  ADObject object("CN=x,DC=y");
  return outcomeOf([&] { return session.flushCache(object); });
}

// clang-format off
#define ASK(...) #__VA_ARGS__, [](LocalRpcSession& session) { return __VA_ARGS__; }
#define CALL(...) ASK(outcomeOf([&] { return session.__VA_ARGS__; }))
#define LISTING(start, next) \
  #start " " #next, [](LocalRpcSession& session) { \
    return outcomeOf([&] { return session.start ? "true" : text(session.next); }); }
#define DOMAIN "DC=example,DC=com"
#define USER "CN=Ximena Björk,OU=People,OU=Corp," DOMAIN
#define GROUP "CN=Büro,OU=Groups,OU=Corp," DOMAIN
#define USER_GUID "d6cfb2ac-0e0c-4bef-914e-d7d9842d9002"
#define GROUP_GUID "aa467557-d62a-4987-a14a-6f93cc3cba98"

const std::vector<Operation> kOperations = {
    {ASK(thrownBy([&] { session.ping(); })), "nothing"},
    {"lrpc", ownRequest, "nothing", Sent::Once},
    {CALL(getObject("xbjork", DSUser, UNIX_ONLY)), USER},
    {CALL(getUserObj("xbjork", 0)), USER},
    {"getUserObj, whole", whole, "63 1102651791"},
    {CALL(getGroupObj("Büro", 0)), GROUP},
    {CALL(getUserObj(10143, 0)), USER},
    {CALL(getGroupObj(20002, 0)), GROUP},
    {CALL(getUser("xbjork", 0)), USER},
    {CALL(getGroup("Büro", 0)), GROUP},
    {CALL(getUser(10143, 0)), USER},
    {CALL(getGroup(20002, 0)), GROUP},
    {CALL(getUser(sid("1246"), 0)), USER},
    {CALL(getGroup(sid("1410"), 0)), GROUP},
    {CALL(getUser(guid(USER_GUID), 0)), USER},
    {CALL(getGroup(guid(GROUP_GUID), 0)), GROUP},
    {CALL(getObject(sid("1246"), 0)), USER},
    {CALL(getUser2("xbjork", 0)), USER},
    {CALL(getGroup2("Büro", 0)), GROUP},
    {CALL(getShadow("xbjork", 0)), USER},
    {CALL(getUserObj("nobody", 0)), "empty"},
    {CALL(getUserObj(12345, 0)), "empty"},
    {CALL(startListUser()), "false"},
    {CALL(startListGroup(true)), "false"},
    {CALL(startListShadow()), "false"},
    {LISTING(startListUser(), getUser2(kNext, 0)), "CN=Guest,CN=Users," DOMAIN, Sent::InParts},
    {LISTING(startListGroup(true), getGroup2(kNext, 0)), "CN=Domain Users,CN=Users," DOMAIN, Sent::InParts},
    {LISTING(startListShadow(), getShadow(kNext, 0)->unixName()), "asharma", Sent::InParts},
    {CALL(endListUser()), "false", Sent::Once},
    {CALL(endListGroup()), "false", Sent::Once},
    {CALL(endListShadow()), "false", Sent::Once},
    {CALL(ldapSearch("", "", "(sAMAccountName=xbjork)", kNames, ScopeSubtree, 0, false)), "1 " USER},
    {"ldapPagedSearch", pages, "11", Sent::InParts},
    {CALL(ldapFetch("EXAMPLE", USER, nullptr, false)), USER},
    {CALL(validatePlainTextUser("xbjork", Shredder("Grüne-Lampe-2"), false)), "0"},
    {CALL(validatePlainTextUser("nobody", Shredder(), false)), "1"},
    {CALL(validateKerberosUser("xbjork", "Grüne-Lampe-2")), USER},
    {CALL(getNtlmChallenge("").empty()), "false"},
    {CALL(validateNtlmUser("")), "SystemException 0 failed to validate NTLM user", Sent::Once},
    {CALL(validateUserGroup("asharma", {"nest6"}, false, UNIX_NAME | WINDOWS_NAME)), "0"},
    {CALL(getServicePrincipal("DC1", "host")), "HOST/DC1@EXAMPLE.COM"},
    {CALL(userLogin("nobody")), "true", Sent::Once},
    {CALL(userLogout("nobody")), "true", Sent::Once},
    {ASK(renewed(session, "xbjork")), "0 0"},
    {CALL(changePassword("nobody", Shredder("x"), Shredder("y"), false)), "1", Sent::Once},
    {CALL(setPassword("nobody", Shredder("y"), "Administrator", Shredder("Turn-the-key-1"))), "1", Sent::Once},
    {CALL(setPasswordKrb5("nobody", Shredder("y"))), "1", Sent::Once},
    {CALL(addUser("xbjork", Shredder("Good-enough-1"), "", "", "", "", "", "", "Administrator", Shredder("Turn-the-key-1"))), "33", Sent::Once},
    {CALL(addUserKrb5("xbjork", Shredder("Good-enough-1"), "", "", "", "", "", "")), "33", Sent::Once},
    {CALL(setMachinePassword("linux04", Shredder("Machine-Secret-5"), "", Shredder())), "0"},
    {CALL(setMachinePassword(Shredder("Machine-Secret-5"))), "0"},
    {"netLogonSamLogon", logon, "0 0  16"},
    {ASK(samChanged(session, "nobody", "x", "bad", "", "")), "1 -1073741724 Invalid principal"},
    {CALL(flushCache("xbjork")), "0"},
    {"flushCache(object)", flushObject, "0"},
    {CALL(flushCache(FLUSH_OBJ_CACHE | FLUSH_PMON)), "0"},
    {CALL(networkChange()), "0"},
    {CALL(updateUserPolicy("xbjork")), "User Policy Refresh has completed.", Sent::Once},
    {CALL(updateMachinePolicy()), "Computer Policy Refresh has completed.", Sent::Once},
    {CALL(getSystemInfo(3)), "example.com"},
    {CALL(dumpCache("", "", "")), "0"},
    {CALL(samEnabled()), "true"},
    {CALL(samIsSandboxed("xbjork", false)), "false"},
    {CALL(samGetUserRoles("asharma", false)), "1 CN=Release crew,CN=Containers,OU=Corp," DOMAIN},
    {CALL(samGetUserRolesLocal("nobody", 5, 6)), "0"},
    {ASK(mapped(session, "EXAMPLE", 0)), "0 example.com EXAMPLE", Sent::Once},
    {CALL(getADDomain("EXAMPLE")), "example.com", Sent::Once},
    {CALL(getNtlmDomain("xbjork")), "EXAMPLE", Sent::Once},
    {CALL(setSessionID("17")), "0"},
    {"systemHealthInfo", health, "0"},
};
// clang-format on

}  // namespace

const std::vector<Operation>& operations() {
  return kOperations;
}

bool isFailure(const Operation& operation, const std::string& outcome) {
  static const std::set<std::string> kClasses = {
      "",  // the daemon's exceptions have no class name: it sends one for an unknown listing
      "ConnectionBrokenException",
      "TimeoutException",
      "IOException",
      "SystemException",
      "vesk::SystemException"};
  if (outcome == std::to_string(VR_DAEMON_NOT_RUNNING)) return operation.make == health;
  const size_t end = outcome.find(' ');
  if (end == std::string::npos) return false;
  const std::string name = outcome.substr(0, end);
  return kClasses.count(name) > 0 || (operation.sent == Sent::InParts && name == "NotFoundException");
}

}  // namespace testsupport
