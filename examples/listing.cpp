// Lists all users that have a Unix profile, as passwd lines.
// usage: listing SOCKET
#include <fokrazo.h>

#include <iostream>

namespace {

int listUsers(vesk::LocalRpcSession& session) {
  if (session.startListUser()) {  // true is failure
    std::cerr << "the daemon refuses: " << session.statusMessage() << '\n';
    return 1;
  }
  try {
    for (;;) {
      const auto user = session.getUser2(vesk::NEXT_ENTRY, vesk::UNIX_ONLY);
      std::cout << user->unixName() << ":x:" << user->getId() << ':' << user->gid() << ':' << user->gecos()
                << ':' << user->home() << ':' << user->shell() << '\n';
    }
  } catch (const vesk::EndOfListException&) {
  }
  return session.endListUser() ? 1 : 0;
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 2) {
    std::cerr << "usage: listing SOCKET\n";
    return 2;
  }
  vesk::LocalRpcSession session(argv[1], false, false);
  return listUsers(session);
} catch (const VESKException& error) {  // the connection failed: the listing must start again
  std::cerr << error.className() << ": " << error.what() << '\n';
  return 1;
}
