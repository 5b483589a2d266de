// Looks up users over one connection, with exceptions.
// usage: session SOCKET NAME...
#include <fokrazo.h>

#include <iostream>

int main(int argc, char** argv) try {
  if (argc < 2) return std::cerr << "usage: session SOCKET NAME...\n", 2;
  vesk::LocalRpcSession session(argv[1], false, false);
  for (int i = 2; i < argc; ++i) {
    const auto user = session.getUser(argv[i], 0);
    std::cout << user->unixName() << ' ' << user->getId() << ' ' << user->home() << '\n';
  }
} catch (const VESKException& error) {
  return std::cerr << error.className() << ": " << error.what() << '\n', 1;
}
