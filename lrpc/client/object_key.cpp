#include <fokrazo/object_key.h>

#include <type_traits>

namespace vesk {

static_assert(KeyName == 0 && KeyGuid == 1 && KeyId == 2 && KeySid == 3, "the order of the alternatives");

std::string ObjectKey::text() const {
  switch (kind()) {
    case KeyGuid:
      return guid().toRealMSString();
    case KeyId:
      return std::to_string(id());
    case KeySid:
      return sid().toMSString();
    case KeyName:
      break;
  }
  return name();
}

}  // namespace vesk
