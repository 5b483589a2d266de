#include "daemon/signals.h"

#include <sys/signalfd.h>

#include <cerrno>
#include <csignal>
#include <utility>

#include "daemon/event_loop.h"

namespace brondalt {

Signals::Signals(std::initializer_list<int> numbers) {
  sigset_t set;
  sigemptyset(&set);
  for (int number : numbers) sigaddset(&set, number);
  errno = pthread_sigmask(SIG_BLOCK, &set, nullptr);
  if (errno != 0) throwSystemError("pthread_sigmask");
  signal(SIGPIPE, SIG_IGN);
  m_queue = Descriptor(signalfd(-1, &set, SFD_NONBLOCK | SFD_CLOEXEC), "signalfd");
}

void Signals::deliver(EventLoop& loop, std::function<void(int)> handle) {
  loop.watch(m_queue.get(), EventLoop::kReadable, [this, handle = std::move(handle)](unsigned) {
    signalfd_siginfo info = {};
    while (read(m_queue.get(), &info, sizeof info) == static_cast<ssize_t>(sizeof info))
      handle(static_cast<int>(info.ssi_signo));
  });
}

}  // namespace brondalt
