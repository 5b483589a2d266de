/// Group memberships, including nested groups.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace standin {

/// The number of an entry in its directory, in the order of loading. Never changes.
using EntryId = uint32_t;
constexpr EntryId kNoEntry = UINT32_MAX;

/// A graph with an edge from each member to each group that contains it directly. Groups may contain each
/// other in cycles; every walk visits an entry once. Thread-safety: reads need no lock.
class Membership {
 public:
  /// A graph of `count` entries without edges.
  explicit Membership(size_t count);

  /// Adds an edge; duplicates count once.
  void add(EntryId member, EntryId group);
  /// Call once, after the last edge and before the first walk.
  void finish();

  /// All groups that contain an entry, nearest first, without the entry itself.
  std::vector<EntryId> groupsAbove(EntryId member) const;
  /// All entries in a group, including groups, nearest first, without the group itself.
  std::vector<EntryId> membersBelow(EntryId group) const;

 private:
  using Edges = std::vector<std::vector<EntryId>>;

  static std::vector<EntryId> walk(const Edges& edges, EntryId start);

  Edges m_up;
  Edges m_down;
};

}  // namespace standin
