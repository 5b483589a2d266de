// Settings and the configuration by several threads at once: each takes the other's lock.

#include <thread>
#include <vector>

#include "tests/support/world_test.h"
#include "util/include/selinux_context.h"
#include "util/include/setting.h"
#include "util/include/thread.h"

using namespace testsupport;
using namespace vesk;

namespace {

class SettingThreadsTest : public WorldTest {};

TEST_F(SettingThreadsTest, WritersReadersAndReloadsGoTogether) {
  Thread::SetThreadsActive(true);
  const auto many = [](auto work) {
    return std::thread([work] {
      for (int i = 0; i < 200; ++i) work(i);
    });
  };
  std::vector<std::thread> threads;
  threads.push_back(
      many([](int i) { saveSetting("site", std::to_string(i), SETTING_PUBLIC, false, false); }));
  threads.push_back(many([](int) { clearSettingsMap(); }));
  threads.push_back(many([](int) { Props(false, true); }));
  threads.push_back(many([](int) { GetSetting("missing", "none"); }));
  threads.push_back(many([this](int) { RestoreFileSELinuxLabel(m_dir); }));
  for (std::thread& thread : threads) thread.join();
  clearSettingsMap();
  EXPECT_EQ(GetSetting("site", ""), "199");
  Thread::SetThreadsActive(false);
}

}  // namespace
