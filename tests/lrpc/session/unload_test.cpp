// The shared library, loaded and unloaded like a module.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <thread>

#include <fokrazo/session.h>
#include <fokrazo/thread.h>

namespace {

TEST(UnloadTest, AThreadThatUsedTheLibraryMayOutliveIt) {
  void* library = dlopen(TEST_LIBRARY, RTLD_NOW);
  ASSERT_NE(library, nullptr) << dlerror();
  const auto ask =
      reinterpret_cast<decltype(&velmora_sname_to_principal)>(dlsym(library, "velmora_sname_to_principal"));
  const auto setThreadsActive = reinterpret_cast<decltype(&vesk::Thread::SetThreadsActive)>(
      dlsym(library, "_ZN4vesk6Thread16SetThreadsActiveEb"));
  ASSERT_TRUE(ask && setThreadsActive);
  setThreadsActive(true);
  std::thread user([&] {
    char name[256];
    EXPECT_EQ(static_cast<unsigned>(ask(nullptr, "host", "nfs", 3, name)), 0x96c73af5) << "no daemon here";
    EXPECT_EQ(dlclose(library), 0);
  });
  user.join();  // the library's per-thread data is destroyed when the thread ends
}

}  // namespace
