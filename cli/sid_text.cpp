#include "cli/sid_text.h"

#include <fokrazo/error_util.h>
#include <fokrazo/strutil.h>
#include "cli/failure.h"

namespace cli {

vesk::SID readSidText(const std::string& text) {
  const std::string spelled = vesk::upper(text);
  vesk::SID sid;
  try {
    sid.fromMSString(spelled);
  } catch (const VESKException& error) {
    throw UsageError("'" + text + "' is not a SID: " + error.what());
  }
  if (sid.toMSString() != spelled)
    throw UsageError("'" + text + "' is not a SID: it would be read as " + sid.toMSString());
  return sid;
}

}  // namespace cli
