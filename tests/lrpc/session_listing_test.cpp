// Listings, entry by entry, and paged searches; the service principal as Kerberos libraries ask for it.

#include <gtest/gtest.h>
#include <unistd.h>

#include <functional>

#include "lrpc/session.h"
#include "tests/support/session_test.h"
#include "tests/support/told.h"
#include "util/include/fixed_paths.h"
#include "util/include/strutil.h"

using namespace vesk;
using namespace testsupport;

namespace {

using Names = std::vector<std::string>;

const std::string kRemote = integer(1) + octets("no listing");

struct Listing {
  const char* kind;  // the byte of the kind in each of its requests
  std::function<bool(LocalRpcSession&)> start;
  std::function<std::string(LocalRpcSession&)> next;
  std::function<bool(LocalRpcSession&)> end;
  int opcode;
  const char* header;
  std::string endOfList;
};

// clang-format off
#define CALL(expression) [](LocalRpcSession& s) { return s.expression; }
#define NEXT(expression) [](LocalRpcSession& s) { return told([&] { return s.expression; }); }
const char kNext[] = "@#";

const Listing kListings[] = {
    {"00", CALL(startListUser()), NEXT(getUser2(kNext, 0)), CALL(endListUser()), 12, "0002000000",
     "EndOfListException 0 End of list"},
    {"01", CALL(startListGroup(false)), NEXT(getGroup2(kNext, UNIX_ONLY)), CALL(endListGroup()), 12, "0100000000",
     "EndOfListException 0 End of list"},
    {"02", CALL(startListShadow()), NEXT(getShadow(kNext, 0)), CALL(endListShadow()), 11, "0200000000",
     "NotFoundException 0 User not found"},
    {"00", CALL(startListUser()), NEXT(getUserObj(kNext, GROUP_MEMBERSHIP)), CALL(endListUser()), 11, "0002000001",
     "empty"},
    {"01", CALL(startListGroup(false)), NEXT(getGroupObj(kNext, CHECK_AD_FIRST)), CALL(endListGroup()), 11,
     "0102000100", "empty"},
};
// clang-format on

class ListingTest : public SessionTest {
 protected:
  static std::string integers(const std::string& digits) {
    std::string fields;
    for (const char byte : hex(digits)) fields += integer(byte);
    return fields;
  }
  static std::string startOf(const Listing& row) {
    return request(13, integers(row.kind + std::string("0000")));
  }
  static std::string nextOf(const Listing& row) {
    return request(row.opcode, integers(row.header) + hex("0402 4023"));
  }
  static std::string endOf(const Listing& row) { return request(14, integers(row.kind + std::string("00"))); }

  static std::string entry(int number) { return "CN=" + std::to_string(number) + ",DC=x"; }

  const std::string atEnd = reply(0, status(42, 10));
};

TEST_F(ListingTest, EachKindGoesToItsOwnEnd) {
  for (const Listing& row : kListings)
    for (const int count : {0, 1, 3}) {
      peer().expect(startOf(row)).send(answer(0));
      for (int i = 0; i < count; ++i) peer().expect(nextOf(row)).send(answer(0, object(entry(i))));
      peer()
          .expect(nextOf(row))
          .send(atEnd)
          .expect(endOf(row))
          .send(answer(0))
          .expect(endOf(row))
          .send(answer(17));
      EXPECT_FALSE(row.start(session()));
      for (int i = 0; i < count; ++i) EXPECT_EQ(row.next(session()), entry(i));
      EXPECT_EQ(row.next(session()), row.endOfList);
      EXPECT_FALSE(row.end(session()));
      EXPECT_TRUE(row.end(session()));
      ASSERT_TRUE(peer().finished()) << row.opcode << row.header << count;
    }
}

TEST_F(ListingTest, TwoKindsAtOnceKeepApart) {
  const Listing &users = kListings[0], &groups = kListings[1];
  peer().expect(startOf(users)).send(answer(0)).expect(startOf(groups)).send(answer(0));
  peer().expect(nextOf(groups)).send(answer(0, object(entry(1)))).expect(nextOf(users)).send(atEnd);
  peer().expect(nextOf(groups)).send(answer(9, kRemote));
  EXPECT_FALSE(users.start(session()) || groups.start(session()));
  EXPECT_EQ(groups.next(session()), entry(1));
  EXPECT_EQ(users.next(session()), users.endOfList);
  EXPECT_EQ(groups.next(session()), " 0 no listing");
  EXPECT_TRUE(peer().finished());
}

TEST_F(ListingTest, ALostConnectionEndsAListing) {
  for (const Listing& row : kListings) {
    peer().accept().expect(startOf(row)).hangUp();
    peer().accept().expect(startOf(row)).send(answer(0));  // a start may be sent again
    peer().expect(nextOf(row)).send(answer(0, object(entry(2)))).expect(nextOf(row)).hangUp();
    EXPECT_FALSE(row.start(session()));
    EXPECT_EQ(row.next(session()), entry(2));
    EXPECT_EQ(row.next(session()).find("ConnectionBrokenException"), 0u);
    ASSERT_TRUE(peer().finished()) << row.header;
    // The new connection knows of no listing, and nobody opens one in secret.
    peer().accept().expect(nextOf(row)).send(answer(17)).expect(endOf(row)).hangUp();
    EXPECT_NE(row.next(session()), entry(2));
    EXPECT_EQ(thrownBy([&] { row.end(session()); }).find("ConnectionBrokenException"), 0u);
    ASSERT_TRUE(peer().finished()) << row.header;
  }
}

class PagedSearchTest : public SessionTest {
 protected:
  static std::string page(const Names& names) {
    std::string fields = integer(names.size());
    for (const std::string& name : names) fields += object(name);
    return answer(0, fields);
  }

