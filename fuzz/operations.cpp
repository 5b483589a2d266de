// Replies, read by the operations of a session. An input is the number of an operation; a byte that is odd if
// the rest is the body of a successful reply and even if it is a whole message; and that rest. An operation
// with several exchanges gets the same reply each time.

#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <fokrazo/session.h>
#include "fuzz/fuzz_input.h"
#include "fuzz/world.h"
#include "tests/support/operations.h"
#include "tests/support/thrown.h"
#include "util/file/unique_fd.h"

using namespace testsupport;
using namespace vesk;

namespace {

constexpr size_t kLargestMessage = 64 * 1024;  // fits into a socket's buffer
constexpr int kParts = 4;
const std::string kSocket = paths::kDaemonSocket;

// The daemon, without its own thread: it answers while the session sends, and accepts only between
// operations.
class Peer {
 public:
  /// Offers the session a connection, and `frame` as the reply to each of its next requests.
  void prepare(LocalRpcSession& session, const std::string& frame, int replies) {
    if (session.socket() == -1) connect(session);
    m_frame = frame;
    m_repliesLeft = replies;
  }

  /// Answers a sent request.
  void answer() {
    if (m_repliesLeft-- > 0)
      send(m_connection.get(), m_frame.data(), m_frame.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
  }

  /// After an operation: drops its requests, and the connection if there is unread data.
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
  int m_repliesLeft = 0;
};

Peer& peer() {
  static Peer one;
  return one;
}

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

// Replaces the C library's function (-Wl,--wrap). A request is sent as its length and then its bytes.
extern "C" ssize_t __real_sendmsg(int fd, const msghdr* message, int flags);
extern "C" ssize_t __wrap_sendmsg(int fd, const msghdr* message, int flags) {
  const ssize_t count = __real_sendmsg(fd, message, flags);
  if (message->msg_iov->iov_len > sizeof(uint32_t)) peer().answer();
  return count;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const bool prepared = prepare();
  static LocalRpcSession& session = *new LocalRpcSession(kSocket, false, false);
  fuzz::Input input(data, std::min(size, kLargestMessage));
  const size_t number = input.byte() % (operations().size() + 1);
  const Operation* operation = number < operations().size() ? &operations()[number] : nullptr;
  const std::string message = messageFrom(input);
  const auto length = static_cast<uint32_t>(message.size());
  peer().prepare(session, std::string(reinterpret_cast<const char*>(&length), sizeof length) + message,
                 operation && operation->sent == Sent::InParts ? kParts : 1);
  if (operation)
    operation->make(session);
  else
    thrownBy([&] { session.authenticateProcess(); });
  peer().settle(session);
  return prepared ? 0 : -1;
}
