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

}  // namespace

void printUser(Output& output, const User& user) {
  Record record = identity(user);
  record.text("name", user.unixName())
      .text("accountName", user.getName())
      .number("uid", user.getId())
      .number("gid", user.gid())
      .text("gecos", user.gecos())
      .text("home", user.home())
      .text("shell", user.shell());
  output.record(record, lineField(user.unixName()) + ":x:" + uidtoa(user.getId()) + ':' + gidtoa(user.gid()) +
                            ':' + lineField(user.gecos()) + ':' + lineField(user.home()) + ':' +
                            lineField(user.shell()));
}

void printGroup(Output& output, const Group& group) {
  Record record = identity(group);
  record.text("name", group.unixName())
      .text("accountName", group.name())
      .number("gid", group.getId())
      .texts("members", group.members());
  output.record(record, lineField(group.unixName()) + ":x:" + gidtoa(group.getId()) + ':' +
                            lineField(concat(group.members(), ",")));
}

void printShadow(Output& output, const User& user) {
  const struct {
    const char* name;
    const std::string& attribute;
  } fields[] = {
      {"lastChange", VESK_SHADOW_LASTCHANGE},
      {"min", VESK_SHADOW_MIN},
      {"max", VESK_SHADOW_MAX},
      {"warning", VESK_SHADOW_WARNING},
      {"inactive", VESK_SHADOW_INACTIVE},
      {"expire", VESK_SHADOW_EXPIRE},
      {"flag", VESK_SHADOW_FLAG},
  };
  Record record;
  record.text("type", "shadow").text("name", user.unixName());
  std::string line = lineField(user.unixName()) + ":x";
  for (const auto& field : fields) {
    const std::string value = valueOf(user, field.attribute);
    record.text(field.name, value);
    line += ':' + lineField(value);
  }
  output.record(record, line);
}

void printObject(Output& output, ADObject object) {
  object.deSerialize(false);
  Record record;
  record.text("guid", object.guid().toRealMSString());
  if (!object.sid().isNull()) record.text("sid", textOf(object.sid()));
  for (const auto& entry : object.attributes())
    if (!entry.second.empty()) record.texts(entry.first, entry.second);
  output.record(record);
}

}  // namespace cli