  PagedSearchHandle open() {
    const std::string nothing = octets("") + octets("") + octets("") + sequence("");
    peer().accept().expect(request(22, nothing + integer(0) + integer(0) + integer(0)));
    peer().send(answer(0, integer(-7)));
    return session().ldapPagedSearch("", "", "", nullptr, LdapSearchScopeType(), 0, false);
  }
  static std::string nextOf(PagedSearchHandle& handle) {
    return told([&] { return handle.getNext(); });
  }

  const std::string next = request(23, integer(-7));
};

TEST_F(PagedSearchTest, OneExchangeForEachPage) {
  for (const std::vector<Names>& pages :
       {std::vector<Names>{}, {{"a"}}, {{"a", "b", "c"}}, {{"a"}, {"b"}}, {{"a", "b"}, {"c"}, {"d", "e"}}}) {
    session().dropConnection();
    PagedSearchHandle handle = open();
    ASSERT_TRUE(peer().finished());  // nothing has been asked for yet
    for (const Names& names : pages) {
      peer().expect(next).send(page(names));
      for (const std::string& name : names) {
        EXPECT_EQ(nextOf(handle), name);
        ASSERT_TRUE(peer().finished());
      }
    }
    peer().expect(next).send(page({}));
    for (int again = 0; again < 3; ++again) EXPECT_EQ(nextOf(handle), "empty");
    EXPECT_TRUE(peer().finished());
  }
}

TEST_F(PagedSearchTest, AFailureIsTheCallersAndTheSearchGoesOn) {
  PagedSearchHandle handle = open();
  peer().expect(next).send(answer(9, kRemote)).expect(next).send(answer(9));
  peer().expect(next).send(answer(0, integer(0x7fffffff) + object("a"))).expect(next).send(page({"a", "b"}));
  EXPECT_EQ(nextOf(handle), " 0 no listing");
  EXPECT_EQ(nextOf(handle), "IOException 0 ber_scanf IPCException::decode");
  EXPECT_EQ(nextOf(handle), "IOException 0 ber_scanf adobj");
  EXPECT_EQ(nextOf(handle), "a");
  peer().hangUp();
  EXPECT_EQ(nextOf(handle), "b");
  // The next page is asked for on a new connection, with the old number.
  peer().accept().expect(next).send(page({"c"}));
  EXPECT_EQ(nextOf(handle), "c");
  for (int attempt = 0; attempt < 2; ++attempt) peer().accept().expect(next).hangUp();
  session().dropConnection();
  EXPECT_EQ(nextOf(handle).find("ConnectionBrokenException"), 0u);
  peer().accept().expect(next).send(page({}));
  EXPECT_EQ(nextOf(handle), "empty");
  EXPECT_TRUE(peer().finished());
}

TEST_F(ListingTest, TheServicePrincipalForAKerberosLibrary) {
  char name[65] = {};
  ASSERT_EQ(gethostname(name, 64), 0);
  const std::string local = "host/" + lower(std::string(name));
  const std::string found = answer(0, octets(std::string("nfs/h@X\0y", 9)));
  const struct {
    const char *host, *service;
    int type;
    std::string sent;  // nothing if empty
    std::string reply;
    const char* permitted;
    unsigned result;
  } rows[] = {
      {"H.X", "NFS", 1, "", "", "", 0x96c73ada},
      {"H.X", "NFS", -1, "", "", "", 0x96c73ada},
      {"H.X", "NFS", 0, "NFS/h.x", found, "", 1},
      {nullptr, nullptr, 3, local, found, "", 1},
      {"H", nullptr, 3, "host/h", answer(17), "", 0x96c73ad8},
      {"H", "", 3, "/h", answer(17), "no", 0x96c73ad8},
      {"H", "", 3, "/h", answer(17), "on", 0x96c73ad8},
      {"H", "", 3, "/h", answer(17), "YES", 0x96c73af5},
      {"H", "", 3, "/h", answer(17), "1", 0x96c73af5},
      {"H", "", 3, "/h", answer(0), "", 0x96c73af5},
  };
  for (const auto& row : rows) {
    configure("krb5.permit.dns.spn.lookups: " + std::string(row.permitted) + "\n");
    forgetLog();
    ScriptedPeer daemon(paths::kDaemonSocket);
    if (!row.sent.empty()) daemon.expect(request(20, octets(row.sent))).send(row.reply).expectClosed();
    char out[32] = "untouched";
    EXPECT_EQ(
        static_cast<unsigned>(velmora_sname_to_principal(nullptr, row.host, row.service, row.type, out)),
        row.result);
    EXPECT_STREQ(out, row.result == 1 ? "nfs/h@X" : "untouched");
    EXPECT_EQ(isLogged("DEBUG lrpc.session SPN wasn't found in AD.  Trying DNS...\n"),
              row.result == 0x96c73af5 && *row.permitted);
    EXPECT_TRUE(daemon.finished()) << row.sent;
  }
  char out[1];
  EXPECT_EQ(static_cast<unsigned>(velmora_sname_to_principal(nullptr, "h", "s", 3, out)), 0x96c73af5);
}

}  // namespace
