/// Tables that turn results and exceptions into the answers of modules. Internal.
#pragma once

#include <fokrazo/outcome.h>

namespace vesk {

struct ResultRow {
  ValidationResult result;
  Answer answer;
};

/// Matches exceptions of a class; with a text, only those whose message begins with it; with an error too,
/// only those whose message is the text followed by the system's text for that error.
struct ExceptionRow {
  const char* className;
  bool (*isOne)(const std::exception* exception);
  const char* text;
  int error;
  Answer answer;
};

/// Row i belongs to result i.
extern const ResultRow kResultRows[48];
/// The first matching row wins; the last one matches every exception.
extern const ExceptionRow kExceptionRows[25];

}  // namespace vesk
