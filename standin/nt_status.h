/// Converts results to NT status codes.
#pragma once

#include <fokrazo/validation_result.h>

namespace standin {

/// The NT status for a result (MS-ERREF, section 2.3.1); "logon failure" for a result without one.
int ntStatus(vesk::ValidationResult result);

}  // namespace standin
