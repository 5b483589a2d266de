// Writing an object as a blob. The object is read here; ADSerializer itself knows attributes only.

#include <climits>
#include <cstring>

#include <fokrazo/adobject.h>
#include <fokrazo/attrnames.h>
#include "lrpc/model/adserializer_internal.h"
#include "util/error/throw.h"

namespace vesk {
namespace {

constexpr char kSource[] = "lrpc/adserializer";

}  // namespace

size_t ADSerializer::calcSize(ADObject& object) {
  object.deSerialize(false);
  size_t size = kHeaderSize;
  for (const auto& entry : object.attributes()) size += sizeAttribute(entry.second);
  return size;
}

std::unique_ptr<ADSerializer> ADSerializer::serialize(ADObject& object) {
  size_t records = calcSize(object);
  size_t size = records + blob::kWord * object.attributes().size();
  if (size > INT_MAX)
    FOKRAZO_THROW(BadDataException, "BadDataException", 0, "Object too large to serialize: %zu bytes", size);
  std::unique_ptr<ADSerializer> written(new ADSerializer(size));
  written->putHeader(object);
  written->m_cursor = written->m_data + kHeaderSize + blob::kWord * object.attributes().size();
  uint32_t position = 0;
  for (const auto& entry : object.attributes()) {
    written->setSlot(position++, written->m_cursor - written->m_data);
    written->putAttribute(entry.second);
  }
  object.markSerialized();
  return written;
}

void ADSerializer::putHeader(ADObject& object) {
  memset(m_data, 0, kHeaderSize);
  setAcquired(object.acquired());
  setHeader(blob::kGuid, object.guid());
  if (object.usn() == Int64::ZERO && object.attributeExists(AD_USN_CHANGED, true))
    object.setUsn(object[AD_USN_CHANGED].toInt64());
  setUsn(object.usn());
  setIndexed(object.indexed());
  setHeader(blob::kCount, static_cast<uint32_t>(object.attributes().size()));
}

}  // namespace vesk
