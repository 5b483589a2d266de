#include <fokrazo/adobject.h>
#include <fokrazo/session.h>
#include <fokrazo/unixviews.h>
#include "bench/compared/parts.h"
#include "bench/support/canned_peer.h"
#include "bench/support/measure.h"
#include "bench/support/plain_socket.h"
#include "bench/support/sample_user.h"

namespace bench {
namespace {

constexpr int kCpu = 0;  // for both processes
constexpr double kBatchMs = 20;
constexpr int kBatches = 11;
constexpr int kListed = 300;
constexpr char kName[] = "alice.example@corp.example.com";

void printMicroseconds(const std::string& key, double nanoseconds) {
  print(key, nanoseconds / 1000, "us");
}

template <class Work>
void measureExchange(const std::string& key, Work&& work) {
  printMicroseconds(key + ".1cpu", nanosecondsOf(work, kBatchMs, kBatches));
  print(key + ".allocs", allocationsOf(work), "allocs");
}

void measurePing() {
  const CannedPeer peer(emptyReply(), kCpu);
  vesk::LocalRpcSession session(peer.path(), false, false);
  measureExchange("ours.ping", [&] { session.ping(); });
  measureExchange("ours.reconnect", [&] {
    session.dropConnection();
    session.ping();
  });
}

void measureGetUser() {
  const CannedPeer peer(objectReply(daemonUser()), kCpu);
  vesk::LocalRpcSession session(peer.path(), false, false);
  const std::string name = kName;
  measureExchange("ours.getuser", [&] { keep(session.getUser(name, 0).get()); });
}

void measureList() {
  const CannedPeer peer(listReply(sampleBlobs(kListed)), kCpu);
  vesk::LocalRpcSession session(peer.path(), false, false);
  auto search = [&] {
    const vesk::ADObjectList found = session.ldapSearch("", "", "", nullptr, vesk::ScopeBase, 0, false);
    if (found.size() != kListed) die("search");
  };
  printMicroseconds("ours.list300.1cpu", nanosecondsOf(search, 60, 7) / kListed);
  print("ours.list300.allocs", allocationsOf(search, 5) / kListed, "allocs");
}

}  // namespace

void measureExchanges() {
  pinTo(kCpu);
  measurePing();
  measureGetUser();
  measureList();
  pinTo(-1);
}

}  // namespace bench
