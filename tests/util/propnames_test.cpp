#include "util/include/propnames.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <regex>

using namespace vesk;

namespace {

TEST(PropertyNames, NamesThatAreNotSimplyTheKeyInCapitals) {
  EXPECT_EQ(PN::ROOT_LOGGER_NAME, "log");
  EXPECT_EQ(PN::LRPC_TIMEOUT, "lrpc.timeout");
  EXPECT_EQ(PN::NSS_NOLOGIN_SHELL, "nss.shell.nologin");
  EXPECT_EQ(PN::VESKD_STACKSIZE_CLIENT_THREADS, "brondalt.clients.threads.stacksize");
  EXPECT_EQ(PN::DISABLE_KSET_FILES, "kset.files.disabled");
  EXPECT_EQ(PN::AUDITTRAIL_ZANTREL_SUITE_TRUSTED_PATH_MACHINECRED_SKIPDA,
            "audittrail.Zantrel_Suite.Trusted_Path.machinecred.skipda");
  EXPECT_EQ(PN::CLI_HOOK_PREFIX, "cli.hook.");
}

// Other programs' configuration files spell these keys: none may come, go or change by mistake.
TEST(PropertyNames, TheTableIsAsItWas) {
  std::ifstream source(TEST_SOURCE_DIR "/util/propnames.cpp");
  const std::string text{std::istreambuf_iterator<char>(source), {}};
  const std::regex row("(\\w+)(?: =|,)\\s+\"([^\"]*)\"");
  std::string rows;
  for (std::sregex_iterator match(text.begin(), text.end(), row), end; match != end; ++match)
    rows += match->str(1) + "=" + match->str(2) + "\n";
  EXPECT_EQ(std::count(rows.begin(), rows.end(), '\n'), 381);
  EXPECT_EQ(crc32(0, reinterpret_cast<const Bytef*>(rows.data()), static_cast<uInt>(rows.size())),
            0x7145db07u);
}

TEST(PropertyNames, TwoKeysHaveTwoNames) {
  EXPECT_EQ(PN::ROOT_MEMORY_NAME, PN::LOGGER_MEMORY_LOG_LEVEL);
  EXPECT_EQ(PN::NSS_USER_IGNORE, PN::IGNORE_USERS);
}

}  // namespace
