/// The command line of the stand-in.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "standin/faults.h"
#include "standin/faulty_traffic.h"

namespace standin {

/// Wrong usage; what() says why.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct Options {
  bool wantsHelp = false;
  bool isForeground = false;
  bool isVerbose = false;
  std::string socketPath;
  std::string passwordsPath;  ///< empty: none
  std::string pidPath;        ///< empty: none
  std::vector<std::string> ldifPaths;
  Faults faults;
  Treatment treatment;
};

/// @throws UsageError
Options parseOptions(int argc, char** argv);

/// The text of --help.
std::string helpText();

}  // namespace standin
