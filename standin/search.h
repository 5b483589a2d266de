/// One LDAP search over the directory, read in portions.
#pragma once

#include <string>
#include <vector>

#include <fokrazo/session_types.h>
#include "standin/ldap_filter.h"
#include "standin/membership.h"

namespace standin {

class Directory;

/// A search that remembers its position. Entries that are added meanwhile may still be found. The empty base
/// means the root entry with ScopeBase, and the domain with any other scope. Thread-safety: one thread at a
/// time.
class Search {
 public:
  /// `directory` must outlive the search.
  /// @throws Error the scope is unknown, the filter is bad, or no entry is at or below the base.
  Search(const Directory& directory, const std::string& base, vesk::LdapSearchScopeType scope,
         const std::string& filter);

  /// The next matches, at most `limit`; none at the end.
  std::vector<EntryId> next(size_t limit);
  /// Whether the search is for the root entry, and matches it. The root entry has no number, so next()
  /// returns nothing then.
  bool findsRoot() const;

 private:
  bool isInScope(EntryId id) const;
  void checkBase() const;

  const Directory& m_directory;
  LdapFilter m_filter;
  vesk::LdapSearchScopeType m_scope;
  bool m_isRoot;
  std::string m_baseKey;
  EntryId m_next = 0;
};

}  // namespace standin
