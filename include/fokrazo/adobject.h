/// Directory objects in memory.
#pragma once

#include <iosfwd>
#include <list>
#include <string>

#include <boost/shared_ptr.hpp>

#include <fokrazo/adattribute.h>
#include <fokrazo/export.h>
#include <fokrazo/guid.h>
#include <fokrazo/int64.h>
#include <fokrazo/sid.h>

namespace vesk {

class ADSerializer;
class StringArray;
/// A cache of the daemon; the library only passes the pointer on.
class VeskCache;
struct ADObjectImpl;
struct ADObjectListImpl;

/// A directory entry: named attributes with text values, a GUID, a SID, an update sequence number and the
/// time it was acquired. A handle: copies share one body; only clone() copies the body. An object made from a
/// blob (<fokrazo/adserializer.h>) reads each attribute on first access. getSerialized rebuilds the blob only
/// if attributes have changed. On a null handle every operation but isNull, isEmpty, toString and the dumps
/// throws SystemException "Null adobject".
/// Thread-safety: one thread at a time for all handles of a body, because even reading changes the body.
class FOKRAZO_API ADObject {
 public:
  /// A null handle.
  ADObject() = default;
  /// A new object, acquired now. `dn` is a plain DN or the extended form "<GUID=…>;<SID=…>;DN", which also
  /// sets the GUID and the SID.
  /// @throws BadDataException, BaseException the extended form cannot be parsed
  explicit ADObject(const std::string& dn);
  /// An object made from a blob of `size` bytes; only the header is read now. With `ownsData` the bytes come
  /// from malloc and are freed with the body; otherwise they must outlive it, or until deSerialize releases
  /// them. `cache` may be null.
  /// @throws BadDataException the blob is shorter than its header; `data` then remains the caller's
  ADObject(unsigned int size, char* data, bool ownsData, VeskCache* cache);

  /// Whether this is a null handle.
  bool isNull() const { return !m_impl; }
  /// A null handle, or a body with neither attributes nor a blob.
  bool isEmpty() const;
  /// @throws SystemException on a null handle; otherwise does nothing.
  void isValid() const;

  /// A separate object with the same content and its own copy of the blob.
  ADObject clone() const;
  /// A new object with the same GUID, `_dn`, `_SID` and `_server`, and with the attributes named in `names`,
  /// which ends with null. A name without an exact match is looked up again ignoring case.
  ADObject copy(const char* const* names);

  /// The attribute; an empty one is added if there is none. The reference stays valid until the attribute is
  /// erased.
  ADAttribute& operator[](const std::string& name);
  ADAttribute& operator[](const char* name);
  /// Whether there is such an attribute, with `needValue` one that has a value. Changes nothing.
  bool attributeExists(const std::string& name, bool needValue) const;
  /// The first value, null if there is none. May add an empty attribute.
  const std::string* firstValue(const std::string& name);
  /// Removes the attribute from body and blob; 1 if it was in either, else 0.
  unsigned int erase(const std::string& name);
  /// Copies this object's values to `to`. Returns whether it has any.
  bool copyAttribute(ADObject& to, const char* name);
  /// Adds the attributes that only `other` has; `_AttrHash` becomes the sorted union of both.
  void merge(ADObject& other);
  /// The attribute as a directory time or as seconds; `fallback` if it is missing or not a time.
  long getTime(const std::string& name, long fallback);
  long getUnixTime(const std::string& name, long fallback);
  /// Whether the first values are equal; a missing value counts as empty. Returns `bothAbsent` if both are
  /// missing.
  bool compareAttribute(ADObject& other, const std::string& name, bool bothAbsent);
  /// The attributes in the body: all of them after deSerialize, otherwise those accessed so far. Read-only:
  /// use operator[] to add and erase to remove.
  const ADAttributeMap& attributes() const;

  /// The SID, taken from `_SID` or else `securityIdentifier` on first access; null if there is neither.
  SID& sid();
  /// Sets the SID from its text form, and `_SID` to that text. @throws BaseException not a SID
  void setSID(const std::string& text);
  /// Null or 0 while not known.
  Guid guid() const;
  Int64 usn() const;
  void setUsn(Int64 usn);
  /// Seconds since the epoch.
  long acquired() const;
  void setAcquired(long acquired);
  /// A flag of the daemon's; the library does not use it.
  bool indexed() const;
  void setIndexed(bool indexed);
  /// The constructor's argument.
  VeskCache* cache() const;

  /// The kind of object in one word, kept in `_objectCategory`; empty if it is unknown.
  std::string category();
  /// The extended DN, as the constructor accepts it; "(null ADObject)" for an empty object.
  std::string toString();

  /// Whether two sequence numbers show a change: they differ, or one is unknown.
  static bool usnChanged(const std::string& a, const std::string& b);
  /// Whether `other` is a changed version of this object.
  bool adUsnChanged(ADObject& other);
  /// Whether an object that extends this one has changed: with `direct`, `other` itself; otherwise one of
  /// those that `other` lists.
  bool extUsnChanged(ADObject& other, bool direct);

  /// The object's blob, up to date; owned by the body, valid until the object changes.
  ADSerializer* getSerialized();
  /// The blob as it is, null if there is none.
  ADSerializer* serializer() const;
  /// Whether all attributes in the body are what the blob holds.
  bool serializedClean() const;
  /// Reads the attributes not yet read from the blob; with `release`, then drops the blob.
  /// @throws BadDataException bad bytes; what was read before them stays
  void deSerialize(bool release);
  /// As above, for a blob of another release, which was written with `dictionary`. Its index begins at
  /// `indexOffset`.
  void deSerialize(unsigned int indexOffset, const StringArray& dictionary, bool release);

  /// Print the object, or only its blob, as text; to standard output by default.
  void dump() const;
  void dump(std::ostream& out) const;
  void sdump() const;
  void sdump(std::ostream& out) const;

 private:
  friend class ADSerializer;
  ADObjectImpl& body() const;
  void markSerialized();
  void copyInAnyCase(ADObject& to, const char* name);
  void mergeHashes(const ADAttribute::Values& hashes);
  long convertTime(const std::string& name, long fallback, long (ADAttribute::*convert)() const);
  bool usnChangedUnder(const std::string& name, ADObject& other, const std::string& otherName);

  boost::shared_ptr<ADObjectImpl> m_impl;
};

/// A list of objects. A handle: copies share one body. A null list reads as an empty one; the first append
/// creates a body. Thread-safety: one thread at a time for all handles of a body.
class FOKRAZO_API ADObjectList {
 public:
  /// As in a std::list.
  using iterator = std::list<ADObject>::iterator;

  /// A null handle.
  ADObjectList() = default;
  /// An empty list with a body.
  static ADObjectList create();

  /// Whether this is a null handle.
  bool isNull() const { return !m_impl; }
  /// As in a std::list.
  bool empty() const;
  size_t size() const;
  /// Appends; the handle shares its body.
  void push_back(const ADObject& object);
  iterator begin() const;
  iterator end() const;

  /// Prints each object after its number, to standard output by default.
  void dump() const;
  void dump(std::ostream& out) const;

 private:
  boost::shared_ptr<ADObjectListImpl> m_impl;
};

}  // namespace vesk

/// The model's assertion: if `condition` is false, writes the object to the file paths::kAssertFile (which
/// must exist and is not truncated) and logs the file's text at FATAL. Always returns.
FOKRAZO_API void ADObjAssert(vesk::ADObject& object, bool condition, const char* expression, const char* file,
                             int line);

namespace vesk {
using ::ADObjAssert;
}  // namespace vesk
