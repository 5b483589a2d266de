/// Converts directory entries to the objects that clients receive.
#pragma once

#include <string>
#include <vector>

#include <fokrazo/adobject.h>
#include "daemon/backend.h"
#include "standin/membership.h"

namespace standin {

class Directory;
class Entry;

/// An object has the entry's own attributes unchanged, the names that Unix views read (`_UnixName`, `_Uid`,
/// `_Members` and others), and the entry's GUID, SID and sequence number.
///
/// Attribute names ignore case. In a list of wanted attributes, "*" or no names mean all and "1.1" means
/// none; name, GUID and SID are always included. Thread-safety: one thread at a time.
class AttributeMap {
 public:
  /// `directory` must outlive the map.
  explicit AttributeMap(const Directory& directory);

  /// The complete object of an entry, cached until the directory changes.
  brondalt::Object blob(EntryId id);
  /// As above if `wanted` is empty; otherwise a new object with those attributes.
  brondalt::Object blob(EntryId id, const std::vector<std::string>& wanted);
  /// A new object for the root entry.
  brondalt::Object root(const std::vector<std::string>& wanted) const;

  /// A new object with the attributes `wanted`, not yet serialized.
  vesk::ADObject object(EntryId id, const std::vector<std::string>& wanted) const;

 private:
  const Directory& m_directory;
  std::vector<brondalt::Object> m_blobs;  // by entry id; null until needed
  unsigned long m_generation = 0;         // of the directory when they were created
};

}  // namespace standin
