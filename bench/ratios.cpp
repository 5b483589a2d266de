// Prints a table: the library's time divided by that of minimal code for the same work, measured alternately
// in this run; and the number of allocations.

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>
#include <unordered_map>

#include <fokrazo/adobject.h>
#include <fokrazo/adserializer.h>
#include <fokrazo/attrnames.h>
#include <fokrazo/client.h>
#include <fokrazo/ipcmessage.h>
#include <fokrazo/session.h>
#include <fokrazo/stringdict.h>
#include <fokrazo/unixviews.h>
#include "bench/support/canned_peer.h"
#include "bench/support/measure.h"
#include "bench/support/plain_lookup.h"
#include "bench/support/plain_socket.h"
#include "bench/support/sample_user.h"
#include "bench/support/standin_process.h"

namespace bench {
namespace {

constexpr int kCpu = 0;  // shared by client and peer, to exclude wake-ups between processors
constexpr int kListed = 300;
constexpr double kListBatchMs = 10;
constexpr int kListBatches = 41;
const std::string kName = "alice.example@corp.example.com";

void printHead(const char* title) {
  printf("\n%-58s %10s %10s %7s\n", title, "ours/us", "other/us", "ratio");
}

void printRow(const char* what, const Comparison& times, double divisor = 1) {
  constexpr double kMicrosecond = 1000;
  printf("%-58s %10.3f %10.3f %7.3f\n", what, times.ours / kMicrosecond / divisor,
         times.other / kMicrosecond / divisor, times.ratio);
  fflush(stdout);
}

void printCount(const char* what, double count) {
  printf("%-58s %10.1f\n", what, count);
  fflush(stdout);
}

/// A session and a plain descriptor, each with its own peer; both peers send the same reply.
struct Pair {
  explicit Pair(const std::string& reply)
      : peer(reply, kCpu),
        plainPeer(reply, kCpu),
        session(peer.path(), false, false),
        fd(connectTo(plainPeer.path())) {}

