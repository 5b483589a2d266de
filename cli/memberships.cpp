#include "cli/memberships.h"

#include <algorithm>

#include <fokrazo/ascii.h>
#include <fokrazo/attrnames.h>
#include <fokrazo/dn.h>
#include "cli/arguments.h"
#include "cli/stopwatch.h"

namespace cli {

namespace {

using namespace vesk;

// Whether the attribute lists the DN, perhaps in its extended form.
bool lists(ADObject object, const std::string& attribute, const std::string& dn) {
  if (!object.attributeExists(attribute, true)) return false;
  const ADAttribute& values = object[attribute];
  return std::any_of(values.begin(), values.end(), [&](const std::string& value) {
    return equalIgnoringCase(DN::dnFromExtendedDN(value), dn);
  });
}

// Whether it is the primary group of the user's object, which names it by its relative id in the user's
// domain ([MS-ADTS] primaryGroupID).
bool isDirectoryPrimary(const User& user, const SID& group) {
  ADObject object = user.getObject();
  const SID sid = user.getSid();
  unsigned id = 0;
  if (sid.isNull() || group.isNull() || !object.attributeExists(AD_PRIMARY_GID, true)) return false;
  return readNumber(object[AD_PRIMARY_GID].front(), id) && group.getObjectRid() == id &&
         group.domainSID() == sid.domainSID();
}

Membership::How howOf(const User& user, const Group& group) {
  if (user.isUnix() && group.isUnix() && group.getId() == user.gid()) return Membership::Primary;
  if (isDirectoryPrimary(user, group.getSid()))
    return user.isUnix() ? Membership::Direct : Membership::Primary;
  const bool isDirect = lists(user.getObject(), AD_MEMBEROF, group.getDN()) ||
                        lists(group.getObject(), AD_GROUP_MEMBERS, user.getDN());
  return isDirect ? Membership::Direct : Membership::Nested;
}

Membership membershipOf(const User& user, std::string key, GroupCall call) {
  const Membership::How how = call.result ? howOf(user, *call.result) : Membership::Unresolved;
  return {how, std::move(key), std::move(call)};
}

bool isPrimary(const Membership& membership) {
  return membership.how == Membership::Primary;
}

}  // namespace

GroupCall askForGroup(Daemon& daemon, const ObjectKey& key, int flags) {
  const Stopwatch watch;
  auto result = daemon.client().group(key, flags);
  return {std::move(result), watch.elapsed()};
}

std::vector<GroupCall> askForGroups(Daemon& daemon, const User& user, int flags) {
  std::vector<GroupCall> calls;
  for (auto& result : daemon.client().groupsOf(user, flags)) calls.push_back({std::move(result), {}});
  return calls;
}

std::vector<Membership> membershipsOf(Daemon& daemon, const User& user, std::vector<GroupCall> calls) {
  std::vector<Membership> all;
  auto call = calls.begin();
  for (const SID& sid : user.groupSids()) {
    if (call == calls.end()) break;
    all.push_back(membershipOf(user, sid.toMSString(), std::move(*call++)));
  }
  if (user.isUnix() && std::none_of(all.begin(), all.end(), isPrimary))
    all.push_back(membershipOf(user, "gid " + std::to_string(user.gid()),
                               askForGroup(daemon, ObjectKey(user.gid()), UNIX_ONLY)));
  std::stable_sort(all.begin(), all.end(),
                   [](const Membership& a, const Membership& b) { return a.how < b.how; });
  return all;
}

std::string nameOf(const User& user) {
  return user.isUnix() ? user.unixName() : user.getName();
}

std::string nameOf(const Group& group) {
  return group.isUnix() ? group.unixName() : group.name();
}

const char* textOf(Membership::How how) {
  static constexpr const char* kTexts[] = {"primary", "direct", "nested", "unresolved"};
  return kTexts[how];
}

}  // namespace cli
