/// The groups that a user is in.
#pragma once

#include <string>
#include <vector>

#include <fokrazo/call_result.h>
#include <fokrazo/unixviews.h>
#include "cli/daemon.h"
#include "cli/record.h"

namespace cli {

struct Membership {
  enum How {
    Primary,     // of the Unix profile; without one, of the directory
    Direct,      // the user's own object, or the group's, names the other
    Nested,      // through other groups
    Unresolved,  // the daemon does not say what group it is
  };

  How how;
  std::string key;  // the SID; "gid N" for a primary group that is not among the SIDs
  vesk::CallResult<const vesk::Group> group;
};

/// The groups in the order of `How`. `calls` are the lookups of user.groupSids(), in that order.
std::vector<Membership> membershipsOf(const vesk::User& user,
                                      std::vector<vesk::CallResult<const vesk::Group>> calls, Daemon& daemon);
/// The name on this host; without a Unix profile the directory's.
std::string nameOf(const vesk::User& user);
std::string nameOf(const vesk::Group& group);
/// "primary", "direct", "nested", "unresolved".
const char* textOf(Membership::How how);

}  // namespace cli
