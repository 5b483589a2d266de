/// Results as text.
#pragma once

#include <optional>
#include <string_view>

#include "daemon/status.h"

namespace standin {

/// Reads "RESULT" or "RESULT=TEXT", where RESULT is a name of <fokrazo/validation_result.h> or any number.
/// Without TEXT the message is the result's own. Empty for anything else.
std::optional<brondalt::Status> readAnswer(std::string_view text);

}  // namespace standin
