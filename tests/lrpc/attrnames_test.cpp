#include "lrpc/attrnames.h"

#include <gtest/gtest.h>

#include "base/guid.h"
#include "lrpc/adserializer.h"

using namespace vesk;

namespace {

TEST(AttributeNames, CopiesAndNamesThatMislead) {
  const struct {
    const std::string& name;
    const char* text;
  } rows[] = {{VESK_USERNAME, "_UnixName"},
              {VESK_GROUPNAME, "_UnixName"},
              {SFU_GROUPNAME, "msSFU30Name"},
              {AD_GROUPNAME, "sAMAccountName"},
              {VESK_EXT_CATEGORY, "Service-Connection-Point"},
              {AD_CLSSTORE_CATEGORY, "Class-Store"},
              {AD_ALT_PWSYNC_PWHASH, "altSecurityIdentities"},
              {AD_SID, "securityIdentifier"},
              {LOGINCHK_ATTR, "aix.login"},
              {EMPTY_STRING, ""}};
  for (const auto& row : rows) EXPECT_EQ(row.name, row.text);
}

TEST(AttributeNames, NineOfTheModelAreNotInTheDictionary) {
  for (const std::string* name :
       {&VESK_ALT_MAP_GROUPNAME, &MSRPC_TRUST_FLAGS, &MSRPC_PARENT_INDEX, &VESK_SITE, &VESK_PSO_MAX_PW_AGE,
        &VESK_PSO_MIN_PW_AGE, &VESK_PSO_BADCOUNT, &VESK_PSO_DURATION, &VESK_UNKNOWN_SIDS_TEMP})
    EXPECT_EQ(ADSerializer::m_dictionary[*name], -1) << *name;
  for (const std::string* name : {&VESK_UID, &VESK_DICTIONARY_SUM, &AZ_TASK_TASKS, &AD_MIT_USER})
    EXPECT_EQ(ADSerializer::m_dictionary[*name] >= 0, name != &AD_MIT_USER) << *name;
}

TEST(AttributeNames, CacheVersions) {
  EXPECT_EQ(QTR_CACHE_VERSION.toString(), "ffff0000ffff0000ffff9a70cacbe440");
  EXPECT_EQ(QTR_ENCRYPTED_CACHE_VERSION.toString(), "ffff0000ffff0000ffff9a7ecacbe440");
}

}  // namespace
