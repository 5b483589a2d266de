#include "standin/ldif_backend.h"

#include <unistd.h>

#include <algorithm>
#include <iterator>

#include <fokrazo/attrnames.h>

namespace standin {

using namespace brondalt;

namespace {

std::vector<EntryId> findRoles(const Directory& directory) {
  std::vector<EntryId> roles;
  for (EntryId id = 0; id < directory.size(); ++id)
    if (directory[id].has(AD_OBJECT_CLASS, AZ_ROLE_CLASS)) roles.push_back(id);
  return roles;
}

/// The roles that list the account or one of its groups.
std::vector<EntryId> findRolesOf(const Directory& directory, EntryId account) {
  std::vector<EntryId> holders = directory.membership().groupsAbove(account);
  holders.push_back(account);
  const auto isHeld = [&](EntryId role) {
    const Attribute* members = directory[role].find(AZ_ROLE_MEMBERS);
    return members && std::any_of(members->values.begin(), members->values.end(), [&](const std::string& dn) {
             return std::find(holders.begin(), holders.end(), directory.byDn(dn)) != holders.end();
           });
  };
  std::vector<EntryId> held;
  for (EntryId role : findRoles(directory))
    if (isHeld(role)) held.push_back(role);
  return held;
}

}  // namespace

/// One line of the state; clients select it by its position, counted from 1.
struct LdifBackend::StateRow {
  const char* title;
  std::string (*tell)(const LdifBackend& backend);
};

const LdifBackend::StateRow LdifBackend::kState[] = {
    {"program", [](const LdifBackend&) { return std::string("brondalt-standin (not for production)"); }},
    {"process", [](const LdifBackend&) { return std::to_string(getpid()); }},
    {"domain", [](const LdifBackend& backend) { return backend.m_directory.domain().dnsName; }},
    {"short name", [](const LdifBackend& backend) { return backend.m_directory.domain().netbiosName; }},
    {"entries", [](const LdifBackend& backend) { return std::to_string(backend.m_directory.size()); }},
    {"requests", [](const LdifBackend& backend) { return std::to_string(backend.m_statistics.requests); }},
    {"highest usn",
     [](const LdifBackend& backend) { return std::to_string(backend.m_directory.highestUsn()); }},
    {"network",
     [](const LdifBackend& backend) {
       return std::string(backend.m_networkHasChanged ? "has changed" : "unchanged");
     }},
    {"restarts", [](const LdifBackend& backend) { return std::to_string(backend.m_statistics.restarts); }},
    {"cache", [](const LdifBackend&) { return std::string("none; the whole directory is in memory"); }},
};

void LdifBackend::flushCache(const Caller&, vesk::ADObject, unsigned, const std::string&, DoneStatus done) {
  // Nothing to flush: there is no cache.
  done(vesk::VR_SUCCESS);
}

void LdifBackend::dumpCache(const Caller&, const std::vector<std::string>&, DoneStatus done) {
  // Nothing to dump: there is no cache.
  done(vesk::VR_SUCCESS);
}

void LdifBackend::updateUserPolicy(const Caller&, const std::string& user, DoneStatus done) {
  if (account(user) != kNoEntry) return done(vesk::VR_SUCCESS);
  done(Status(vesk::VR_EXTENDED_ERROR, "User not found", vesk::VR_NOT_FOUND));
}

void LdifBackend::updateMachinePolicy(const Caller&, DoneStatus done) {
  done(vesk::VR_SUCCESS);
}

void LdifBackend::networkChanged(const Caller&, DoneStatus done) {
  m_networkHasChanged = true;
  done(vesk::VR_SUCCESS);
}

void LdifBackend::readState(const Caller&, int what, Done<std::string> done) {
  if (what < 0 || what > static_cast<int>(std::size(kState))) return done(vesk::VR_BAD_PARAMETER);
  if (what > 0) return done(kState[what - 1].tell(*this));
  std::string all;
  for (const StateRow& row : kState) all += std::string(row.title) + ": " + row.tell(*this) + "\n";
  done(all);
}

void LdifBackend::servicePrincipal(const std::string& service, Done<std::string> done) {
  const std::string* found = m_directory.findService(service);
  if (!found) found = m_directory.findService(service + "." + m_directory.domain().dnsName);
  if (!found) return done(Status::notFound());
  done(*found + "@" + m_directory.domain().realm);
}

// The only domain is found by its names, by the empty name, and by the names of its objects.
void LdifBackend::findDomain(const std::string& name, Done<DomainNames> done) {
  const bool isOurs = name.empty() || m_directory.isDomainName(name) ||
                      m_directory.byName(name, Family::Both) != kNoEntry ||
                      m_directory.byDn(name) != kNoEntry;
  if (!isOurs) return done(Status::notFound());
  done(DomainNames{m_directory.domain().dnsName, m_directory.domain().netbiosName});
}

void LdifBackend::hasRoles(Done<int> done) {
  done(static_cast<int>(!findRoles(m_directory).empty()));
}

void LdifBackend::isSandboxed(const std::string& user, Done<int> done) {
  const EntryId id = account(user);
  if (id == kNoEntry) return done(Status::notFound());
  done(static_cast<int>(!findRolesOf(m_directory, id).empty()));
}

void LdifBackend::allRoles(Done<Objects> done) {
  done(objects(findRoles(m_directory)));
}

void LdifBackend::rolesOf(const std::string& user, Done<Objects> done) {
  const EntryId id = account(user);
  if (id == kNoEntry) return done(Status::notFound());
  done(objects(findRolesOf(m_directory, id)));
}

void LdifBackend::rolesOfLocal(const std::string& user, const std::string&, const std::string&,
                               Done<Objects> done) {
  // A local user who is not in the directory has no roles; that is not a failure.
  const EntryId id = account(user);
  done(id == kNoEntry ? Objects() : objects(findRolesOf(m_directory, id)));
}

}  // namespace standin
