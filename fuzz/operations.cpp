// Replies as the session's operations read them. An input is the number of an operation, a byte that is odd
// if what follows is the body of a successful reply and not a whole message, and that.

#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <memory>
#include <sstream>
#include <stdexcept>
#include <vector>

#include "fuzz/fuzz_input.h"
#include "fuzz/world.h"
#include "lrpc/adobject.h"
#include "lrpc/ipcmessage.h"
#include "lrpc/paged_search.h"
#include "lrpc/session.h"
#include "lrpc/shredder.h"
#include "lrpc/unixviews.h"
#include "util/include/error_util.h"
#include "util/include/unique_fd.h"

using namespace vesk;

namespace {

constexpr size_t kLargestMessage = 64 * 1024;  // what a socket takes without a reader
const std::string kSocket = paths::kDaemonSocket;

// The daemon, without a thread of its own: it answers before it is asked, and nobody can connect a second
// time.
class Peer {
 public:
  /// Has `frame` lie ready for the next request of the session.
  void answer(LocalRpcSession& session, const std::string& frame) {
    m_frame = frame;
    if (session.socket() == -1) connect(session);
    send();
  }
  void send() { ::send(m_connection.get(), m_frame.data(), m_frame.size(), MSG_NOSIGNAL); }

  /// After an operation: forgets its request, and the connection if it is not back at rest.
  void settle(LocalRpcSession& session) {
    char bytes[4096];
    while (recv(m_connection.get(), bytes, sizeof bytes, MSG_DONTWAIT) > 0) {
    }
    int unread = 0;
    if (session.socket() != -1 && (ioctl(session.socket(), FIONREAD, &unread) != 0 || unread > 0))
      session.dropConnection();
  }

