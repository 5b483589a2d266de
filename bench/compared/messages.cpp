#include <sys/socket.h>
#include <unistd.h>

#include <fokrazo/ipcmessage.h>
#include <fokrazo/qtr_ber.h>
#include <fokrazo/session.h>
#include "bench/compared/parts.h"
#include "bench/support/canned_peer.h"
#include "bench/support/measure.h"
#include "bench/support/plain_socket.h"

namespace bench {
namespace {

const std::string kName = "alice.example@corp.example.com";
const std::string kDomain = "corp.example.com";

/// A request of six fields, encoded for sending.
void buildRequest() {
  vesk::IPCRequest request(vesk::IPC_OP_ADD_SPN);
  (((((request += kName) += 3) += kDomain) += 0) += 300) += 1;
  berval* bytes = nullptr;
  if (qtr_fast_ber_flatten(request.doHeader(), &bytes) != 0) die("flatten");
  keep(bytes->bv_val);
  qtr_ber_bvfree(bytes);
}

/// Puts a reply into a message as if the daemon had sent it.
void receiveReply(const std::string& bytes, vesk::IPCReply& reply) {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0) die("socketpair");
  sendFrame(ends[0], bytes.data(), bytes.size());
  reply.get(ends[1]);
  for (int end : ends) close(end);
}

}  // namespace

void measureMessages() {
  print("ours.ber.build6", nanosecondsOf(buildRequest), "ns");
  print("ours.ber.build6.allocs", allocationsOf(buildRequest), "allocs");

  vesk::LocalRpcSession session("", false, false);
  vesk::IPCReply reply;
  receiveReply(statusReply(), reply);
  session.updateVRErrInfo(reply);  // makes it readable again
  // Header and status block, from received bytes.
  auto parse = [&] {
    reply.rewind();
    if (session.updateVRErrInfo(reply) != vesk::VR_SUCCESS || session.healthMessage().empty())
      die("status block");
  };
  print("ours.ber.parse8", nanosecondsOf(parse), "ns");
  print("ours.ber.parse8.allocs", allocationsOf(parse), "allocs");
}

}  // namespace bench
