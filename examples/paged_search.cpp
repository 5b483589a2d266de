// Searches the directory and prints the name and DN of each object. Keeps only one page of the result in
// memory.
// usage: paged_search SOCKET FILTER
#include <fokrazo.h>

#include <iostream>

namespace {

constexpr int kPageSize = 20;

void print(vesk::ADObject object) {
  const std::string* name = object.firstValue(AD_CN);
  const std::string* dn = object.firstValue(AD_DISTINGUISHED_NAME);
  std::cout << (name ? *name : "-") << '\t' << (dn ? *dn : "-") << '\n';
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 3) {
    std::cerr << "usage: paged_search SOCKET FILTER\n";
    return 2;
  }
  vesk::LocalRpcSession session(argv[1], false, false);
  const char* attributes[] = {AD_CN.c_str(), AD_DISTINGUISHED_NAME.c_str(), nullptr};
  // The session must outlive the handle. An empty base means this host's whole domain.
  vesk::PagedSearchHandle found =
      session.ldapPagedSearch("", "", argv[2], attributes, vesk::ScopeSubtree, kPageSize, false);
  for (vesk::ADObject object = found.getNext(); !object.isEmpty(); object = found.getNext()) print(object);
} catch (const VESKException& error) {
  std::cerr << error.what() << '\n';
  return 1;
}
