// Searches the directory and prints the name and DN of each object. Keeps only one page of the result in
// memory.
// usage: paged_search SOCKET FILTER
#include <fokrazo.h>

#include <iostream>

namespace {

constexpr int kPageSize = 20;

void print(vesk::ADObject& object) {
  const std::string* name = object.firstValue(AD_CN);
  const std::string* dn = object.firstValue(AD_DISTINGUISHED_NAME);
  std::cout << (name ? *name : "-") << '\t' << (dn ? *dn : "-") << '\n';
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: paged_search SOCKET FILTER\n";
    return 2;
  }
  vesk::ClientOptions options;
  options.socketPath = argv[1];
  options.trustedPeer.reset();
  vesk::Client client(options);
  // An empty base means this host's whole domain.
  vesk::SearchRange found =
      client.search("", "", argv[2], {AD_CN, AD_DISTINGUISHED_NAME}, vesk::ScopeSubtree, kPageSize);
  while (vesk::ADObject* object = found.next()) print(*object);
  if (found.status()) return 0;
  std::cerr << found.status().describe() << '\n';
  return 1;
}
