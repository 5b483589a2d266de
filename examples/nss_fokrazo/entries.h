/// Converts directory objects to entries of the C library, and selects those that appear on the host.
#pragma once

#include <grp.h>
#include <pwd.h>
#include <shadow.h>

#include "caller_buffer.h"

namespace example {

/// False for 0, which is root's, and for the last id, which means "none".
bool isUsableId(uint32_t id);

/// The passwd database.
struct Users {
  using View = vesk::User;
  using Range = vesk::UserRange;
  using Entry = passwd;

  static auto find(vesk::Client& client, const vesk::ObjectKey& key) {
    return client.user(key, vesk::UNIX_ONLY);
  }
  static auto list(vesk::Client& client, const vesk::CallOptions& options) {
    return client.users(vesk::UNIX_ONLY, options);
  }
  static bool isUsable(const View& user);
  /// The password is always "x": no hash leaves the module, and no account has an empty password.
  /// @throws Failure the buffer is too small
  static Entry write(const View& user, CallerBuffer& buffer);
};

/// The group database. The password is always "x".
struct Groups {
  using View = vesk::Group;
  using Range = vesk::GroupRange;
  using Entry = group;

  static auto find(vesk::Client& client, const vesk::ObjectKey& key) {
    return client.group(key, vesk::UNIX_ONLY | vesk::GROUP_MEMBERSHIP);
  }
  static auto list(vesk::Client& client, const vesk::CallOptions& options) {
    return client.groups(vesk::UNIX_ONLY, options);
  }
  static bool isUsable(const View& group);
  static Entry write(const View& group, CallerBuffer& buffer);
};

/// The shadow database: password ageing. The password is always "*", which matches none.
struct Shadows {
  using View = vesk::User;
  using Range = vesk::UserRange;
  using Entry = spwd;

  static auto find(vesk::Client& client, const vesk::ObjectKey& key) { return client.shadow(key.name()); }
  static auto list(vesk::Client& client, const vesk::CallOptions& options) { return client.shadows(options); }
  static bool isUsable(const View& user) { return Users::isUsable(user); }
  static Entry write(const View& user, CallerBuffer& buffer);
};

}  // namespace example
