/// The groups that a user is in.
#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include <fokrazo/call_result.h>
#include <fokrazo/object_key.h>
#include <fokrazo/unixviews.h>
#include "cli/daemon.h"

namespace cli {

/// The lookup of one group.
struct GroupCall {
  vesk::CallResult<const vesk::Group> result;
  std::optional<std::chrono::microseconds> elapsed;  // empty if it was one of many at once
};

/// Looks up a group.
GroupCall askForGroup(Daemon& daemon, const vesk::ObjectKey& key, int flags = 0);
/// Looks up all groups of the user's SIDs, in their order, at once.
std::vector<GroupCall> askForGroups(Daemon& daemon, const vesk::User& user, int flags = 0);

struct Membership {
  enum How {
    Primary,     // of the Unix profile; without one, of the directory
    Direct,      // the user's own object, or the group's, names the other
    Nested,      // through other groups
    Unresolved,  // the daemon does not say what group it is
  };

  How how;
  std::string key;  // the SID; "gid N" for a primary group that is not among the SIDs
  GroupCall call;

  /// The group; null if it is unresolved.
  const vesk::Group* group() const { return call.result.share().get(); }
};

/// The groups in the order of `How`. `calls` are the lookups of user.groupSids(), in that order. Looks up
/// the primary group if it is not among them.
std::vector<Membership> membershipsOf(Daemon& daemon, const vesk::User& user, std::vector<GroupCall> calls);
/// The name on this host; without a Unix profile the directory's.
std::string nameOf(const vesk::User& user);
std::string nameOf(const vesk::Group& group);
/// "primary", "direct", "nested", "unresolved".
const char* textOf(Membership::How how);

}  // namespace cli
