/// A fixture for tests in the private world: an empty data directory, and the log in a file.
#pragma once

#include <fokrazo/fixed_paths.h>
#include <fokrazo/properties.h>
#include "tests/support/private_world.h"
#include "tests/support/scratch_test.h"

namespace testsupport {

class WorldTest : public ScratchTest {
 protected:
  void SetUp() override {
    if (!inPrivateWorld()) GTEST_SKIP() << "only in the private world";
    for (const auto& entry : std::filesystem::directory_iterator(vesk::paths::kDataDir))
      std::filesystem::remove_all(entry.path());
    std::filesystem::remove_all("/var/zantrel");
    configure("");
    ScratchTest::SetUp();
  }

  void TearDown() override {
    if (!m_dir.empty()) ScratchTest::TearDown();
  }

  /// Makes `text` the process's configuration. Everything is logged, to a file.
  static void configure(const std::string& text) {
    put(vesk::paths::kConfigFile,
        "log: TRACE\nlogger.destination: " + std::string(kLog) + "\nlogger.file.flush.frequency: 1\n" + text);
    Props(false, true);
  }

  static std::string logged() { return get(kLog); }
  static bool isLogged(const std::string& text) { return logged().find(text) != std::string::npos; }
  static void forgetLog() { std::filesystem::resize_file(kLog, 0); }

 private:
  static constexpr char kLog[] = "/var/log/test.log";
};

}  // namespace testsupport
