#include "cli/views.h"

#include <fokrazo/adobject.h>
#include <fokrazo/attrnames.h>
#include <fokrazo/strutil.h>
#include <fokrazo/unixviews.h>
#include "cli/output.h"

namespace cli {

namespace {

using namespace vesk;

// Empty for a null SID.
std::string textOf(const SID& sid) {
  return sid.isNull() ? std::string() : sid.toMSString();
}

Record identity(const VeskObj& view) {
  Record record;
  record.text("type", view.getType() == 0 ? "user" : "group")
      .boolean("unix", view.isUnix())
      .text("dn", view.getDN())
      .text("sid", textOf(view.getSid()))
      .text("guid", view.getGuid().toRealMSString());
  return record;
}

// The first value of an attribute, empty if there is none.
std::string valueOf(const VeskObj& view, const std::string& name) {
  ADObject object = view.getObject();
  return object.attributeExists(name, true) ? std::string(object[name]) : std::string();
}

// The fields of a line, joined by colons.
std::string lineOf(const std::vector<std::string>& fields) {
  std::string line;
  for (const std::string& field : fields) line += (&field == &fields.front() ? "" : ":") + lineField(field);
  return line;
}

const struct {
  const char* name;
  const char* title;
  const std::string& attribute;
} kShadowFields[] = {
    {"lastChange", "CHANGED", VESK_SHADOW_LASTCHANGE},
    {"min", "MIN", VESK_SHADOW_MIN},
    {"max", "MAX", VESK_SHADOW_MAX},
    {"warning", "WARNING", VESK_SHADOW_WARNING},
    {"inactive", "INACTIVE", VESK_SHADOW_INACTIVE},
    {"expire", "EXPIRE", VESK_SHADOW_EXPIRE},
    {"flag", "FLAG", VESK_SHADOW_FLAG},
};

}  // namespace

View viewOf(const User& user) {
  const std::string& name = user.unixName();
  const std::string uid = uidtoa(user.getId());
  const std::string gid = gidtoa(user.gid());
  Record record = identity(user);
  record.text("name", name)
      .text("accountName", user.getName())
      .number("uid", user.getId())
      .number("gid", user.gid())
      .text("gecos", user.gecos())
      .text("home", user.home())
      .text("shell", user.shell());
  return {record,
          lineOf({name, "x", uid, gid, user.gecos(), user.home(), user.shell()}),
          {shown(name), uid, gid, shown(user.gecos()), shown(user.home()), shown(user.shell())}};
}

std::vector<std::string> userTitles() {
  return {"USER", "UID", "GID", "FULL NAME", "HOME", "SHELL"};
}

View viewOf(const Group& group) {
  const std::string& name = group.unixName();
  const std::string gid = gidtoa(group.getId());
  const std::string members = concat(group.members(), ",");
  Record record = identity(group);
  record.text("name", name)
      .text("accountName", group.name())
      .number("gid", group.getId())
      .texts("members", group.members());
  return {record, lineOf({name, "x", gid, members}), {shown(name), gid, shown(members)}};
}

std::vector<std::string> groupTitles() {
  return {"GROUP", "GID", "MEMBERS"};
}

View shadowViewOf(const User& user) {
  View view;
  std::vector<std::string> fields = {user.unixName(), "x"};
  view.record.text("type", "shadow").text("name", user.unixName());
  view.cells.push_back(shown(user.unixName()));
  for (const auto& field : kShadowFields) {
    const std::string value = valueOf(user, field.attribute);
    view.record.text(field.name, value);
    fields.push_back(value);
    view.cells.push_back(shown(value));
  }
  view.line = lineOf(fields);
  return view;
}

std::vector<std::string> shadowTitles() {
  std::vector<std::string> titles = {"USER"};
  for (const auto& field : kShadowFields) titles.emplace_back(field.title);
  return titles;
}

Record recordOf(ADObject object) {
  object.deSerialize(false);
  Record record;
  record.text("guid", object.guid().toRealMSString());
  if (!object.sid().isNull()) record.text("sid", textOf(object.sid()));
  for (const auto& entry : object.attributes())
    if (!entry.second.empty()) record.texts(entry.first, entry.second);
  return record;
}

}  // namespace cli
