#include "daemon/event_loop.h"

#include <sys/eventfd.h>

#include "daemon/signals.h"
#include "daemon/standard_streams.h"
#include "tests/support/scratch_test.h"

namespace brondalt {
namespace {

using std::chrono::milliseconds;

/// A descriptor that is readable for as long as it exists.
Descriptor alwaysReady() {
  return Descriptor(eventfd(1, EFD_CLOEXEC), "eventfd");
}

TEST(EventLoop, DoesNotCallHandlersForgottenInTheSameRound) {
  EventLoop loop;
  const Descriptor one = alwaysReady(), other = alwaysReady();
  int calls = 0;
  const auto forgetBoth = [&](unsigned events) {
    ++calls;
    EXPECT_EQ(events, EventLoop::kReadable);
    loop.forget(one.get());
    loop.forget(other.get());
    loop.post([&] { loop.stop(); });
  };
  loop.watch(one.get(), EventLoop::kReadable, forgetBoth);
  loop.watch(other.get(), EventLoop::kReadable, forgetBoth);
  loop.run();
  EXPECT_EQ(calls, 1);
}

TEST(EventLoop, WaitsOnlyForRequestedEvents) {
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
  const Descriptor reader(ends[0]);
  Descriptor writer(ends[1]);
  EventLoop loop;
  std::string seen;
  loop.watch(writer.get(), 0, [&](unsigned events) {
    seen += events == EventLoop::kWritable ? 'w' : '?';
    loop.change(writer.get(), 0);
    loop.post([&] {
      loop.forget(writer.get());
      writer = Descriptor();
    });
  });
  loop.watch(reader.get(), EventLoop::kReadable, [&](unsigned events) {
    seen += events == EventLoop::kClosed ? 'c' : '?';
    loop.stop();
  });
  loop.post([&] {
    seen += 'p';
    loop.change(writer.get(), EventLoop::kWritable);
  });
  loop.run();
  EXPECT_EQ(seen, "pwc");
}

TEST(EventLoop, RunsTimersInOrderAndTasksOfOtherThreads) {
  EventLoop loop;
  std::string order;
  loop.after(milliseconds(2), [&] { order += 'b'; });
  loop.after(milliseconds(1), [&] { order += 'a'; });
  std::thread other;
  loop.after(milliseconds(3), [&] {
    // From now on only the other thread can wake the loop.
    other = std::thread([&] { loop.post([&] { loop.stop(); }); });
  });
  loop.run();
  other.join();
  EXPECT_EQ(order, "ab");
}

TEST(Signals, ArriveWhileOtherDescriptorsAreAlwaysReady) {
  Signals signals{SIGUSR1, SIGUSR2};
  EventLoop loop;
  const Descriptor busy = alwaysReady();
  int rounds = 0, last = 0;
  loop.watch(busy.get(), EventLoop::kReadable, [&](unsigned) {
    if (++rounds == 1) raise(SIGUSR2);
    if (rounds == 1000) loop.stop();
  });
  signals.deliver(loop, [&](int number) {
    last = number;
    loop.stop();
  });
  loop.run();
  EXPECT_EQ(last, SIGUSR2);
  EXPECT_LT(rounds, 10);
}

TEST(StandardStreams, AreOpenedBeforeOtherFilesTakeTheirNumbers) {
  testsupport::checkInChild([] {
    for (const int stream : {STDIN_FILENO, STDERR_FILENO}) close(stream);
    openStandardStreams();
    struct stat info = {}, null = {};
    EXPECT_EQ(stat("/dev/null", &null), 0);
    for (const int stream : {STDIN_FILENO, STDERR_FILENO})
      EXPECT_TRUE(fstat(stream, &info) == 0 && info.st_rdev == null.st_rdev) << stream;
    EXPECT_GT(alwaysReady().get(), STDERR_FILENO);
  });
}

}  // namespace
}  // namespace brondalt
