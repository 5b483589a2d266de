/// Who belongs to which group, nested groups included.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace standin {

/// The number of an entry in its directory, in the order of loading. It never changes.
using EntryId = uint32_t;
constexpr EntryId kNoEntry = UINT32_MAX;

/// A graph with an edge from each member to each group that contains it directly. Groups may contain each
/// other in circles; every walk visits an entry once. Thread-safety: none needed for reading.
class Membership {
 public:
  /// A graph of `count` entries without edges.
  explicit Membership(size_t count);

  /// Adds an edge; duplicates count once.
  void add(EntryId member, EntryId group);
  /// Call it once, after the last edge and before the first walk.
  void finish();

  /// All groups above an entry, nearest first, without the entry itself.
  std::vector<EntryId> groupsAbove(EntryId member) const;
  /// All entries below a group, groups among them, nearest first, without the group itself.
  std::vector<EntryId> membersBelow(EntryId group) const;

 private:
  using Edges = std::vector<std::vector<EntryId>>;

  static std::vector<EntryId> walk(const Edges& edges, EntryId start);

  Edges m_up;
  Edges m_down;
};

}  // namespace standin
