// The lookups: the bytes that each one sends, and the words in which it reports each failure.

#include <gtest/gtest.h>

#include <functional>

#include "lrpc/adobject.h"
#include "lrpc/adserializer.h"
#include "lrpc/attrnames.h"
#include "lrpc/session.h"
#include "lrpc/unixviews.h"
#include "tests/support/session_test.h"

using namespace vesk;
using namespace testsupport;

namespace {

const SID kSid("S-1-5-32-544");
const std::string kSidKey = hex("0410 01 02 000000000005 20000000 20020000");
const std::string kGuidBytes = "0123456789abcdef";
const Guid kGuid(reinterpret_cast<const unsigned char*>(kGuidBytes.data()), 16);
const std::string kIdKey = hex("0202 fe0c");
const std::string kGuidKey = octets(kGuidBytes);
const std::string kNone = "empty";
const std::string kNoUser = "NotFoundException 0 User not found";
const std::string kNoGroup = "NotFoundException 0 Group not found";
const std::string kNoObject = "NotFoundException 0 Object not found";

std::string nameOf(const ADObject& object) {
  return object.isEmpty() ? "empty" : "object";
}
std::string nameOf(const boost::shared_ptr<User>&) {
  return "user";
}
std::string nameOf(const boost::shared_ptr<Group>&) {
  return "group";
}
std::string nameOf(const boost::shared_ptr<VeskObj>& view) {
  return dynamic_cast<const User*>(view.get()) ? "user" : "group";
}

// The field of an object with that category.
std::string objectField(const std::string& category) {
  ADObject object("CN=x,DC=y");
  object[VESK_OBJECT_CATEGORY].push_back(category);
  const ADSerializer& blob = *object.getSerialized();
  return octets(std::string(blob.data(), blob.size()));
}

struct Lookup {
  const char* call;
  std::function<std::string(LocalRpcSession&, const std::string& name, int flags)> make;
  int opcode;
  const char* header;        // with no flags
  const char* headerAllSet;  // with all three
  std::string key;           // empty for a name
  std::string found;
  std::string refused;
  bool passesOn;  // a remote exception
};

// clang-format off
#define CALL(expression) \
  #expression, [](LocalRpcSession& s, [[maybe_unused]] const std::string& name, int flags) { return nameOf(s.expression); }

// Headers are the object's type, scope, kind of key, whether to ask the directory first, memberships.
const Lookup kLookups[] = {
    {CALL(getObject(name, DSShadow, flags)), 11, "0202000000", "0200000101", "",       "object", kNone,    true},
    {CALL(getUserObj(name, flags)),          11, "0002000000", "0000000101", "",       "object", kNone,    true},
    {CALL(getGroupObj(name, flags)),         11, "0102000000", "0100000101", "",       "object", kNone,    true},
    {CALL(getUserObj(-500, flags)),          11, "0000020000", "0000020101", kIdKey,   "object", kNone,    false},
    {CALL(getGroupObj(-500, flags)),         11, "0100020000", "0100020101", kIdKey,   "object", kNone,    false},
    {CALL(getUser(name, flags)),             11, "0002000000", "0000000101", "",       "user",   kNoUser,  true},
    {CALL(getGroup(name, flags)),            11, "0102000000", "0100000101", "",       "group",  kNoGroup, true},
    {CALL(getUser(-500, flags)),             11, "0000020000", "0000020101", kIdKey,   "user",   kNoUser,  false},
    {CALL(getGroup(-500, flags)),            11, "0100020000", "0100020101", kIdKey,   "group",  kNoGroup, false},
    {CALL(getUser(kSid, flags)),             11, "0002030000", "0000030101", kSidKey,  "user",   kNoUser,  false},
    {CALL(getGroup(kSid, flags)),            11, "0102030000", "0100030101", kSidKey,  "group",  kNoObject, false},
    {CALL(getUser(kGuid, flags)),            11, "0002010000", "0000010101", kGuidKey, "user",   kNoUser,  false},
    {CALL(getGroup(kGuid, flags)),           11, "0102010000", "0100010101", kGuidKey, "group",  kNoGroup, false},
    {CALL(getObject(kSid, flags)),           11, "1802030000", "1800030101", kSidKey,  "group",  kNoGroup, false},
    {CALL(getUser2(name, flags)),            12, "0002000000", "0000000101", "",       "user",   kNoUser,  true},
    {CALL(getGroup2(name, flags)),           12, "0102000000", "0100000101", "",       "group",  kNoGroup, true},
    {CALL(getShadow(name, flags)),           11, "0200000000", "0200000100", "",       "user",   kNoUser,  false},
};
// clang-format on

class SessionLookupTest : public SessionTest {
 protected:
  // What comes of the lookup: its value's name, or what it throws.
  std::string outcome(const Lookup& row, const std::string& name, int flags = 0) {
    std::string value;
    const std::string thrown = thrownBy([&] { value = row.make(session(), name, flags); });
    return thrown == "nothing" ? value : thrown;
  }

