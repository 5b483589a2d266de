/// The tables from which the answers of modules are made. Internal.
#pragma once

#include <fokrazo/outcome.h>

namespace vesk {

struct ResultRow {
  ValidationResult result;
  Answer answer;
};

/// A class of exceptions, or with a text those of them whose message begins with it, or with an error those
/// whose message is the text followed by the system's text for it.
struct ExceptionRow {
  const char* className;
  bool (*isOne)(const std::exception* exception);
  const char* text;
  int error;
  Answer answer;
};

/// Row i belongs to result i.
extern const ResultRow kResultRows[48];
/// The first row that fits counts; the last one fits every exception.
extern const ExceptionRow kExceptionRows[25];

}  // namespace vesk
