/// Users, groups and objects as the tool prints them.
#pragma once

namespace vesk {
class ADObject;
class Group;
class User;
}  // namespace vesk

namespace cli {

class Output;

/// A passwd(5) line.
void printUser(Output& output, const vesk::User& user);
/// A group(5) line.
void printGroup(Output& output, const vesk::Group& group);
/// A shadow(5) line.
void printShadow(Output& output, const vesk::User& user);
/// All attributes of the object.
void printObject(Output& output, vesk::ADObject object);

}  // namespace cli
