// Every operation of the session: the bytes it sends, whether it sends them again when the connection is
// lost, and what it makes of each reply.

#include "tests/support/operations.h"
#include "tests/support/rows.h"
#include "tests/support/session_test.h"

using namespace vesk;
using namespace testsupport;

namespace {

const Secrets kBinary = {std::string("p\0\xff%s\n", 6), std::string("\n\0", 2)};
const Secrets kLong = {std::string(1 << 20, '\x80'), Shredder("short")};

// As the daemon sends one.
const std::string exception = integer(3) + octets("no such base");

class OperationsTest : public SessionTest {
 protected:
  void check(const Operation& operation, const Secrets& secrets) {
    SCOPED_TRACE(operation.name);
    m_request = operation.request(secrets);
    const auto make = [&] {
      forgetLog();
      return operation.make(session(), secrets);
    };
    session().dropConnection();
    peer().accept();
    checkAnswers(operation, make);
    if (&secrets == &kBinary) checkCutReplies(operation.answers[0], make);
    ASSERT_TRUE(peer().finished());
    session().dropConnection();
    checkCarrier(operation, make);
  }

  template <class Make>
  void checkAnswers(const Operation& operation, Make make) {
    for (const testsupport::Answer& each : operation.answers) {
      peer().expect(m_request).send(each.message);
      EXPECT_EQ(make(), each.outcome);
      EXPECT_TRUE(isLogged(operation.logged)) << logged();
      EXPECT_TRUE(isLogged(each.logged)) << logged();
    }
  }

  // A truncated reply is never taken for a complete one.
  template <class Make>
  void checkCutReplies(const testsupport::Answer& good, Make make) {
    const bool hasFields = good.message.size() > answer(0).size();
    for (size_t size = reply(0).size(); size < good.message.size(); ++size) {
      peer().expect(m_request).send(good.message.substr(0, size));
      const std::string outcome = make();
      EXPECT_TRUE(!hasFields || outcome != good.outcome) << size;
    }
  }

  template <class Make>
  void checkCarrier(const Operation& operation, Make make) {
    const testsupport::Answer& good = operation.answers[0];
    peer().accept().expect(m_request).hangUp();
    if (operation.sent == Sent::Again) {
      peer().accept().expect(m_request).send(good.message);
      EXPECT_EQ(make(), good.outcome);
      ASSERT_TRUE(peer().finished());
      for (int attempt = 0; attempt < 2; ++attempt) peer().accept().expect(m_request).hangUp();
      session().dropConnection();
    }
    const std::string failure = make();
    EXPECT_EQ(failure.find("ConnectionBrokenException"), 0u) << failure;
    EXPECT_EQ(failure.substr(failure.size() - operation.untouched.size()), operation.untouched);
    EXPECT_TRUE(good.logged.empty() || !isLogged(good.logged));
    EXPECT_TRUE(peer().finished());
  }

