#include "standin/handlers.h"

#include <unistd.h>

#include <algorithm>

#include <fokrazo/adserializer.h>
#include <fokrazo/attrnames.h>
#include <fokrazo/strutil.h>
#include "standin/call.h"

namespace standin {
namespace {

constexpr int kUserPolicy = 1;
constexpr char kAllUsers[] = "all users";

/// What the state's numbers stand for.
struct StateRow {
  const char* title;
  std::string (*tell)(const Service& service);
};

const StateRow kState[] = {
    {"program", [](const Service&) { return std::string("brondalt-standin (no product daemon)"); }},
    {"process", [](const Service&) { return std::to_string(getpid()); }},
    {"domain", [](const Service& service) { return service.directory.domain().dnsName; }},
    {"short name", [](const Service& service) { return service.directory.domain().netbiosName; }},
    {"entries", [](const Service& service) { return std::to_string(service.directory.size()); }},
    {"requests", [](const Service& service) { return std::to_string(service.requests); }},
    {"highest usn", [](const Service& service) { return std::to_string(service.directory.highestUsn()); }},
    {"network",
     [](const Service& service) {
       return std::string(service.networkHasChanged ? "has changed" : "unchanged");
     }},
};

/// Whether the name is the served domain's or an account's: the stand-in knows one domain.
bool belongsToDomain(const Call& call, const std::string& name) {
  const Directory& directory = call.service.directory;
  return name.empty() || directory.isDomainName(name) || directory.byName(name, Family::Both) != kNoEntry ||
         directory.byDn(name) != kNoEntry;
}

std::vector<EntryId> allRoles(const Directory& directory) {
  std::vector<EntryId> roles;
  for (EntryId id = 0; id < directory.size(); ++id)
    if (directory[id].has(AD_OBJECT_CLASS, AZ_ROLE_CLASS)) roles.push_back(id);
  return roles;
}

/// The roles that name the account, or a group that it is in.
std::vector<EntryId> rolesOf(const Directory& directory, EntryId account) {
  std::vector<EntryId> holders = directory.membership().groupsAbove(account);
  holders.push_back(account);
  auto isHeld = [&](EntryId role) {
    const Attribute* members = directory[role].find(AZ_ROLE_MEMBERS);
    return members && std::any_of(members->values.begin(), members->values.end(), [&](const std::string& dn) {
             return std::find(holders.begin(), holders.end(), directory.byDn(dn)) != holders.end();
           });
  };
  std::vector<EntryId> held;
  for (EntryId role : allRoles(directory))
    if (isHeld(role)) held.push_back(role);
  return held;
}

void answerWithRoles(Call& call, const std::vector<EntryId>& roles) {
  vesk::IPCMessage& reply = call.succeed();
  reply += static_cast<int>(roles.size());
  for (EntryId role : roles) reply += call.service.objects.blob(role);
}

}  // namespace

void handlers::flushCache(Call& call) {
  // The stand-in answers from memory alone: there is nothing to flush that would not be the same again.
  call.request.getADObject();
  call.request.getInt();
  call.request.getString();
  call.succeed();
}

void handlers::updatePolicy(Call& call) {
  bool isUser = call.request.getInt() == kUserPolicy;
  std::string user = isUser ? call.request.getString() : std::string();
  if (isUser && call.account(user) == kNoEntry)
    return call.refuse(vesk::VR_EXTENDED_ERROR, "User not found", 0, vesk::VR_NOT_FOUND);
  call.succeed();
}

void handlers::networkChanged(Call& call) {
  call.service.networkHasChanged = true;
  call.succeed();
}

void handlers::readState(Call& call) {
  int what = call.request.getInt();
  int rows = static_cast<int>(std::size(kState));
  if (what < 0 || what > rows) return call.answer(vesk::VR_BAD_PARAMETER);
  if (what > 0) {
    call.succeed() += kState[what - 1].tell(call.service);
    return;
  }
  std::string all;
  for (const StateRow& row : kState) all += std::string(row.title) + ": " + row.tell(call.service) + "\n";
  call.succeed() += all;
}

void handlers::dumpCache(Call& call) {
  // The daemon writes a file of its own choice; the stand-in has no cache and writes none.
  for (int i = 0; i < 3; ++i) call.request.getString();
  call.succeed();
}

void handlers::setSessionId(Call& call) {
  call.client.sessionId = call.request.getString();
  call.succeed();
}

void handlers::getServicePrincipal(Call& call) {
  std::string name = call.request.getString();
  const Directory& directory = call.service.directory;
  const std::string* service = directory.findService(name);
  if (!service) service = directory.findService(name + "." + directory.domain().dnsName);
  if (!service) return call.answer(vesk::VR_NOT_FOUND);
  call.succeed() += *service + "@" + directory.domain().realm;
}

void handlers::mapDomain(Call& call) {
  std::string name = call.request.getString();
  call.request.getInt();
  if (!belongsToDomain(call, name)) return call.answer(vesk::VR_NOT_FOUND);
  const Domain& domain = call.service.directory.domain();
  (call.succeed() += domain.dnsName) += domain.netbiosName;
}

void handlers::getAdDomain(Call& call) {
  std::string name = call.request.getString();
  if (!belongsToDomain(call, name)) return call.fail(vesk::VR_NOT_FOUND, "Unknown domain: " + name);
  call.succeed() += call.service.directory.domain().dnsName;
}

void handlers::getNtlmDomain(Call& call) {
  std::string name = call.request.getString();
  if (!belongsToDomain(call, name)) return call.fail(vesk::VR_NOT_FOUND, "Unknown domain: " + name);
  call.succeed() += call.service.directory.domain().netbiosName;
}

void handlers::rolesEnabled(Call& call) {
  call.succeed() += static_cast<int>(!allRoles(call.service.directory).empty());
}

void handlers::rolesSandboxed(Call& call) {
  EntryId account = call.account(call.request.getString());
  call.request.getInt();
  if (account == kNoEntry) return call.answer(vesk::VR_NOT_FOUND);
  call.succeed() += static_cast<int>(!rolesOf(call.service.directory, account).empty());
}

void handlers::getRoles(Call& call) {
  std::string user = call.request.getString();
  call.request.getInt();
  const Directory& directory = call.service.directory;
  if (user == kAllUsers) return answerWithRoles(call, allRoles(directory));
  EntryId account = call.account(user);
  if (account == kNoEntry) return call.answer(vesk::VR_NOT_FOUND);
  answerWithRoles(call, rolesOf(directory, account));
}

void handlers::getRolesLocal(Call& call) {
  std::string user = call.request.getString();
  const Directory& directory = call.service.directory;
  if (user == kAllUsers) return answerWithRoles(call, allRoles(directory));
  call.request.getString();
  call.request.getString();
  // A user of this host whom the directory does not know has no roles, and that is no failure.
  EntryId account = call.account(user);
  answerWithRoles(call, account == kNoEntry ? std::vector<EntryId>() : rolesOf(directory, account));
}

}  // namespace standin
