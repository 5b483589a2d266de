/// Makes the objects that clients see of the entries of the directory.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <fokrazo/adobject.h>
#include "standin/membership.h"

namespace vesk {
class ADSerializer;
}

namespace standin {

class Directory;
class Entry;

/// An object holds the entry's own attributes as they stand, and beside them the names that Unix views read:
/// `_UnixName`, `_Uid`, `_Members` and so on, with the GUID, the SID and the sequence number of the entry.
/// Thread-safety: one thread at a time.
class AttributeMap {
 public:
  /// `directory` must outlive the map.
  explicit AttributeMap(const Directory& directory);
  ~AttributeMap();
  AttributeMap(const AttributeMap&) = delete;
  AttributeMap& operator=(const AttributeMap&) = delete;

  /// The complete object of an entry in serialized form. Owned by the map, valid until the directory changes.
  vesk::ADSerializer* blob(EntryId id);

  /// A new object with the attributes of `wanted`, in any case of letters. An empty list and "*" want all,
  /// "1.1" wants none; name, GUID and SID are there in each case.
  vesk::ADObject object(EntryId id, const std::vector<std::string>& wanted) const;
  /// The same of the directory's root entry.
  vesk::ADObject rootObject(const std::vector<std::string>& wanted) const;

 private:
  const Directory& m_directory;
  std::vector<std::unique_ptr<vesk::ADSerializer>> m_blobs;  // by number; those asked for
  unsigned long m_generation = 0;                            // of the directory when they were made
};

}  // namespace standin
