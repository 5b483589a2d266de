// Lists all users that have a Unix profile, as passwd lines.
// usage: listing SOCKET
#include <fokrazo.h>

#include <iostream>

int main(int argc, char** argv) try {
  if (argc != 2) {
    std::cerr << "usage: listing SOCKET\n";
    return 2;
  }
  vesk::ClientOptions options;
  options.socketPath = argv[1];
  options.trustedPeer.reset();
  vesk::Client client(options);
  for (const vesk::User& user : client.users(vesk::UNIX_ONLY))
    std::cout << user.unixName() << ":x:" << user.getId() << ':' << user.gid() << ':' << user.gecos() << ':'
              << user.home() << ':' << user.shell() << '\n';
} catch (const vesk::CallException& error) {  // the listing is incomplete: it must start again
  std::cerr << error.what() << '\n';
  return 1;
}
