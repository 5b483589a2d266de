#include "standin/search.h"

#include "standin/directory.h"
#include "standin/dn_key.h"
#include "standin/error.h"

namespace standin {
namespace {

vesk::LdapSearchScopeType checked(vesk::LdapSearchScopeType scope) {
  if (scope < vesk::ScopeBase || scope > vesk::ScopeSubtree)
    throw Error("Unknown search scope " + std::to_string(scope));
  return scope;
}

}  // namespace

Search::Search(const Directory& directory, const std::string& base, vesk::LdapSearchScopeType scope,
               const std::string& filter)
    : m_directory(directory),
      m_filter(filter),
      m_scope(checked(scope)),
      m_isRoot(base.empty() && m_scope == vesk::ScopeBase),
      m_baseKey(dnKey(base.empty() ? directory.domain().baseDn : base)) {
  if (!base.empty()) checkBase();
}

void Search::checkBase() const {
  if (m_directory.byDn(m_baseKey) != kNoEntry) return;
  // A file may contain only a part of a directory: parents may be missing.
  if (m_scope != vesk::ScopeBase)
    for (EntryId id = 0; id < m_directory.size(); ++id)
      if (isWithin(m_directory.key(id), m_baseKey)) return;
  throw Error("No such object");
}

bool Search::isInScope(EntryId id) const {
  const std::string& key = m_directory.key(id);
  switch (m_scope) {
    case vesk::ScopeBase:
      return key == m_baseKey;
    case vesk::ScopeOneLevel:
      return parentKey(key) == m_baseKey;
    case vesk::ScopeSubtree:
      break;
  }
  return isWithin(key, m_baseKey);
}

std::vector<EntryId> Search::next(size_t limit) {
  std::vector<EntryId> found;
  if (m_isRoot) return found;
  for (; m_next < m_directory.size() && found.size() < limit; ++m_next)
    if (isInScope(m_next) && m_filter.matches(m_directory[m_next])) found.push_back(m_next);
  return found;
}

bool Search::findsRoot() const {
  return m_isRoot && m_filter.matches(m_directory.rootEntry());
}

}  // namespace standin
