#include <unistd.h>

#include <fokrazo/adobject.h>
#include <fokrazo/attrnames.h>
#include <fokrazo/session.h>
#include <fokrazo/unixviews.h>
#include "bench/compared/parts.h"
#include "bench/support/canned_peer.h"
#include "bench/support/measure.h"
#include "bench/support/plain_lookup.h"
#include "bench/support/plain_socket.h"
#include "bench/support/sample_user.h"

namespace bench {
namespace {

constexpr int kCpu = 0;  // for both processes
constexpr double kBatchMs = 30;
constexpr int kBatches = 5;

/// A user of about `size` bytes: the attributes for a login, padded with memberships.
Entry userOfSize(size_t bytes) {
  constexpr size_t kPlain = 150;  // size of the blob with only the attributes for a login
  constexpr size_t kMembership = 64;
  Entry user = {{AD_DN, {"CN=alice,DC=example,DC=com"}},
                {"gidNumber", {"20017"}},
                {"uid", {"alice"}},
                {"uidNumber", {"51234"}},
                {"unixHomeDirectory", {"/home/alice"}}};
  for (size_t size = kPlain; size < bytes; size += kMembership) {
    std::string group = "CN=grp-" + std::to_string(size) + ",OU=Unix Groups,DC=example,DC=com";
    group.resize(kMembership - sizeof(uint32_t), 'x');
    user["memberOf"].push_back(group);
  }
  return user;
}

void measureObjectSizes() {
  const std::string name = "alice";
  for (size_t bytes : {200, 1'000, 3'000, 10'000, 30'000, 100'000, 300'000, 1'000'000}) {
    const CannedPeer peer(objectReply(userOfSize(bytes)), kCpu);
    vesk::LocalRpcSession session(peer.path(), false, false);
    const double time = nanosecondsOf([&] { keep(session.getUser(name, 0).get()); }, kBatchMs, kBatches);
    print("curve.getuser." + std::to_string(bytes) + "B", time / bytes, "ns/byte");
  }
}

// Compared with minimal code, because a long list does not fit into any cache.
void measureListLengths() {
  constexpr size_t kEntry = 200;
  for (size_t length : {1, 10, 100, 1'000, 10'000, 100'000}) {
    const std::string reply = listReply(std::vector<std::string>(length, blobOf(userOfSize(kEntry))));
    const CannedPeer peer(reply, kCpu);
    const CannedPeer plainPeer(reply, kCpu);
    vesk::LocalRpcSession session(peer.path(), false, false);
    const int fd = connectTo(plainPeer.path());
    auto search = [&] {
      if (session.ldapSearch("", "", "", nullptr, vesk::ScopeBase, 0, false).size() != length) die("search");
    };
    const std::string key = "curve.list." + std::to_string(length);
    print(key, nanosecondsOf(search, kBatchMs, kBatches) / length, "ns/entry");
    print(key + ".plain", nanosecondsOf([&] { plainSearch(fd); }, kBatchMs, kBatches) / length, "ns/entry");
    close(fd);
  }
}

}  // namespace

void measureCurves() {
  pinTo(kCpu);
  measureObjectSizes();
  measureListLengths();
  pinTo(-1);
}

}  // namespace bench
