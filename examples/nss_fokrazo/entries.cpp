#include "entries.h"

#include <algorithm>

namespace example {

namespace {

constexpr char kPasswordElsewhere[] = "x";  // in passwd and group
constexpr char kNoPassword[] = "*";         // in shadow: matches no password
constexpr long kUnset = -1;                 // an empty field of shadow

bool isUsableName(const std::string& name) {
  return vesk::isSafeAccountName(name) && name != kRoot;
}

// Characters that end a field or a line of passwd, or control a terminal.
bool isUnsafe(unsigned char c) {
  return c == ':' || c < 0x20 || c == 0x7f;
}

long numberOf(vesk::ADObject& object, const std::string& attribute) {
  return object.attributeExists(attribute, true) ? object[attribute].toInt() : kUnset;
}

}  // namespace

bool isUsableId(uint32_t id) {
  return id != 0 && id != UINT32_MAX;
}

bool Users::isUsable(const View& user) {
  return user.isUnix() && isUsableId(user.getId()) && isUsableId(user.gid()) &&
         isUsableName(user.unixName()) && vesk::isSafeAccountPath(user.home()) &&
         vesk::isSafeAccountPath(user.shell());
}

passwd Users::write(const View& user, CallerBuffer& buffer) {
  std::string gecos = user.gecos();  // only shown to people: no reason to reject the user
  std::replace_if(gecos.begin(), gecos.end(), isUnsafe, ' ');
  passwd entry = {};
  entry.pw_name = buffer.text(user.unixName());
  entry.pw_passwd = buffer.text(kPasswordElsewhere);
  entry.pw_uid = user.getId();
  entry.pw_gid = user.gid();
  entry.pw_gecos = buffer.text(gecos);
  entry.pw_dir = buffer.text(user.home());
  entry.pw_shell = buffer.text(user.shell());
  return entry;
}

bool Groups::isUsable(const View& group) {
  return group.isUnix() && isUsableId(group.getId()) && isUsableName(group.unixName());
}

group Groups::write(const View& view, CallerBuffer& buffer) {
  std::list<std::string> members = view.members();
  members.remove_if([](const std::string& name) { return !isUsableName(name); });
  group entry = {};
  entry.gr_name = buffer.text(view.unixName());
  entry.gr_passwd = buffer.text(kPasswordElsewhere);
  entry.gr_gid = view.getId();
  entry.gr_mem = buffer.texts(members);
  return entry;
}

spwd Shadows::write(const View& user, CallerBuffer& buffer) {
  vesk::ADObject object = user.getObject();
  spwd entry = {};
  entry.sp_namp = buffer.text(user.unixName());
  entry.sp_pwdp = buffer.text(kNoPassword);
  entry.sp_lstchg = numberOf(object, VESK_SHADOW_LASTCHANGE);
  entry.sp_min = numberOf(object, VESK_SHADOW_MIN);
  entry.sp_max = numberOf(object, VESK_SHADOW_MAX);
  entry.sp_warn = numberOf(object, VESK_SHADOW_WARNING);
  entry.sp_inact = numberOf(object, VESK_SHADOW_INACTIVE);
  entry.sp_expire = numberOf(object, VESK_SHADOW_EXPIRE);
  entry.sp_flag = static_cast<unsigned long>(kUnset);
  return entry;
}

}  // namespace example
