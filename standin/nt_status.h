/// Results in the words of the directory's own protocols.
#pragma once

#include <fokrazo/validation_result.h>

namespace standin {

/// The NT status of a result (MS-ERREF, section 2.3.1); "logon failure" for one that has none of its own.
int ntStatus(vesk::ValidationResult result);

}  // namespace standin