 private:
  void connect(LocalRpcSession& session) {
    UniqueFd listener(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    kSocket.copy(address.sun_path, sizeof address.sun_path - 1);
    if (bind(listener.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) abort();
    if (listen(listener.get(), 1) != 0) abort();
    session.reConnect(false);
    m_connection = UniqueFd(accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
    unlink(kSocket.c_str());
  }

  UniqueFd m_connection;
  std::string m_frame;
};

Peer& peer() {
  static Peer one;
  return one;
}

void look(ADObject object) {
  std::ostringstream out;
  object.dump(out);
  out << object.category() << object.toString() << object.sid().toMSString();
}

void look(const ADObjectList& objects) {
  for (const ADObject& object : objects) look(object);
}

template <class View>
void look(const boost::shared_ptr<View>& view) {
  FUZZ_CHECK(view);
  look(view->getObject());
}

void page(LocalRpcSession& session) {
  PagedSearchHandle handle =
      session.ldapPagedSearch("a", "b", "c", nullptr, LdapSearchScopeType(2), 10, true);
  for (int left = 10; left > 0; --left) {
    peer().settle(session);
    if (session.socket() == -1) return;
    peer().send();
    const ADObject next = handle.getNext();
    if (next.isEmpty()) return;
    look(next);
  }
}

using Operation = void (*)(LocalRpcSession&);
constexpr Operation kOperations[] = {
    [](LocalRpcSession& s) { s.ping(); },
    [](LocalRpcSession& s) { s.stop(); },
    [](LocalRpcSession& s) { look(s.getUserObj("joe", 0)); },
    [](LocalRpcSession& s) { look(s.getGroupObj("staff", 0)); },
    [](LocalRpcSession& s) { look(s.getUserObj(1, 0)); },
    [](LocalRpcSession& s) { look(s.getObject("joe", DSUser, 0)); },
    [](LocalRpcSession& s) { look(s.getUser("joe", 0)); },
    [](LocalRpcSession& s) { look(s.getGroup("staff", 0)); },
    [](LocalRpcSession& s) { look(s.getUser(1, 0)); },
    [](LocalRpcSession& s) { look(s.getGroup(1, 0)); },
    [](LocalRpcSession& s) { look(s.getUser(SID("S-1-5-21-1-2-3-1104"), 0)); },
    [](LocalRpcSession& s) { look(s.getObject(SID("S-1-5-21-1-2-3-1104"), 0)); },
    [](LocalRpcSession& s) { look(s.getGroup(Guid(), 0)); },
    [](LocalRpcSession& s) { look(s.getUser2("@#", 0)); },
    [](LocalRpcSession& s) { look(s.getGroup2("@#", 0)); },
    [](LocalRpcSession& s) { look(s.getShadow("joe", 0)); },
    [](LocalRpcSession& s) { s.startListUser(); },
    [](LocalRpcSession& s) { s.endListGroup(); },
    [](LocalRpcSession& s) { look(s.ldapSearch("a", "b", "c", nullptr, LdapSearchScopeType(2), 10, true)); },
    page,
    [](LocalRpcSession& s) { look(s.ldapFetch("a", "b", nullptr, true)); },
    [](LocalRpcSession& s) { s.validatePlainTextUser("joe", Shredder("x"), true); },
    [](LocalRpcSession& s) { look(s.validateKerberosUser("a", "b")); },
    [](LocalRpcSession& s) { s.getNtlmChallenge("a"); },
    [](LocalRpcSession& s) { look(s.validateNtlmUser("a")); },
    [](LocalRpcSession& s) {
      s.validateUserGroup("joe", {"a", "b"}, true, UNIX_NAME);
    },
    [](LocalRpcSession& s) { s.getServicePrincipal("host", "service"); },
    [](LocalRpcSession& s) { s.userLogin("joe"); },
    [](LocalRpcSession& s) {
      int count = 0;
      s.renewCredentials("joe", count);
    },
    [](LocalRpcSession& s) { s.changePassword("joe", Shredder("a"), Shredder("b"), true); },
    [](LocalRpcSession& s) {
      int ntStatus = 0;
      std::string result;
      std::string text;
      s.netLogonSamLogon("joe", "a", "b", 1, result, ntStatus, text);
      s.samChangeUserPassword2("joe", "a", "b", "c", "d", ntStatus, text);
    },
    [](LocalRpcSession& s) { s.flushCache("key"); },
    [](LocalRpcSession& s) { s.updateUserPolicy("joe"); },
    [](LocalRpcSession& s) { s.updateMachinePolicy(); },
    [](LocalRpcSession& s) { s.getSystemInfo(1); },
    [](LocalRpcSession& s) { s.samEnabled(); },
    [](LocalRpcSession& s) { s.samIsSandboxed("joe", true); },
    [](LocalRpcSession& s) { look(s.samGetUserRoles("joe", true)); },
    [](LocalRpcSession& s) { look(s.samGetUserRolesLocal("joe", 1, 2)); },
    [](LocalRpcSession& s) {
      std::string first;
      std::string second;
      s.mapDomain("EXAMPLE", first, second, 1);
    },
    [](LocalRpcSession& s) { s.getADDomain("EXAMPLE"); },
    [](LocalRpcSession& s) { s.setSessionID("id"); },
    [](LocalRpcSession& s) {
      ValidationResult health;
      int a;
      int b;
      std::string text;
      s.systemHealthInfo(true, health, a, b, text);
    },
    [](LocalRpcSession& s) { s.authenticateProcess(); },
};

std::string messageFrom(fuzz::Input& input) {
  const bool isBody = (input.byte() & 1) != 0;
  std::string message = input.rest();
  // The header of a successful reply.
  if (isBody) message.insert(0, std::string("\x30\x84\0\0\0\x06\x02\x01\x31\x02\x01\0", 12));
  return message;
}

bool prepare() {
  fuzz::enterWorld("log: FATAL\nlrpc.timeout: 0\n");
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool prepared = prepare();
  static LocalRpcSession& session = *new LocalRpcSession(kSocket, false, false);
  fuzz::Input input(data, std::min(size, kLargestMessage));
  const Operation operation = kOperations[input.byte() % std::size(kOperations)];
  const std::string message = messageFrom(input);
  const auto length = static_cast<uint32_t>(message.size());
  peer().answer(session, std::string(reinterpret_cast<const char*>(&length), sizeof length) + message);
  try {
    operation(session);
  } catch (const VESKException&) {
  }
  peer().settle(session);
  return prepared ? 0 : -1;
}
