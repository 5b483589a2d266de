#include <fokrazo.h>
#include <iostream>

int main(int argc, char** argv) try {
  vesk::LocalRpcSession session(argc > 1 ? argv[1] : "/var/velmora/daemon", false, false);
  for (int i = 2; i < argc; ++i) {
    const auto user = session.getUser(argv[i], 0);
    std::cout << user->unixName() << ' ' << user->getId() << ' ' << user->home() << '\n';
  }
} catch (const VESKException& error) {
  return std::cerr << error.className() << ": " << error.what() << '\n', 1;
}
