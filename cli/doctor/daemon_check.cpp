#include <sys/socket.h>

#include <cerrno>
#include <cstring>
#include <fstream>

#include <fokrazo/session.h>
#include "cli/doctor/call_finding.h"
#include "cli/doctor/checks.h"
#include "cli/doctor/shell_word.h"
#include "cli/doctor/user_text.h"
#include "cli/shown.h"

namespace cli {

namespace {

// The kernel reports the process that began to listen, which may since have passed the socket to a child.
void checkPeer(Findings& findings, int fd, const std::string& socketPath) {
  const std::string listeners = "ss -xlp src " + shellWord(socketPath);
  ucred peer = {};
  socklen_t size = sizeof peer;
  if (getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0)
    return findings.warn(std::string("the process that answers is unknown: ") + strerror(errno),
                         "look for the process that listens there", listeners);
  std::string text = "runs as " + userText(peer.uid) + ", group " + std::to_string(peer.gid);
  std::string program;
  if (std::ifstream("/proc/" + std::to_string(peer.pid) + "/comm") >> program)
    text += ", process " + std::to_string(peer.pid) + " (" + shown(program) + ")";
  if (peer.uid == 0) return findings.ok(text);
  findings.warn(text, "the daemon should run as root: this is a stand-in or an impostor", listeners);
}

}  // namespace

Findings checkDaemon(Patient& patient) {
  Findings findings("daemon");
  const auto look = [&](vesk::LocalRpcSession& session) {
    session.reConnect(false);
    checkPeer(findings, session.socket(), patient.daemon.socketPath());
  };
  const vesk::CallStatus call =
      patient.daemon.client().call("connect", vesk::Client::Repeat::Harmless, look, evenIfAway());
  if (!call.ok()) addFailedCall(findings, patient, call);
  return findings;
}

}  // namespace cli
