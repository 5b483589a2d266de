/// The request of all lookups of one object. Internal.
#pragma once

#include <string>

#include <fokrazo/session_types.h>
#include "lrpc/session/exchange.h"

namespace vesk {

/// Among which objects a lookup with these flags looks.
inline LookupScope scopeOf(int flags) {
  return flags & UNIX_ONLY ? UnixObjects : AllObjects;
}

/// A lookup: the fields that all lookups have in common, and then the key.
class Lookup : public Exchange {
 public:
  template <class Key>
  Lookup(LocalRpcSession& session, IPC_OPCODE opcode, DSObjectType type, LookupScope scope, KeyKind keyKind,
         const Key& key, int flags)
      : Exchange(session, opcode, type, scope, keyKind, (flags & CHECK_AD_FIRST) != 0,
                 (flags & GROUP_MEMBERSHIP) != 0, key) {}

  /// As ask. Asking for the next entry advances a position in the daemon, so that request is never repeated.
  ValidationResult askByName(const std::string& name) { return name == NEXT_ENTRY ? askOnce() : ask(); }
};

}  // namespace vesk
