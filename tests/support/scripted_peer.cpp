#include "tests/support/scripted_peer.h"

#include <linux/sockios.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>

#include <fokrazo/strutil.h>

namespace testsupport {

namespace {

constexpr std::chrono::seconds kPatience(10);

[[noreturn]] void fail(const std::string& what) {
  throw std::runtime_error(what);
}

std::string withError(const std::string& what) {
  return what + ": " + strerror(errno);
}

// Until the other end has read everything.
void waitUntilTaken(int fd) {
  const auto end = std::chrono::steady_clock::now() + kPatience;
  for (int waiting = 1; ioctl(fd, SIOCOUTQ, &waiting) == 0 && waiting > 0; sched_yield())
    if (std::chrono::steady_clock::now() > end) fail("the client does not read");
}

}  // namespace

ScriptedPeer::ScriptedPeer(const std::string& path) : m_path(path), m_wake(eventfd(0, EFD_CLOEXEC)) {
  listen();
  m_thread = std::thread([this] { run(); });
}

ScriptedPeer::~ScriptedPeer() {
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_over = true;
    m_changed.notify_all();
  }
  const uint64_t one = 1;
  if (::write(m_wake.get(), &one, sizeof one) != sizeof one) perror("eventfd");
  m_thread.join();
  unlink(m_path.c_str());
}

ScriptedPeer& ScriptedPeer::then(Step step) {
  const std::lock_guard<std::mutex> lock(m_mutex);
  if (m_failure.empty()) m_script.push_back(std::move(step));
  m_changed.notify_all();
  return *this;
}

void ScriptedPeer::run() {
  std::unique_lock<std::mutex> lock(m_mutex);
  for (;;) {
    m_changed.wait(lock, [this] { return m_over || !m_script.empty(); });
    if (m_over) return;
    const Step step = std::move(m_script.front());
    m_script.pop_front();
    m_working = true;
    lock.unlock();
    std::string failure;
    try {
      step();
    } catch (const std::exception& error) {
      failure = error.what();
      m_connection.close();
      m_listener.close();
    }
    lock.lock();
    m_working = false;
    if (!failure.empty()) {
      m_failure = failure;
      m_script.clear();
    }
    m_changed.notify_all();
  }
}

::testing::AssertionResult ScriptedPeer::finished() {
  then([this] { checkSilence(); });
  std::unique_lock<std::mutex> lock(m_mutex);
  if (!m_changed.wait_for(lock, 2 * kPatience, [this] { return m_script.empty() && !m_working; }))
    return ::testing::AssertionFailure() << "the script does not end";
  return m_failure.empty() ? ::testing::AssertionSuccess() : ::testing::AssertionFailure() << m_failure;
}

void ScriptedPeer::listen() {
  vesk::UniqueFd listener(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  snprintf(address.sun_path, sizeof address.sun_path, "%s", m_path.c_str());
  if (bind(listener.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
      ::listen(listener.get(), 8) != 0)
    fail(withError("cannot listen at " + m_path));
  m_listener = std::move(listener);
}

void ScriptedPeer::waitFor(int fd) {
  pollfd entries[] = {{fd, POLLIN, 0}, {m_wake.get(), POLLIN, 0}};
  const int rc = poll(entries, 2, std::chrono::milliseconds(kPatience).count());
  if (rc <= 0 || entries[1].revents) fail("the client keeps silent");
}

std::string ScriptedPeer::receive(size_t size) {
  std::string bytes(size, '\0');
  for (size_t done = 0; done < size;) {
    waitFor(m_connection.get());
    const ssize_t count = recv(m_connection.get(), &bytes[done], size - done, 0);
    if (count <= 0) fail("the client closed the connection after " + tohex(bytes.substr(0, done)));
    done += count;
  }
  return bytes;
}

void ScriptedPeer::acceptNow() {
  m_connection.close();
  waitFor(m_listener.get());
  m_connection = vesk::UniqueFd(accept4(m_listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
  if (!m_connection) fail(withError("accept"));
}

// A client that has closed its connection is no failure of the script.
void ScriptedPeer::sendNow(const std::string& bytes) {
  for (size_t done = 0; done < bytes.size();) {
    const ssize_t count = ::send(m_connection.get(), &bytes[done], bytes.size() - done, MSG_NOSIGNAL);
    if (count <= 0) return;
    done += count;
  }
}

// A hang-up hides what the client has not read yet.
void ScriptedPeer::closeNow() {
  waitUntilTaken(m_connection.get());
  m_connection.close();
}

void ScriptedPeer::checkSilence() {
  pollfd entries[] = {{m_listener.get(), POLLIN, 0}, {m_connection.get(), POLLIN, 0}};
  poll(entries, 2, 0);
  if (entries[0].revents) fail("the client has connected once more");
  char bytes[64];
  const ssize_t count = entries[1].revents ? recv(m_connection.get(), bytes, sizeof bytes, MSG_DONTWAIT) : 0;
  if (count > 0) fail("the client has also sent " + tohex(std::string(bytes, count)));
}

ScriptedPeer& ScriptedPeer::expect(const std::string& message) {
  return then([this, message] {
    if (!m_connection) acceptNow();
    const std::string length = receive(sizeof(uint32_t));
    uint32_t size;
    memcpy(&size, length.data(), sizeof size);
    const std::string frame = length + receive(size);
    if (frame != framed(message)) fail("expected " + tohex(framed(message)) + "\n     got " + tohex(frame));
  });
}

ScriptedPeer& ScriptedPeer::expectClosed() {
  return then([this] {
    waitFor(m_connection.get());
    char byte;
    if (recv(m_connection.get(), &byte, 1, 0) > 0) fail("the client does not close but sends");
  });
}

ScriptedPeer& ScriptedPeer::down() {
  return then([this] {
    unlink(m_path.c_str());
    m_listener.close();
    closeNow();
  });
}

}  // namespace testsupport
