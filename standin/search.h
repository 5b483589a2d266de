/// One LDAP search over the directory, in portions.
#pragma once

#include <string>
#include <vector>

#include <fokrazo/session_types.h>
#include "standin/ldap_filter.h"
#include "standin/membership.h"

namespace standin {

class Directory;

/// A search that keeps its position. Entries added meanwhile may still be found. The empty base means the
/// root entry with ScopeBase, and the domain with any other scope. Thread-safety: one thread at a time.
class Search {
 public:
  /// `directory` must outlive the search.
  /// @throws Error the scope or the filter is bad, or no entry is at or below the base
  Search(const Directory& directory, const std::string& base, vesk::LdapSearchScopeType scope,
         const std::string& filter);

  /// The next matches, at most `limit`; none at the end.
  std::vector<EntryId> next(size_t limit);
  /// Whether the search matches the root entry. That has no number, so next() returns nothing then.
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
