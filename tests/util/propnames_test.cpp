#include "util/include/propnames.h"

#include <gtest/gtest.h>

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

TEST(PropertyNames, TwoKeysHaveTwoNames) {
  EXPECT_EQ(PN::ROOT_MEMORY_NAME, PN::LOGGER_MEMORY_LOG_LEVEL);
  EXPECT_EQ(PN::NSS_USER_IGNORE, PN::IGNORE_USERS);
}

}  // namespace