  std::string m_request;
};

TEST_F(OperationsTest, EachSendsItsFieldsAndUnderstandsEachReply) {
  for (const Operation& operation : exchanges()) {
    check(operation, kBinary);
    if (operation.request(kBinary) != operation.request(kLong)) check(operation, kLong);
    if (HasFailure()) break;
  }
}

TEST_F(OperationsTest, TheCategoryOfASidDecidesTheView) {
  const SID sid("S-1-5-32-544");
  const std::string sidKey = octets(hex("01 02 000000000005 20000000 20020000"));
  const std::string sidLookup = request(11, lookupFields("1802030000", sidKey));
  const std::pair<const char*, std::string> rows[] = {
      {"Person", "User"}, {"Computer", "User"}, {"Group", "Group"}, {"person", ""}};
  for (const auto& [category, kind] : rows) {
    ADObject found("CN=al,DC=x");
    found[VESK_OBJECT_CATEGORY] = category;
    const ADSerializer& blob = *found.getSerialized();
    peer().expect(sidLookup);
    peer().send(answer(0, octets(std::string(blob.data(), blob.size()))));
    boost::shared_ptr<VeskObj> view;
    EXPECT_EQ(thrownBy([&] { view = session().getObject(sid, 0); }),
              !kind.empty() ? "nothing" : "NotFoundException 0 SID is not a user or group");
    EXPECT_EQ(dynamic_cast<const User*>(view.get()) != nullptr, kind == "User");
    EXPECT_EQ(dynamic_cast<const Group*>(view.get()) != nullptr, kind == "Group");
  }
  peer().expect(request(11, lookupFields("1800030101", sidKey))).send(answer(2));
  EXPECT_EQ(thrownBy([&] { session().getObject(sid, UNIX_ONLY | CHECK_AD_FIRST | GROUP_MEMBERSHIP); }),
            "NotFoundException 0 Group not found");
  EXPECT_EQ(thrownBy([&] { session().getObject(SID(), 0); }), "BadDataException 0 SID is Null");
}

TEST_F(OperationsTest, HealthComesFromTheLastReplyOrAProbe) {
  ValidationResult health = VR_SUCCESS;
  int a = 1, b = 2;
  std::string why = "why";
  const auto healthInfo = [&](bool refresh) {
    const std::string result = text(session().systemHealthInfo(refresh, health, a, b, why));
    return result + ": " + text(health) + " " + text(a) + " " + text(b) + " " + why;
  };
  const std::string probe = request(21, octets("") + octets("") + sequence("") + integer(0));
  const std::string tired = integer(0) + integer(0) + integer(0) + octets("") + integer(44) + integer(6) +
                            integer(-7) + octets("tired");
  EXPECT_EQ(healthInfo(false), "0: 48 0 0 ");
  peer().expect(probe).send(answer(33, exception));
  EXPECT_EQ(healthInfo(true), "0: 0 0 0 ");
  peer().expect(probe).send(reply(0, tired));  // without its object
  EXPECT_EQ(healthInfo(true), "38: 0 0 0 ");
  EXPECT_EQ(healthInfo(false), "0: 44 6 -7 tired");
  peer().expect(probe).hangUp().accept().expect(probe).hangUp();
  EXPECT_EQ(healthInfo(true), "0: 44 6 -7 tired");  // the connection was lost, but there is a daemon
  peer().down();
  ASSERT_TRUE(peer().finished());
  EXPECT_EQ(healthInfo(true), "38: 44 6 -7 tired");
  EXPECT_EQ(session().getFipsMode(), 0);
}

TEST_F(OperationsTest, APagedSearchContinuesAfterFailures) {
  const std::string next = request(23, integer(-7)), a = object("a"), b = object("b");
  peer()
      .expect(request(
          22, octets("") + octets("") + octets("") + sequence("") + integer(0) + integer(0) + integer(0)))
      .send(answer(0, integer(-7)))
      .hangUp();
  PagedSearchHandle handle = session().ldapPagedSearch("", "", "", nullptr, ScopeBase, 0, false);
  const std::pair<std::string, std::string> pages[] = {
      {answer(9, exception), " 0 no such base"},
      {answer(0, integer(0x7fffffff) + a), "IOException 0 ber_scanf adobj"},
      {answer(0, integer(2) + a + b), "a b"},
      {answer(0, integer(1) + b), "b"}};
  for (const auto& [page, outcome] : pages) {
    ASSERT_TRUE(peer().finished());  // no request yet
    peer().accept().expect(next).send(page);
    std::string all = outcomeOf([&] { return handle.getNext(); });
    if (outcome == "a b") all += " " + text(handle.getNext());
    EXPECT_EQ(all, outcome);
    peer().hangUp();  // requests the next page on a new connection, with the old number
  }
  for (int attempt = 0; attempt < 2; ++attempt) peer().accept().expect(next).hangUp();
  EXPECT_EQ(outcomeOf([&] { return handle.getNext(); }).find("ConnectionBrokenException"), 0u);
  peer().accept().expect(next).send(answer(0, integer(0)));
  for (int again = 0; again < 3; ++again) EXPECT_TRUE(handle.getNext().isEmpty());
}

TEST_F(OperationsTest, TheServicePrincipalForAKerberosLibrary) {
  char name[65] = {};
  ASSERT_EQ(gethostname(name, 64), 0);
  const std::string local = "host/" + lower(std::string(name));
  const std::string found = answer(0, octets(std::string("nfs/h@X\0y", 9)));
  const auto given = [](const std::string& text) { return text == "-" ? nullptr : text.c_str(); };
  for (const auto& row : rowsOf<7>("lrpc/session/rows.txt", "service principals")) {
    const std::string sent = row[3] == "host/HERE" ? local : row[3];
    configure("krb5.permit.dns.spn.lookups: " + row[5] + "\n");
    forgetLog();
    ScriptedPeer daemon(paths::kDaemonSocket);
    if (!sent.empty())
      daemon.expect(request(20, octets(sent)))
          .send(row[4] == "found" ? found : answer(stoi(row[4])))
          .expectClosed();
    char out[32] = "untouched";
    const int type = stoi(row[2]);
    const unsigned result = velmora_sname_to_principal(nullptr, given(row[0]), given(row[1]), type, out);
    EXPECT_EQ(result, stoul(row[6], nullptr, 16));
    EXPECT_STREQ(out, result == 1 ? "nfs/h@X" : "untouched");
    EXPECT_EQ(isLogged("DEBUG lrpc.session SPN wasn't found in AD.  Trying DNS...\n"), row[5] == "YES");
    EXPECT_TRUE(daemon.finished()) << sent;
  }
  char out[1];
  EXPECT_EQ(static_cast<unsigned>(velmora_sname_to_principal(nullptr, "h", "s", 3, out)), 0x96c73af5);
}

}  // namespace
