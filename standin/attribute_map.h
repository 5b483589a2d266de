/// Turns entries of the directory into the objects that clients see.
#pragma once

#include <string>
#include <vector>

#include <fokrazo/adobject.h>
#include "daemon/backend.h"
#include "standin/membership.h"

namespace standin {

class Directory;
class Entry;

/// An object holds the entry's own attributes as they stand, and beside them the names that Unix views read:
/// `_UnixName`, `_Uid`, `_Members` and so on, with the GUID, the SID and the sequence number of the entry.
///
/// Where attributes are named, the case of letters does not matter. An empty list and "*" want all, "1.1"
/// wants none; name, GUID and SID are always there. Thread-safety: one thread at a time.
class AttributeMap {
 public:
  /// `directory` must outlive the map.
  explicit AttributeMap(const Directory& directory);

  /// The complete object of an entry, kept until the directory changes.
  brondalt::Object blob(EntryId id);
  /// As blob, for an empty list; otherwise a new object with the attributes of `wanted`.
  brondalt::Object blob(EntryId id, const std::vector<std::string>& wanted);
  /// A new object of the directory's root entry.
  brondalt::Object root(const std::vector<std::string>& wanted) const;

  /// A new object with the attributes of `wanted`, not yet serialized.
  vesk::ADObject object(EntryId id, const std::vector<std::string>& wanted) const;

 private:
  const Directory& m_directory;
  std::vector<brondalt::Object> m_blobs;  // by number; null until asked for
  unsigned long m_generation = 0;         // of the directory when they were made
};

}  // namespace standin
