#include "standin/membership.h"

#include <algorithm>
#include <unordered_set>

namespace standin {
namespace {

void sortUnique(std::vector<EntryId>& ids) {
  std::sort(ids.begin(), ids.end());
  ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
}

}  // namespace

Membership::Membership(size_t count) : m_up(count), m_down(count) {}

void Membership::add(EntryId member, EntryId group) {
  m_up[member].push_back(group);
  m_down[group].push_back(member);
}

void Membership::finish() {
  for (std::vector<EntryId>& groups : m_up) sortUnique(groups);
  for (std::vector<EntryId>& members : m_down) sortUnique(members);
}

std::vector<EntryId> Membership::groupsAbove(EntryId member) const {
  return walk(m_up, member);
}

std::vector<EntryId> Membership::membersBelow(EntryId group) const {
  return walk(m_down, group);
}

std::vector<EntryId> Membership::walk(const Edges& edges, EntryId start) {
  std::vector<EntryId> reached;
  std::unordered_set<EntryId> seen = {start};
  auto visit = [&](EntryId id) {
    for (EntryId next : edges[id])
      if (seen.insert(next).second) reached.push_back(next);
  };
  visit(start);
  for (size_t i = 0; i < reached.size(); ++i) visit(reached[i]);
  return reached;
}

}  // namespace standin
