/// Printing of objects to the C library's standard streams. Internal. Those of <iostream> would be made
/// whenever the library is loaded, in programs that print nothing too.
#pragma once

#include <cstdio>
#include <sstream>
#include <string>

namespace vesk {

/// Calls `print` with a stream, and writes what it puts there to `file`.
template <class Print>
void printTo(FILE* file, Print print) {
  std::ostringstream stream;
  print(stream);
  const std::string text = stream.str();
  fwrite(text.data(), 1, text.size(), file);
}

}  // namespace vesk
