/// Prints objects to C's standard streams. Internal. <iostream> would construct its streams in every program
/// that loads the library.
#pragma once

#include <cstdio>
#include <sstream>
#include <string>

namespace vesk {

/// Calls `print` with a stream, and writes its output to `file`.
template <class Print>
void printTo(FILE* file, Print print) {
  std::ostringstream stream;
  print(stream);
  const std::string text = stream.str();
  fwrite(text.data(), 1, text.size(), file);
}

}  // namespace vesk
