// Searches whose objects come page by page.

#include <gtest/gtest.h>

#include "lrpc/session.h"
#include "tests/support/session_test.h"
#include "tests/support/told.h"

using namespace vesk;
using namespace testsupport;

namespace {

using Names = std::vector<std::string>;

const std::string kRemote = integer(1) + octets("no listing");

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

}  // namespace
