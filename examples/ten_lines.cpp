#include <fokrazo.h>
#include <iostream>

int main(int argc, char** argv) {
  vesk::ClientOptions options;
  if (argc > 1) options.socketPath = argv[1];
  options.trustedPeer.reset();  // any user's daemon, such as a stand-in of yours; by default only root's
  vesk::Client client(options);
  for (int i = 2; i < argc; ++i) {
    const auto user = client.user(argv[i]);
    if (user)
      std::cout << user->unixName() << ' ' << user->getId() << ' ' << user->home() << '\n';
    else if (user.status().outcome == vesk::CallOutcome::NotFound)
      std::cout << "no such user\n";
    else  // the daemon is away, too slow, refuses ...
      return std::cerr << user.status().describe() << '\n', 1;
  }
}
