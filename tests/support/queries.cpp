#include "tests/support/queries.h"

#include "lrpc/session.h"
#include "lrpc/shredder.h"
#include "tests/support/told.h"

using namespace vesk;

namespace testsupport {

namespace {

constexpr auto kSubtree = static_cast<LdapSearchScopeType>(2);
constexpr char kDomain[] = "example.com";
constexpr char kUser[] = "lquispe";
constexpr int kUid = 10060;
constexpr int kGid = 20004;

// With the last attributes too: an answer cut short would show.
std::string whole(ADObject object) {
  std::string all = text(object) + " " + std::to_string(object.attributes().size());
  for (const auto& entry : object.attributes())
    for (const std::string& value : entry.second) all += " " + value;
  return all;
}

std::string pages(LocalRpcSession& session) {
  PagedSearchHandle handle =
      session.ldapPagedSearch(kDomain, "", "(objectClass=group)", nullptr, kSubtree, 5, false);
  std::string all;
  for (ADObject next = handle.getNext(); !next.isEmpty(); next = handle.getNext()) all += text(next) + " ";
  return all;
}

const SID& userSid() {
  static const SID sid("AQUAAAAAAAUVAAAAY1VtFeDh0ixWMyJliwQAAA==");
  return sid;
}

}  // namespace

const std::vector<Query>& queries() {
  static const std::vector<Query> all = {
      {"ping", [](LocalRpcSession& s) { return s.ping(), text("pong"); }},
      {"user by name", [](LocalRpcSession& s) { return whole(s.getUser(kUser, 0)->getObject()); }},
      {"user by uid", [](LocalRpcSession& s) { return text(s.getUser(kUid, 0)); }},
      {"user by SID", [](LocalRpcSession& s) { return text(s.getUser(userSid(), 0)); }},
      {"object by SID", [](LocalRpcSession& s) { return text(s.getObject(userSid(), 0)); }},
      {"user object", [](LocalRpcSession& s) { return whole(s.getUserObj(kUser, GROUP_MEMBERSHIP)); }},
      {"no user object", [](LocalRpcSession& s) { return text(s.getUserObj("nosuch", 0)); }},
      {"group by gid", [](LocalRpcSession& s) { return text(s.getGroup(kGid, 0)); }},
      {"shadow", [](LocalRpcSession& s) { return text(s.getShadow(kUser, 0)); }},
      {"search",
       [](LocalRpcSession& s) {
         return text(s.ldapSearch(kDomain, "", "(sAMAccountName=l*)", nullptr, kSubtree, 0, false));
       }},
      {"pages", pages},
      {"password",
       [](LocalRpcSession& s) {
         return text(s.validatePlainTextUser(kUser, Shredder("Paper-boat-42"), false));
       }},
      {"password of nobody",
       [](LocalRpcSession& s) { return text(s.validatePlainTextUser("nosuch", Shredder("x"), false)); }},
      {"domain", [](LocalRpcSession& s) { return s.getADDomain(kDomain); }},
      {"roles", [](LocalRpcSession& s) { return text(s.samGetUserRoles("all users", false)); }},
      {"principal", [](LocalRpcSession& s) { return s.getServicePrincipal("DC1", "host"); }},
  };
  return all;
}

}  // namespace testsupport
