/// What a directory object must be like to appear on the host, and how it becomes an entry of the C library.
#pragma once

#include <grp.h>
#include <pwd.h>

#include <optional>

#include "caller_buffer.h"

namespace example {

/// The directory gives nobody root's id or root's group, and the last id means "none" to the system.
bool isUsableId(uint32_t id);
/// Whether a text can stand as a name in lines of passwd and group, and nobody takes it for something else: a
/// number for an id, a sign at its beginning for an option or for a mark of such lines, "root" for root.
bool isUsableName(const std::string& name);

/// The passwd database.
struct Users {
  using View = vesk::User;
  using Entry = passwd;
  static constexpr vesk::DSObjectType kType = vesk::DSUser;
  static constexpr int kFlags = 0;  ///< of a lookup

  static bool isUsable(const View& user);
  /// @throws Failure too small a buffer
  static Entry write(const View& user, CallerBuffer& buffer);
};

/// The group database.
struct Groups {
  using View = vesk::Group;
  using Entry = group;
  static constexpr vesk::DSObjectType kType = vesk::DSGroup;
  static constexpr int kFlags = vesk::GROUP_MEMBERSHIP;

  static bool isUsable(const View& group);
  static Entry write(const View& group, CallerBuffer& buffer);
};

/// The view of an object; none if the object cannot appear on the host.
template <class Database>
std::optional<typename Database::View> usableView(const vesk::ADObject& object) {
  try {
    typename Database::View view(object);
    if (Database::isUsable(view)) return view;
  } catch (const VESKException&) {  // what it lacks is in no view
  }
  return std::nullopt;
}

}  // namespace example
