/// Converts directory objects to entries of the C library, and selects those that appear on the host.
#pragma once

#include <grp.h>
#include <pwd.h>
#include <shadow.h>

#include <optional>

#include "caller_buffer.h"

namespace example {

/// False for 0, which is root's, and for the last id, which means "none".
bool isUsableId(uint32_t id);

/// The passwd database.
struct Users {
  using View = vesk::User;
  using Entry = passwd;
  static constexpr vesk::DSObjectType kType = vesk::DSUser;
  static constexpr int kFlags = 0;  ///< for lookups

  static bool isUsable(const View& user);
  /// The password is always "x": no hash leaves the module, and no account has an empty password.
  /// @throws Failure the buffer is too small
  static Entry write(const View& user, CallerBuffer& buffer);
};

/// The group database. The password is always "x".
struct Groups {
  using View = vesk::Group;
  using Entry = group;
  static constexpr vesk::DSObjectType kType = vesk::DSGroup;
  static constexpr int kFlags = vesk::GROUP_MEMBERSHIP;

  static bool isUsable(const View& group);
  static Entry write(const View& group, CallerBuffer& buffer);
};

/// The shadow database: password ageing. The password is always "*", which matches none.
struct Shadows {
  using View = vesk::User;
  using Entry = spwd;
  static constexpr vesk::DSObjectType kType = vesk::DSShadow;
  static constexpr int kFlags = 0;

  static bool isUsable(const View& user) { return Users::isUsable(user); }
  static Entry write(const View& user, CallerBuffer& buffer);
};

/// The view of an object; empty if the object cannot appear on the host.
template <class Database>
std::optional<typename Database::View> usableView(const vesk::ADObject& object) {
  try {
    typename Database::View view(object);
    if (Database::isUsable(view)) return view;
  } catch (const VESKException&) {  // a required attribute is missing
  }
  return std::nullopt;
}

}  // namespace example
