/// Users, groups and objects as the tool prints them.
#pragma once

#include <string>
#include <vector>

#include "cli/output.h"

namespace vesk {
class ADObject;
class Group;
class User;
}  // namespace vesk

namespace cli {

/// A line as in passwd(5), and the titles of a table of users.
View viewOf(const vesk::User& user);
std::vector<std::string> userTitles();
/// A line as in group(5).
View viewOf(const vesk::Group& group);
std::vector<std::string> groupTitles();
/// A line as in shadow(5).
View shadowViewOf(const vesk::User& user);
std::vector<std::string> shadowTitles();
/// All attributes of an object.
Record recordOf(vesk::ADObject object);

}  // namespace cli
