/// Minimal lookups, hand-written for exactly these bytes: no logging, checks, retries or exceptions. The
/// baselines of the benchmarks.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

namespace bench {

/// One exchange without fields. Ends the process if it fails.
void plainPing(int fd);

struct PlainAttribute {
  std::string name;
  std::string lowerName;
  std::vector<std::string> values;
};
using PlainObject = std::map<std::string, PlainAttribute>;

/// Reads a serialized object completely.
PlainObject plainUnpack(const char* blob, size_t size);
/// The same, keeping only names and values.
std::map<std::string, std::vector<std::string>> plainMap(const char* blob, size_t size);

/// Requests one object by name and unpacks the reply.
PlainObject plainGetUser(int fd, const std::string& name);
/// Requests a list of objects and unpacks them.
std::vector<PlainObject> plainSearch(int fd);

}  // namespace bench
