#include <fokrazo/adobject.h>

#include <algorithm>
#include <ctime>
#include <memory>
#include <sstream>

#include <boost/make_shared.hpp>

#include <fokrazo/adserializer.h>
#include <fokrazo/attrnames.h>
#include <fokrazo/dn.h>
#include <fokrazo/fixed_paths.h>
#include <fokrazo/log.h>
#include <fokrazo/strutil.h>
#include "util/error/throw.h"
#include "util/file/file_io.h"
#include "util/file/open_file.h"
#include "util/text/printed.h"
#include "util/thread/clock.h"

namespace vesk {
namespace {

constexpr char kSource[] = "lrpc/adobject";

constexpr char kLogger[] = "lrpc.adobject";

}  // namespace

struct ADObjectImpl {
  Guid guid;
  SID sid;
  ADAttributeMap attributes;
  Int64 usn;
  long acquired = 0;
  bool deserialized = true;  // nothing is left to read from the blob
  std::unique_ptr<ADSerializer> serializer;
  VeskCache* cache = nullptr;
  bool indexed = false;

  bool hasUnread() const { return serializer && !deserialized; }
  ADAttribute& attribute(std::string_view name);
};

struct ADObjectListImpl {
  std::list<ADObject> objects;
};

ADAttribute& ADObjectImpl::attribute(std::string_view name) {
  auto place = attributes.lower_bound(name);
  if (place == attributes.end() || place->first != name)
    place = attributes.emplace_hint(place, name, ADAttribute());
  ADAttribute& found = place->second;
  if (!found.name().empty()) return found;
  found.setName(name);
  if (hasUnread()) serializer->read(found);
  return found;
}

ADObject::ADObject(const std::string& dn) : m_impl(boost::make_shared<ADObjectImpl>()) {
  m_impl->acquired = dayclock::now();
  VESK_LOG_TO(kLogger, Debug, "new object: %s", dn.c_str());
  (*this)[AD_DN] = DN::dnFromExtendedDN(dn);
  if (dn.compare(0, 1, "<") != 0 || dn.find(';') == std::string::npos) return;
  m_impl->guid.fromExtendedDN(dn);
  if (dn.find(">;<SID=") == std::string::npos) return;
  m_impl->sid.fromExtendedDN(dn);
  (*this)[VESK_SID] = m_impl->sid.toMSString();
}

ADObject::ADObject(unsigned int size, char* data, bool ownsData, VeskCache* cache)
    : m_impl(boost::make_shared<ADObjectImpl>()) {
  m_impl->serializer = std::make_unique<ADSerializer>(size, data, ownsData);
  m_impl->deserialized = false;
  m_impl->cache = cache;
  m_impl->acquired = m_impl->serializer->getAcquired();
  m_impl->guid = m_impl->serializer->guid();
  m_impl->usn = m_impl->serializer->getUsn();
  m_impl->indexed = m_impl->serializer->getIndexed();
}

ADObjectImpl& ADObject::body() const {
  isValid();
  return *m_impl;
}

void ADObject::isValid() const {
  if (!m_impl) FOKRAZO_THROW(SystemException, "SystemException", 0, "Null adobject");
}

bool ADObject::isEmpty() const {
  return !m_impl || (m_impl->attributes.empty() && !m_impl->serializer);
}

ADObject ADObject::clone() const {
  const ADObjectImpl& from = body();
  ADObject copy;
  copy.m_impl = boost::make_shared<ADObjectImpl>();
  ADObjectImpl& to = *copy.m_impl;
  to.guid = from.guid;
  to.sid = from.sid;
  to.attributes = from.attributes;
  to.usn = from.usn;
  to.acquired = from.acquired;
  to.deserialized = from.deserialized;
  if (from.serializer) to.serializer = from.serializer->clone();
  to.cache = from.cache;
  to.indexed = from.indexed;
  return copy;
}

ADObject ADObject::copy(const char* const* names) {
  ADObject to(attributeExists(AD_DN, true) ? std::string((*this)[AD_DN]) : EMPTY_STRING);
  to.m_impl->guid = guid();
  for (; *names; ++names)
    if (!copyAttribute(to, *names)) copyInAnyCase(to, *names);
  copyAttribute(to, VESK_SID.c_str());
  copyAttribute(to, AD_SERVER.c_str());
  return to;
}

void ADObject::copyInAnyCase(ADObject& to, const char* name) {
  deSerialize(false);
  const std::string wanted = lower(name);
  for (const auto& entry : attributes()) {
    if (lower(entry.first) != wanted) continue;
    to[name] = static_cast<const ADAttribute::Values&>(entry.second);
    break;
  }
  VESK_LOG_TO(kLogger, Debug, "copy attribute %s not found", name);
}

// Attributes.

ADAttribute& ADObject::operator[](const std::string& name) {
  return body().attribute(name);
}

ADAttribute& ADObject::operator[](const char* name) {
  return body().attribute(name);
}

bool ADObject::attributeExists(const std::string& name, bool needValue) const {
  const ADObjectImpl& impl = body();
  auto found = impl.attributes.find(name);
  if (found != impl.attributes.end()) return !needValue || !found->second.empty();
  return impl.hasUnread() && impl.serializer->exists(name, needValue);
}

const std::string* ADObject::firstValue(const std::string& name) {
  if (!GOFAST1 && !attributeExists(name, true)) return nullptr;
  const ADAttribute& attribute = (*this)[name];
  return attribute.empty() ? nullptr : &attribute.front();
}

unsigned int ADObject::erase(const std::string& name) {
  ADObjectImpl& impl = body();
  size_t inMap = impl.attributes.erase(name);
  unsigned int inBlob = impl.serializer ? impl.serializer->erase(name) : 0;
  return inMap ? inMap : inBlob;
}

bool ADObject::copyAttribute(ADObject& to, const char* name) {
  if (!attributeExists(name, true)) return false;
  to[name] = static_cast<const ADAttribute::Values&>((*this)[name]);
  return true;
}

void ADObject::merge(ADObject& other) {
  other.deSerialize(false);
  for (const auto& entry : other.attributes()) {
    const ADAttribute::Values& values = entry.second;
    if (entry.first == VESK_ATTRIBUTE_HASH)
      mergeHashes(values);
    else if (!attributeExists(entry.first, true))
      (*this)[entry.first] = values;
  }
}

void ADObject::mergeHashes(const ADAttribute::Values& hashes) {
  ADAttribute& own = (*this)[VESK_ATTRIBUTE_HASH];
  own += hashes;
  own.setMarks(true, false);
  own.sort();
  own.unique();
}

long ADObject::getTime(const std::string& name, long fallback) {
  return convertTime(name, fallback, &ADAttribute::toTime);
}

long ADObject::getUnixTime(const std::string& name, long fallback) {
  return convertTime(name, fallback, &ADAttribute::toUnixTime);
}

long ADObject::convertTime(const std::string& name, long fallback, long (ADAttribute::*convert)() const) {
  if (!attributeExists(name, true)) return fallback;
  try {
    return ((*this)[name].*convert)();
  } catch (const std::exception& failure) {
    VESK_LOG_TO(kLogger, Debug, "Failed to convert attribute %s to time. Error: %s", name.c_str(),
                failure.what());
    return fallback;
  }
}

bool ADObject::compareAttribute(ADObject& other, const std::string& name, bool bothAbsent) {
  const std::string* own = firstValue(name);
  const std::string* others = other.firstValue(name);
  if (!own && !others) return bothAbsent;
  return (own ? *own : EMPTY_STRING) == (others ? *others : EMPTY_STRING);
}

const ADAttributeMap& ADObject::attributes() const {
  return body().attributes;
}

// Identity and state.

SID& ADObject::sid() {
  ADObjectImpl& impl = body();
  if (!impl.sid.isNull()) return impl.sid;
  if (attributeExists(VESK_SID, true))
    impl.sid.fromMSString((*this)[VESK_SID]);
  else if (attributeExists(AD_SID, true))
    impl.sid = SID((*this)[AD_SID].front());
  return impl.sid;
}

void ADObject::setSID(const std::string& text) {
  body().sid.fromMSString(text);
  (*this)[VESK_SID] = text;
}

Guid ADObject::guid() const {
  return body().guid;
}

Int64 ADObject::usn() const {
  return body().usn;
}

void ADObject::setUsn(Int64 usn) {
  ADObjectImpl& impl = body();
  impl.usn = usn;
  if (impl.serializer) impl.serializer->setUsn(usn);
}

long ADObject::acquired() const {
  return body().acquired;
}

void ADObject::setAcquired(long acquired) {
  ADObjectImpl& impl = body();
  impl.acquired = acquired;
  if (impl.serializer) impl.serializer->setAcquired(acquired);
}

bool ADObject::indexed() const {
  return body().indexed;
}

void ADObject::setIndexed(bool indexed) {
  ADObjectImpl& impl = body();
  impl.indexed = indexed;
  if (impl.serializer) impl.serializer->setIndexed(indexed);
}

VeskCache* ADObject::cache() const {
  return body().cache;
}

std::string ADObject::toString() {
  if (isEmpty()) return "(null ADObject)";
  std::string text = guid().toDN() + ";";
  if (!sid().isNull()) text += sid().toDN() + ";";
  return text + std::string((*this)[AD_DN]);
}

// Changes.

bool ADObject::usnChanged(const std::string& a, const std::string& b) {
  return a.empty() || b.empty() || a != b;
}

bool ADObject::usnChangedUnder(const std::string& name, ADObject& other, const std::string& otherName) {
  const std::string* own = firstValue(name);
  const std::string* others = other.firstValue(otherName);
  return usnChanged(own ? *own : EMPTY_STRING, others ? *others : EMPTY_STRING);
}

bool ADObject::adUsnChanged(ADObject& other) {
  return other.isEmpty() || usnChangedUnder(AD_USN_CHANGED, other, AD_USN_CHANGED);
}

bool ADObject::extUsnChanged(ADObject& other, bool direct) {
  if (other.isEmpty()) return true;
  if (direct) return usnChangedUnder(VESK_EXTOBJ_USN + other.guid().toString(), other, AD_USN_CHANGED);
  if (!other.attributeExists(VESK_OBJ_EXTENDED, true)) return false;
  for (const std::string& guid : other[VESK_OBJ_EXTENDED]) {
    const std::string key = VESK_EXTOBJ_USN + guid;
    if (usnChangedUnder(key, other, key)) return true;
  }
  return false;
}

// The blob.

ADSerializer* ADObject::getSerialized() {
  ADObjectImpl& impl = body();
  if (impl.serializer && serializedClean()) return impl.serializer.get();
  if (impl.hasUnread()) {
    deSerialize(false);
    VESK_LOG_TO(kLogger, Debug, "deserializing to getSerialized");
  }
  impl.serializer.reset();
  impl.serializer = ADSerializer::serialize(*this);
  impl.deserialized = true;
  return impl.serializer.get();
}

ADSerializer* ADObject::serializer() const {
  return body().serializer.get();
}

void ADObject::markSerialized() {
  for (auto& entry : body().attributes) entry.second.setMarks(entry.second.dirty(), true);
}

bool ADObject::serializedClean() const {
  const ADAttributeMap& all = body().attributes;
  return std::all_of(all.begin(), all.end(), [](const auto& entry) { return entry.second.serialized(); });
}

void ADObject::deSerialize(bool release) {
  deSerialize(ADSerializer::kHeaderSize, ADSerializer::m_dictionary, release);
}

void ADObject::deSerialize(unsigned int indexOffset, const StringArray& dictionary, bool release) {
  ADObjectImpl& impl = body();
  if (!impl.hasUnread()) return;
  impl.serializer->readAll(impl.attributes, indexOffset, dictionary);
  impl.deserialized = true;
  if (release) impl.serializer.reset();
}

// Printing.

void ADObject::dump() const {
  printTo(stdout, [this](std::ostream& out) { dump(out); });
}

void ADObject::dump(std::ostream& out) const {
  if (isEmpty()) {
    out << "null ADObject\n";
    return;
  }
  char time[32];
  out << "ADObject: " << m_impl->guid.toDN() << '\n';
  out << "Acquired: " << (ctime_r(&m_impl->acquired, time) ? time : "?\n");
  out << "IsIndexed: " << (m_impl->indexed ? "Yes" : "No") << '\n';
  if (!m_impl->attributes.empty()) out << "Deserialized data:\n";
  for (const auto& entry : m_impl->attributes) entry.second.dump(out);
  if (m_impl->hasUnread()) sdump(out);
}

void ADObject::sdump() const {
  printTo(stdout, [this](std::ostream& out) { sdump(out); });
}

void ADObject::sdump(std::ostream& out) const {
  ADSerializer::dump(m_impl ? m_impl->serializer.get() : nullptr, out);
}

// Lists.

ADObjectList ADObjectList::create() {
  ADObjectList list;
  list.m_impl = boost::make_shared<ADObjectListImpl>();
  return list;
}

bool ADObjectList::empty() const {
  return size() == 0;
}

size_t ADObjectList::size() const {
  return m_impl ? m_impl->objects.size() : 0;
}

void ADObjectList::push_back(const ADObject& object) {
  if (!m_impl) *this = create();
  m_impl->objects.push_back(object);
}

ADObjectList::iterator ADObjectList::begin() const {
  return m_impl ? m_impl->objects.begin() : iterator();
}

ADObjectList::iterator ADObjectList::end() const {
  return m_impl ? m_impl->objects.end() : iterator();
}

void ADObjectList::dump() const {
  printTo(stdout, [this](std::ostream& out) { dump(out); });
}

void ADObjectList::dump(std::ostream& out) const {
  int number = 0;
  for (const ADObject& object : *this) {
    out << ++number << ':';
    object.dump(out);
  }
}

namespace {

std::string joinLines(const std::string& lines) {
  std::istringstream in(lines);
  std::string joined;
  for (std::string line; std::getline(in, line);) {
    if (!joined.empty()) joined += "; ";
    joined += line;
  }
  return joined;
}

// The object's dump on one line. Also written to paths::kAssertFile, if that exists: then with what the file
// has after it.
std::string assertText(const ADObject& object) {
  std::ostringstream out;
  object.dump(out);
  std::string text = out.str();
  const UniqueFd file = openFile(paths::kAssertFile, Open::ReadWrite);
  if (file && writeAll(file.get(), text)) readAll(file.get(), text);
  return joinLines(text);
}

}  // namespace
}  // namespace vesk

void ADObjAssert(vesk::ADObject& object, bool condition, const char* expression, const char* file, int line) {
  if (condition) return;
  const std::string text = vesk::assertText(object);  // writes the file even if FATAL is not logged
  VESK_LOG_TO(vesk::kLogger, Fatal, "ADObjAssert: %s:%d assertion %s failed, obj = %s", file, line,
              expression, text.c_str());
}
