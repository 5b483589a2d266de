/// Directory objects as the program holds them.
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
/// A cache of the daemon; the library only hands the pointer on.
class VeskCache;
struct ADObjectImpl;
struct ADObjectListImpl;

/// A directory entry: named attributes with text values, a GUID, a SID, an update sequence number and the
/// time it was acquired. A handle: copies share one body, clone() makes the only deep copy. An object over a
/// blob (<fokrazo/adserializer.h>) reads each attribute when it is first asked for; a blob is rebuilt only
/// when it is asked for and the attributes have changed. On a null handle every operation but isNull,
/// isEmpty, toString and the dumps throws SystemException "Null adobject". Thread-safety: one thread at a
/// time for all handles of a body, since reading writes.
class FOKRAZO_API ADObject {
 public:
  /// A null handle.
  ADObject() = default;
  /// A new object, acquired now. `dn` is a plain DN or the extended form "<GUID=…>;<SID=…>;DN", which gives
  /// the GUID and the SID as well. @throws BadDataException, BaseException an extended form that cannot be
  /// read.
  explicit ADObject(const std::string& dn);
  /// An object over a blob of `size` bytes; nothing but its header is read. With `ownsData` the bytes are
  /// from malloc and freed with the body, otherwise they must outlive the body or its blob. `cache` may be
  /// null.
  /// @throws BadDataException a blob shorter than its header; `data` then stays the caller's.
  ADObject(unsigned int size, char* data, bool ownsData, VeskCache* cache);

  /// Whether this is a null handle.
  bool isNull() const { return !m_impl; }
  /// A null handle, or a body with neither attributes nor a blob.
  bool isEmpty() const;
  /// @throws SystemException on a null handle; otherwise does nothing.
  void isValid() const;

  /// A separate object with the same content and its own copy of the blob.
  ADObject clone() const;
  /// A new object with the same GUID, `_dn`, `_SID` and `_server`, and of the other attributes those named in
  /// `names`, which ends with null. A name that is missing is looked for in any case.
  ADObject copy(const char* const* names);

  /// The attribute; made empty, to stay, if there is none. The reference holds until the attribute is erased.
  ADAttribute& operator[](const std::string& name);
  ADAttribute& operator[](const char* name);
  /// Whether there is such an attribute, with `needValue` one that has a value. Changes nothing.
  bool attributeExists(const std::string& name, bool needValue) const;
  /// The first value, null if there is none; an attribute that is absent may be left behind empty.
  const std::string* firstValue(const std::string& name);
  /// Removes the attribute from body and blob; 1 if it was in either, else 0.
  unsigned int erase(const std::string& name);
  /// Copies this object's values to `to`. Returns whether it has any.
  bool copyAttribute(ADObject& to, const char* name);
  /// Takes over what `other` has and this object has not; `_AttrHash` becomes the sorted union of both.
  void merge(ADObject& other);
  /// The attribute as a directory time or as seconds; `fallback` if it is absent or no time.
  long getTime(const std::string& name, long fallback);
  long getUnixTime(const std::string& name, long fallback);
  /// Whether the first values are equal, a missing one counting as empty; `bothAbsent` if both are missing.
  bool compareAttribute(ADObject& other, const std::string& name, bool bothAbsent);
  /// The attributes in the body: all of them after deSerialize, otherwise those asked for so far. For reading
  /// only. Use operator[] to add and erase to remove.
  const ADAttributeMap& attributes() const;

  /// The SID, taken from `_SID` or else `securityIdentifier` when first asked for; may stay null.
  SID& sid();
  /// Sets the SID from its text form, and `_SID` to that text. @throws BaseException no SID.
  void setSID(const std::string& text);
  /// Null; 0 while it is not known.
  Guid guid() const;
  Int64 usn() const;
  void setUsn(Int64 usn);
  /// Seconds since the epoch.
  long acquired() const;
  void setAcquired(long acquired);
  /// A mark of the daemon's.
  bool indexed() const;
  void setIndexed(bool indexed);
  /// What the constructor was given.
  VeskCache* cache() const;

  /// The kind of object in one word, kept in `_objectCategory`; empty if it is unknown.
  std::string category();
  /// The extended DN, which the constructor reads; "(null ADObject)" for an empty object.
  std::string toString();

  /// Whether two sequence numbers tell of a change: if they differ or one is unknown.
  static bool usnChanged(const std::string& a, const std::string& b);
  /// Whether `other` is a changed version of this object.
  bool adUsnChanged(ADObject& other);
  /// Whether an object that extends this one has changed: one of those that `other` lists, or with `direct`,
  /// `other` itself.
  bool extUsnChanged(ADObject& other, bool direct);

  /// The object's blob, up to date; owned by the body, valid until the object changes.
  ADSerializer* getSerialized();
  /// The blob as it is, null if there is none.
  ADSerializer* serializer() const;
  /// Whether all attributes in the body are what the blob holds.
  bool serializedClean() const;
  /// Reads what is still unread from the blob; with `release` drops the blob after that.
  /// @throws BadDataException bad bytes; what was read until then stays.
  void deSerialize(bool release);
  /// As above for a blob of another release: with the dictionary that it was written with. The index begins
  /// at `indexOffset`.
  void deSerialize(unsigned int indexOffset, const StringArray& dictionary, bool release);

  /// Print the object, or its blob alone, as text. Standard output by default.
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
/// gives it a body.
/// Thread-safety: one thread at a time for all handles of a body.
class FOKRAZO_API ADObjectList {
 public:
  /// Valid as of a std::list.
  using iterator = std::list<ADObject>::iterator;

  /// A null handle.
  ADObjectList() = default;
  /// A list that exists and is empty.
  static ADObjectList create();

  /// Whether this is a null handle.
  bool isNull() const { return !m_impl; }
  /// As of a std::list.
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

/// The model's assertion: if `condition` is false, writes the object to the scratch file of the data
/// directory (which it neither makes nor truncates) and logs the file's text at FATAL. Always returns.
FOKRAZO_API void ADObjAssert(vesk::ADObject& object, bool condition, const char* expression, const char* file,
                             int line);

namespace vesk {
using ::ADObjAssert;
}  // namespace vesk
