/// Constants shared by the session and the daemon. Wire values: never change them.
#pragma once

namespace vesk {

// Flags of the lookups.
constexpr int UNIX_ONLY = 1;         ///< only objects with a Unix profile
constexpr int CHECK_AD_FIRST = 2;    ///< ask the directory before the cache
constexpr int GROUP_MEMBERSHIP = 4;  ///< include group memberships
// Name forms, only for LocalRpcSession::validateUserGroup.
constexpr int UNIX_NAME = 8;
constexpr int WINDOWS_NAME = 16;

// Bits for LocalRpcSession::flushCache.
constexpr unsigned int FLUSH_OBJ_CACHE = 1;
constexpr unsigned int FLUSH_DNS_CACHE = 2;
constexpr unsigned int FLUSH_AUTH_STORE = 4;
constexpr unsigned int FLUSH_EXPIRE_OBJ_CACHE = 8;
constexpr unsigned int FLUSH_TRUSTS_CACHE = 16;
constexpr unsigned int FLUSH_REFRESH_BINDING = 32;
constexpr unsigned int FLUSH_PMON = 64;
constexpr unsigned int FLUSH_SYSTEM_HEALTH = 128;

/// The kind of object to look up or list.
enum DSObjectType : int {
  DSUser = 0,
  DSGroup = 1,
  DSShadow = 2,
  DSAny = 24,  ///< only for lookups by SID
};

/// The objects that a lookup searches.
enum LookupScope : int {
  UnixObjects = 0,  ///< objects with a Unix profile
  AllObjects = 2,
};

/// What the key of a lookup is.
enum KeyKind : int {
  KeyName = 0,
  KeyGuid = 1,
  KeyId = 2,  ///< a uid or gid
  KeySid = 3,
};

/// Instead of a name: the next entry of the open listing.
constexpr char NEXT_ENTRY[] = "@#";
/// The status code of the reply that ends a listing.
constexpr int END_OF_LIST = 10;

/// The scope of a search (RFC 4511).
enum LdapSearchScopeType : int {
  ScopeBase = 0,      ///< the base itself
  ScopeOneLevel = 1,  ///< the base's immediate children
  ScopeSubtree = 2,   ///< the base and everything below it
};

}  // namespace vesk