  CannedPeer peer;
  CannedPeer plainPeer;
  vesk::LocalRpcSession session;
  int fd;
};

void compareExchanges() {
  printHead("exchanges, compared with bare processes that make the same system calls");
  {
    Pair pair(emptyReply());
    printRow("ping", compare([&] { pair.session.ping(); }, [&] { plainPing(pair.fd); }));
  }
  {
    const std::string reply = emptyReply();
    const CannedPeer peer(reply, kCpu), plainPeer(reply, kCpu);
    vesk::LocalRpcSession session(peer.path(), false, false);
    auto again = [&] {
      session.dropConnection();
      session.ping();
    };
    auto plainAgain = [&] {
      const int fd = connectTo(plainPeer.path());
      plainPing(fd);
      close(fd);
    };
    printRow("a new connection and a ping", compare(again, plainAgain));
  }
  {
    Pair pair(objectReply(daemonUser()));
    auto ours = [&] { keep(pair.session.getUser(kName, 0).get()); };
    printRow("getUser, 45 attributes, 2.9 kB",
             compare(ours, [&] { keep(plainGetUser(pair.fd, kName).size()); }));
  }
  {
    Pair pair(listReply(sampleBlobs(kListed)));
    auto ours = [&] { keep(pair.session.ldapSearch("", "", "", nullptr, vesk::ScopeBase, 0, false).size()); };
    auto plain = [&] { keep(plainSearch(pair.fd).size()); };
    printRow("an object of a list of 300", compare(ours, plain, kListBatchMs, kListBatches), kListed);
  }
}

vesk::ClientOptions optionsFor(const std::string& socket) {
  vesk::ClientOptions options;
  options.socketPath = socket;
  options.trustedPeer = getuid();
  return options;
}

void compareClient() {
  const std::string reply = objectReply(daemonUser());
  const CannedPeer peer(reply, kCpu), sessionPeer(reply, kCpu), cachePeer(reply, kCpu);
  vesk::Client client(optionsFor(peer.path()));
  vesk::LocalRpcSession session(sessionPeer.path(), false, false);
  printHead("the client of a program, compared with a session");
  printRow("a user through the client", compare([&] { keep(client.user(kName).value().getId()); },
                                                [&] { keep(session.getUser(kName, 0)->getId()); }));
  vesk::ClientOptions options = optionsFor(cachePeer.path());
  options.cache.entries = 1;
  vesk::Client caching(options);
  const vesk::ObjectKey key(kName);
  keep(caching.user(key).value().getId());  // from the daemon
  printCount("a hit of the client's cache, in nanoseconds",
             nanosecondsOf([&] { keep(&caching.user(key).value()); }));
}

// A user who is in so many groups. The sample has fewer; some come more than once.
vesk::User memberOfGroups(vesk::Client& client, size_t count) {
  std::vector<std::string> sids;
  for (const vesk::Group& group : client.groups()) sids.push_back(group.getSid().toMSString());
  if (sids.empty()) throw std::runtime_error("no groups");
  vesk::ADObject object("CN=member");
  for (size_t i = 0; i < count; ++i) object[VESK_GROUPS] += sids[i % sids.size()];
  return vesk::User(object);
}

void compareManyAtOnce() {
  constexpr size_t kGroups = 200;
  constexpr int kRuns = 9;
  const StandinProcess standin(FOKRAZO_STANDIN, FOKRAZO_SAMPLE, {"--delay", "1"});
  vesk::Client client(optionsFor(standin.socket()));
  vesk::LocalRpcSession session(standin.socket(), false, false);
  const vesk::User user = memberOfGroups(client, kGroups);
  auto atOnce = [&] {
    for (const auto& group : client.groupsOf(user)) keep(group.value().getId());
  };
  auto inARow = [&] {
    for (const vesk::SID& sid : user.groupSids()) keep(session.getGroup(sid, 0)->getId());
  };
  printRow("200 groups at once, with a daemon that takes 1 ms each", compare(atOnce, inARow, 1, kRuns));
}

void compareReading() {
  std::string bytes = blobOf(sampleUser());
  const vesk::ADSerializer blob(bytes.size(), bytes.data(), false);
  const Triple& names = sampleTriples()[0];
  auto readThree = [&] {
    vesk::ADObject object(bytes.size(), bytes.data(), false, nullptr);
    for (const std::string& name : names) keep(object.firstValue(name));
  };
  auto unpack = [&] {
    vesk::ADObject object(bytes.size(), bytes.data(), false, nullptr);
    object.deSerialize(false);
    keep(&object.attributes());
  };
  vesk::ADObject object = objectOf(sampleUser());
  auto serialize = [&] { keep(vesk::ADSerializer::serialize(object)->data()); };

  printHead("reading and writing a blob of 45 attributes");
  printRow("three attributes lazily, and unpacking it", compare(readThree, unpack));
  printRow("three attributes lazily, and a std::map of all",
           compare(readThree, [&] { keep(plainMap(bytes.data(), bytes.size()).size()); }));
  printRow("unpacking it, and the same by hand",
           compare(unpack, [&] { keep(plainUnpack(bytes.data(), bytes.size()).size()); }));
  printRow("serialize, and unpacking", compare(serialize, unpack));
}

void compareDictionary() {
  std::unordered_map<std::string, int> plain;
  for (const std::string& entry : vesk::GetDictionaryVector())
    plain.emplace(entry, static_cast<int>(plain.size()));
  const vesk::DictionaryVector& entries = vesk::GetDictionaryVector();
  Scatter scatter, plainScatter;
  auto ours = [&] { keep(vesk::ADSerializer::m_dictionary[entries[scatter.next() % entries.size()]]); };
  auto other = [&] { keep(plain.find(entries[plainScatter.next() % entries.size()])->second); };
  printHead("the string dictionary");
  printRow("a probe, and std::unordered_map", compare(ours, other));
}

double timeOfLoad(const char* path, const char* symbol) {
  const std::string command = std::string(FOKRAZO_LOADER) + " " + path + " " + symbol;
  const std::unique_ptr<FILE, int (*)(FILE*)> output(popen(command.c_str(), "r"), pclose);
  double time = 0;
  if (!output || fscanf(output.get(), "%lf", &time) != 1) throw std::runtime_error(command);
  return time;
}

void compareLoading() {
  constexpr int kRuns = 41;
  std::vector<double> ours, other, ratios;
  for (int i = 0; i < kRuns; ++i) {
    ours.push_back(timeOfLoad(FOKRAZO_LIBRARY, "velmora_sname_to_principal"));
    other.push_back(timeOfLoad(FOKRAZO_OTHER_LIBRARY, "ldap_initialize"));
    ratios.push_back(ours.back() / other.back());
  }
  printHead("loading the library into a fresh C process");
  printRow("dlopen, and libldap", {median(ours), median(other), median(ratios)});
}

// Large messages, to distinguish a copy from small allocations.
double largeAllocationsOfExchange() {
  constexpr size_t kSize = 1 << 20;
  vesk::IPCReply large(vesk::IPC_OP_PING);
  large += std::string(kSize, 'r');
  const CannedPeer peer(bytesOf(large), kCpu);
  vesk::LocalRpcSession session(peer.path(), true, false);
  vesk::IPCRequest request(vesk::IPC_OP_PING);
  request += std::string(kSize, 'q');
  vesk::IPCReply reply;
  const unsigned long before = largeAllocationCount();
  session.lrpc(request, reply);
  return static_cast<double>(largeAllocationCount() - before);
}

void countAllocations() {
  std::string bytes = blobOf(sampleUser());
  const vesk::ADSerializer blob(bytes.size(), bytes.data(), false);
  vesk::ADObject object = objectOf(sampleUser());
  const std::string name = "uidNumber";

  printf("\n%-58s %10s\n", "heap allocations", "count");
  printCount("an attribute located in a blob", allocationsOf([&] { keep(blob.findAttributeData(name)); }));
  printCount("an attribute of one short value built of a blob",
             allocationsOf([&] { keep(blob.find(name).size()); }));
  printCount("serialize: the blob and the object that holds it",
             allocationsOf([&] { keep(vesk::ADSerializer::serialize(object)->data()); }));
  printCount("an exchange of 1 MB each way: of 32 kB and more", largeAllocationsOfExchange());
  const CannedPeer pingPeer(emptyReply(), kCpu);
  vesk::LocalRpcSession pinger(pingPeer.path(), true, false);
  printCount("ping", allocationsOf([&] { pinger.ping(); }));
  const CannedPeer userPeer(objectReply(daemonUser()), kCpu);
  vesk::LocalRpcSession session(userPeer.path(), true, false);
  printCount("getUser, 45 attributes, 66 values", allocationsOf([&] { session.getUser(kName, 0); }));
}

}  // namespace
}  // namespace bench

int main() {
  using namespace bench;
  try {
    compareLoading();
    pinTo(kCpu);
    compareExchanges();
    compareClient();
    compareManyAtOnce();
    compareReading();
    compareDictionary();
    countAllocations();
  } catch (const std::exception& error) {
    fprintf(stderr, "ratios: %s\n", error.what());
    return 1;
  }
  return 0;
}
