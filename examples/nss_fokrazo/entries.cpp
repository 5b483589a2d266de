#include "entries.h"

#include <algorithm>

namespace example {

namespace {

// What would end a field, or a line, of passwd and group.
bool isSeparator(char c) {
  return c == ':' || c == '\n' || c == '\0';
}

bool isField(const std::string& text) {
  return std::none_of(text.begin(), text.end(), isSeparator);
}

}  // namespace

bool isUsableId(uint32_t id) {
  return id != 0 && id != UINT32_MAX;
}

bool isUsableName(const std::string& name) {
  const bool isNumber = name.find_first_not_of("0123456789") == std::string::npos;  // or nothing at all
  return !isNumber && name[0] != '+' && name[0] != '-' && isField(name) && !ModuleSession::isReserved(name) &&
         name.find(',') == std::string::npos;  // which parts a group's members
}

bool Users::isUsable(const View& user) {
  return user.isUnix() && isUsableId(user.getId()) && isUsableId(user.gid()) &&
         isUsableName(user.unixName()) && isField(user.password()) && isField(user.home()) &&
         isField(user.shell());
}

passwd Users::write(const View& user, CallerBuffer& buffer) {
  std::string gecos = user.gecos();  // only for people: rather changed than a reason to refuse the user
  std::replace_if(gecos.begin(), gecos.end(), isSeparator, ' ');
  passwd entry = {};
  entry.pw_name = buffer.text(user.unixName());
  entry.pw_passwd = buffer.text(user.password());
  entry.pw_uid = user.getId();
  entry.pw_gid = user.gid();
  entry.pw_gecos = buffer.text(gecos);
  entry.pw_dir = buffer.text(user.home());
  entry.pw_shell = buffer.text(user.shell());
  return entry;
}

bool Groups::isUsable(const View& group) {
  return group.isUnix() && isUsableId(group.getId()) && isUsableName(group.unixName()) &&
         isField(group.password());
}

group Groups::write(const View& view, CallerBuffer& buffer) {
  std::list<std::string> members = view.members();
  members.remove_if([](const std::string& name) { return !isUsableName(name); });
  group entry = {};
  entry.gr_name = buffer.text(view.unixName());
  entry.gr_passwd = buffer.text(view.password());
  entry.gr_gid = view.getId();
  entry.gr_mem = buffer.texts(members);
  return entry;
}

}  // namespace example
