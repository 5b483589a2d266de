#include <fokrazo/outcome.h>

#include <cstring>
#include <iterator>

#include "lrpc/session/outcome_internal.h"
#include "util/error/throw.h"

namespace vesk {

namespace {

bool beginsWith(const char* message, const char* text) {
  return strncmp(message, text, strlen(text)) == 0;
}

bool fits(const ExceptionRow& row, const std::exception& exception) {
  if (!row.isOne(&exception)) return false;
  if (row.error == 0) return beginsWith(exception.what(), row.text);
  return strcmp(exception.what(), MessageText::withSystemText(row.error, row.text).c_str()) == 0;
}

}  // namespace

NameStatus Answer::nameStatus() const {
  switch (outcome) {
    case Outcome::Success:
      return NameStatus::Success;
    case Outcome::NotFound:
      return NameStatus::NotFound;
    case Outcome::TryAgain:
      return NameStatus::TryAgain;
    case Outcome::Unavailable:
    case Outcome::Refused:
      break;
  }
  return NameStatus::Unavailable;
}

Answer answerOf(ValidationResult result) noexcept {
  const auto index = static_cast<unsigned int>(result);
  if (index >= std::size(kResultRows)) return answerOf(VR_UNSPECIFIED_ERROR);
  return kResultRows[index].answer;
}

Answer answerOf(const std::exception& error) noexcept {
  const ExceptionRow* row = kExceptionRows;
  while (!fits(*row, error)) ++row;  // the last row matches everything
  return row->answer;
}

Answer answerOfCurrentException() noexcept {
  try {
    throw;
  } catch (const std::exception& error) {
    return answerOf(error);
  } catch (...) {
    return answerOf(VR_UNSPECIFIED_ERROR);
  }
}

}  // namespace vesk
