#include <fokrazo/dn.h>
#include <fokrazo/guid.h>
#include <fokrazo/sid.h>
#include "bench/compared/parts.h"
#include "bench/support/measure.h"

namespace bench {
void measureValues() {
  const std::string sidText = "S-1-5-21-1004336348-1177238915-682003330-51234";
  const vesk::SID sid(sidText);
  measure("ours.sid.text", [&] { keep(sid.toMSString().data()); });
  measure("ours.sid.parse", [&] {
    vesk::SID parsed;
    parsed.fromMSString(sidText);
    keep(&parsed);
  });
  const std::string guidText = "6f1d2c3b-4a59-4e68-8f70-112233445566";
  vesk::Guid guid;
  guid.fromRealMSString(guidText);
  measure("ours.guid.text", [&] { keep(guid.toRealMSString().data()); });
  measure("ours.guid.parse", [&] {
    vesk::Guid parsed;
    parsed.fromRealMSString(guidText);
    keep(&parsed);
  });
  const std::string dn = "CN=Alice Q. Example,OU=Staff,OU=Accounts,DC=corp,DC=example,DC=com";
  measure("ours.dn", [&] { keep(vesk::DN::canonicalFromDN(dn).data()); });
}

}  // namespace bench
