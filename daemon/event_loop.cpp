#include "daemon/event_loop.h"

#include <sys/epoll.h>
#include <sys/eventfd.h>

#include <algorithm>
#include <cerrno>
#include <climits>

namespace brondalt {
namespace {

constexpr int kEventsPerRound = 64;

uint32_t toSystem(unsigned events) {
  return (events & EventLoop::kReadable ? EPOLLIN : 0u) | (events & EventLoop::kWritable ? EPOLLOUT : 0u);
}

unsigned fromSystem(uint32_t events) {
  return (events & EPOLLIN ? EventLoop::kReadable : 0u) | (events & EPOLLOUT ? EventLoop::kWritable : 0u) |
         (events & (EPOLLHUP | EPOLLERR) ? EventLoop::kClosed : 0u);
}

/// Always locks, even if Thread::locksCount() is false.
class FOKRAZO_SCOPED_CAPABILITY Locked {
 public:
  explicit Locked(vesk::Mutex& mutex) FOKRAZO_ACQUIRE(mutex) : m_mutex(mutex) { m_mutex.lock(); }
  ~Locked() FOKRAZO_RELEASE() { m_mutex.unLock(); }
  Locked(const Locked&) = delete;
  Locked& operator=(const Locked&) = delete;

 private:
  vesk::Mutex& m_mutex;
};

}  // namespace

EventLoop::EventLoop()
    : m_poll(epoll_create1(EPOLL_CLOEXEC), "epoll_create1"),
      m_wake(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC), "eventfd") {
  watch(m_wake.get(), kReadable, [this](unsigned) {
    uint64_t count;
    (void)!read(m_wake.get(), &count, sizeof count);
  });
}

EventLoop::~EventLoop() = default;

void EventLoop::watch(int fd, unsigned events, Handler handler) {
  const uint64_t id = ++m_lastId;
  epoll_event event = {};
  event.events = toSystem(events);
  event.data.u64 = id;
  if (epoll_ctl(m_poll.get(), EPOLL_CTL_ADD, fd, &event) != 0) throwSystemError("epoll_ctl");
  m_watches[fd] = {id, events, std::make_shared<Handler>(std::move(handler))};
  m_fds[id] = fd;
}

void EventLoop::change(int fd, unsigned events) {
  Watch& watch = m_watches.at(fd);
  if (watch.events == events) return;
  epoll_event event = {};
  event.events = toSystem(events);
  event.data.u64 = watch.id;
  if (epoll_ctl(m_poll.get(), EPOLL_CTL_MOD, fd, &event) != 0) throwSystemError("epoll_ctl");
  watch.events = events;
}

void EventLoop::forget(int fd) {
  auto found = m_watches.find(fd);
  if (found == m_watches.end()) return;
  epoll_ctl(m_poll.get(), EPOLL_CTL_DEL, fd, nullptr);
  m_fds.erase(found->second.id);
  m_watches.erase(found);
}

void EventLoop::after(Clock::duration delay, Task task) {
  m_timers.emplace(Clock::now() + delay, std::move(task));
}

void EventLoop::post(Task task) {
  {
    Locked lock(m_mutex);
    m_posted.push_back(std::move(task));
  }
  const uint64_t one = 1;
  (void)!write(m_wake.get(), &one, sizeof one);  // fails only if it is already readable
}

int EventLoop::pollTimeout() const {
  if (m_timers.empty()) return -1;
  using std::chrono::milliseconds;
  const auto left = std::chrono::ceil<milliseconds>(m_timers.begin()->first - Clock::now()).count();
  return static_cast<int>(std::clamp<long long>(left, 0, INT_MAX));
}

void EventLoop::run() {
  epoll_event events[kEventsPerRound];
  while (!m_isStopped) {
    const int count = epoll_wait(m_poll.get(), events, kEventsPerRound, pollTimeout());
    if (count < 0 && errno != EINTR) throwSystemError("epoll_wait");
    for (int i = 0; i < count; ++i) dispatch(events[i].data.u64, fromSystem(events[i].events));
    runTimers();
    runPosted();
  }
}

void EventLoop::dispatch(uint64_t id, unsigned events) {
  const auto fd = m_fds.find(id);
  if (fd == m_fds.end()) return;
  const std::shared_ptr<Handler> handler = m_watches.at(fd->second).handler;  // a copy: it may call forget()
  (*handler)(events);
}

void EventLoop::runTimers() {
  const auto now = Clock::now();
  while (!m_timers.empty() && m_timers.begin()->first <= now) m_timers.extract(m_timers.begin()).mapped()();
}

// Tasks posted by these tasks run in the next round.
void EventLoop::runPosted() {
  std::vector<Task> tasks;
  if (!takePosted(tasks)) return;
  for (const Task& task : tasks) task();
}

bool EventLoop::takePosted(std::vector<Task>& tasks) {
  Locked lock(m_mutex);
  tasks.swap(m_posted);
  return !tasks.empty();
}

}  // namespace brondalt
