#include "cli/object_key.h"

#include <optional>

#include <fokrazo/ascii.h>
#include "cli/arguments.h"
#include "cli/failure.h"
#include "cli/sid_text.h"

namespace cli {

namespace {

using namespace vesk;

KeyKind kindByName(const std::string& name) {
  if (name == "name") return KeyName;
  if (name == "id") return KeyId;
  if (name == "sid") return KeySid;
  if (name == "guid") return KeyGuid;
  throw UsageError("option --by takes name, id, sid or guid, not '" + name + "'");
}

KeyKind kindByForm(const std::string& text) {
  unsigned id = 0;
  if (readNumber(text, id)) return KeyId;
  if (text.compare(0, 2, "S-") == 0 && text.size() > 2 && isAsciiDigit(text[2])) return KeySid;
  return Guid::isValidGuidStringFormat(text.c_str()) ? KeyGuid : KeyName;
}

unsigned readId(const std::string& text) {
  unsigned id = 0;
  if (!readNumber(text, id)) throw UsageError("'" + text + "' is not a number");
  return id;
}

Guid readGuid(const std::string& text) {
  if (!Guid::isValidGuidStringFormat(text.c_str())) throw UsageError("'" + text + "' is not a GUID");
  Guid guid;
  guid.fromRealMSString(text);
  return guid;
}

}  // namespace

ObjectKey readObjectKey(const std::string& text, const std::string& by) {
  const KeyKind kind = by.empty() ? kindByForm(text) : kindByName(by);
  if (text.empty()) throw UsageError("the name is empty");
  switch (kind) {
    case KeyId:
      return readId(text);
    case KeySid:
      return readSidText(text);
    case KeyGuid:
      return readGuid(text);
    default:
      return text;
  }
}

}  // namespace cli