  static std::string requestOf(const Lookup& row, const std::string& name, const char* header) {
    std::string body;
    for (const char byte : hex(header)) body += integer(byte);
    return request(row.opcode, body + (row.key.empty() ? octets(name) : row.key));
  }
};

TEST_F(SessionLookupTest, EachSendsItsBytesAndTellsEachFailureInItsWords) {
  const std::string remote = integer(1) + octets("lost");
  for (const Lookup& row : kLookups) {
    const std::string sent = requestOf(row, "joe", row.header);
    peer().expect(sent).send(answer(0, objectField("Group")));
    EXPECT_EQ(outcome(row, "joe"), row.found) << row.call;
    peer().expect(requestOf(row, "joe", row.headerAllSet)).send(answer(17));
    EXPECT_EQ(outcome(row, "joe", UNIX_ONLY | CHECK_AD_FIRST | GROUP_MEMBERSHIP), row.refused) << row.call;
    peer().expect(sent).send(reply(0, status(42, 10)));
    EXPECT_EQ(outcome(row, "joe", UNIX_NAME | WINDOWS_NAME),
              row.opcode == 12 ? "EndOfListException 0 End of list" : row.refused)
        << row.call;
    peer().expect(sent).send(answer(13, remote));
    EXPECT_EQ(outcome(row, "joe"), row.passesOn ? " 0 lost" : row.refused) << row.call;
    EXPECT_EQ(session().statusCode(), 0);
    peer().expect(sent).send(answer(0, octets("")));
    const bool tested = row.refused == kNone || row.key == kIdKey || (row.passesOn && row.opcode == 11);
    EXPECT_EQ(outcome(row, "joe"), tested ? row.refused : "SystemException 0 Null adobject") << row.call;
    peer().expect(sent).send(answer(0, hex("0430 0102")));
    EXPECT_EQ(outcome(row, "joe"), "IOException 0 ber_scanf adobj") << row.call;
    ASSERT_TRUE(peer().finished()) << row.call;
  }
}

TEST_F(SessionLookupTest, OnlyTheNextEntryOfAListingIsNotAskedForAgain) {
  for (const Lookup& row : kLookups) {
    for (const std::string name : {"", "@#"}) {
      session().dropConnection();
      const std::string sent = requestOf(row, name, row.header);
      peer().accept().expect(sent).hangUp();
      const bool once = name == "@#" && row.key.empty();
      if (!once) peer().accept().expect(sent).send(answer(0, objectField("Group")));
      EXPECT_EQ(outcome(row, name).substr(0, 4), once ? "Conn" : row.found.substr(0, 4)) << row.call << name;
      ASSERT_TRUE(peer().finished()) << row.call << name;
    }
  }
}

TEST_F(SessionLookupTest, NobodyIsSaidNotToExistBecauseTheDaemonIsAway) {
  peer().down();
  EXPECT_TRUE(peer().finished());
  for (const Lookup& row : kLookups)
    EXPECT_EQ(outcome(row, "joe").find("IOException 1 ipc socket connect: "), 0u) << row.call;
}

TEST_F(SessionLookupTest, TheCategoryOfASidDecidesTheView) {
  const struct {
    const char *category, *view;
  } rows[] = {{"Person", "user"},
              {"Computer", "user"},
              {"Group", "group"},
              {"Container", "NotFoundException 0 SID is not a user or group"},
              {"person", "NotFoundException 0 SID is not a user or group"}};
  const Lookup& bySid = kLookups[13];
  for (const auto& row : rows) {
    peer().expect(requestOf(bySid, "", bySid.header)).send(answer(0, objectField(row.category)));
    EXPECT_EQ(outcome(bySid, ""), row.view) << row.category;
  }
  EXPECT_EQ(thrownBy([&] { session().getObject(SID(), 0); }), "BadDataException 0 SID is Null");
  EXPECT_TRUE(peer().finished());
}

}  // namespace
