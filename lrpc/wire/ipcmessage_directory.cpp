// The fields of a message that carry identities and directory objects.

#include <fokrazo/adobject.h>
#include <fokrazo/adserializer.h>
#include <fokrazo/ipcmessage.h>
#include <fokrazo/qtr_ber.h>
#include "lrpc/wire/received_text.h"
#include "util/error/throw.h"

namespace vesk {

namespace {

constexpr char kSource[] = "lrpc/ipcmessage";

}  // namespace

IPCMessage& IPCMessage::operator+=(const SID& sid) {
  doHeader();
  const std::string& bytes = sid.checkedBytes();
  put(bytes.data(), bytes.size(), "ber_printf sid");
  return *this;
}

IPCMessage& IPCMessage::operator+=(const Guid& guid) {
  put(guid.bytes(), Guid::kSize, "ber_printf guid");
  return *this;
}

IPCMessage& IPCMessage::operator+=(ADSerializer* serializer) {
  if (!serializer) FOKRAZO_THROW(IOException, "IOException", 0, "ber_printf ADObject");
  put(serializer->data(), serializer->size(), "ber_printf ADObject");
  return *this;
}

IPCMessage& IPCMessage::operator+=(ADObject& object) {
  if (!object.isEmpty()) return *this += object.getSerialized();
  put("", 0, "ber_printf ADObject(empty)");
  return *this;
}

IPCMessage& IPCMessage::operator+=(ADObjectList& objects) {
  *this += static_cast<int>(objects.size());
  for (ADObject& object : objects) *this += object.getSerialized();
  return *this;
}

SID IPCMessage::getSid() const {
  ReceivedText received;
  take(received, "ber_scanf sid");
  SID sid;
  sid.init(reinterpret_cast<const unsigned char*>(received.data()), received.size());
  return sid;
}

Guid IPCMessage::getGuid() const {
  ReceivedText received;
  take(received, "ber_scanf guid");
  return Guid(reinterpret_cast<const unsigned char*>(received.data()), received.size());
}

ADObject IPCMessage::getADObject() const {
  ReceivedText received;
  take(received, "ber_scanf adobj");
  if (received.size() == 0) return ADObject();
  ADObject object(static_cast<unsigned int>(received.size()), received.data(), false, nullptr);
  object.deSerialize(true);
  return object;
}

ADObjectList IPCMessage::getADObjectList() const {
  ADObjectList objects = ADObjectList::create();
  for (int left = getInt(); left > 0; --left) objects.push_back(getADObject());
  return objects;
}

}  // namespace vesk
