// doctor: finds problems of this host, and gives advice.

#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <fstream>

#include <fokrazo/error_util.h>
#include <fokrazo/fixed_paths.h>
#include <fokrazo/ipcmessage.h>
#include <fokrazo/osutil.h>
#include <fokrazo/properties.h>
#include <fokrazo/propnames.h>
#include <fokrazo/session.h>
#include <fokrazo/setting.h>
#include "cli/command.h"
#include "cli/configuration_check.h"

namespace cli {

namespace {

using namespace vesk;

constexpr char kLongestWait[] = "10";  // seconds, without --timeout
constexpr double kSlowPing = 1000;     // milliseconds

// Describes a user without looking up the name, which would ask the daemon under examination.
std::string userText(uid_t uid) {
  if (uid == 0) return "root";
  return "user " + std::to_string(uid) + (uid == geteuid() ? " (you)" : "");
}

// Prints each finding immediately and keeps the worst state.
class Doctor {
 public:
  Doctor(Output& output, Daemon& daemon) : m_output(output), m_daemon(daemon) {}

  ExitStatus examine();

 private:
  void tell(const Finding& finding);
  void tell(Finding::State state, const char* check, const std::string& text, const std::string& advice);
  bool unreachable(const char* check, const std::string& text, const std::string& advice);

  // These return false if the daemon cannot be examined further.
  bool checkSocket();
  void checkSocketOwner(const struct stat& info);
  bool checkConnection();
  void checkPeer(int fd);
  bool checkPing();
  void checkHealth();
  void checkJoined();

  Output& m_output;
  Daemon& m_daemon;
  Finding::State m_worst = Finding::Ok;
  bool m_isReachable = true;
};

void Doctor::tell(const Finding& finding) {
  static const char* const kStates[] = {"ok", "warning", "problem"};
  const std::string state = kStates[finding.state];
  std::string line = state + std::string(9 - state.size(), ' ') + finding.check + ": " + finding.text;
  if (!finding.advice.empty()) line += "\n         -> " + finding.advice;
  Record record;
  record.text("check", finding.check).text("state", state).text("text", finding.text);
  m_output.record(record.text("advice", finding.advice), line);
  fflush(stdout);
  if (finding.state > m_worst) m_worst = finding.state;
}

void Doctor::tell(Finding::State state, const char* check, const std::string& text,
                  const std::string& advice) {
  tell(Finding{state, check, text, advice});
}

bool Doctor::unreachable(const char* check, const std::string& text, const std::string& advice) {
  tell(Finding::Problem, check, text, advice);
  m_isReachable = false;
  return false;
}

bool Doctor::checkSocket() {
  const std::string& path = m_daemon.socketPath();
  struct stat info;
  if (stat(path.c_str(), &info) != 0) {
    const int error = errno;
    return unreachable("socket", path + ": " + strerror(error),
                       error == EACCES ? "give every user access to the directories above it (chmod a+x)"
                                       : "start the daemon; if it runs, name its socket with --socket");
  }
  if (!S_ISSOCK(info.st_mode))
    return unreachable("socket", path + " is not a socket", "move it away and restart the daemon");
  checkSocketOwner(info);
  return true;
}

void Doctor::checkSocketOwner(const struct stat& info) {
  char mode[8];
  snprintf(mode, sizeof mode, "%04o", info.st_mode & 07777u);
  const std::string text = m_daemon.socketPath() + ", owned by " + userText(info.st_uid) + ", mode " + mode;
  if (info.st_uid != 0 && info.st_uid != geteuid())
    tell(Finding::Warning, "socket", text,
         "its owner receives every password that is sent there: find out who that is first");
  else if ((info.st_mode & 0222u) != 0222u)
    tell(Finding::Warning, "socket", text,
         "not every user can write to it: run chmod a+rw on it, or restart the daemon");
  else
    tell(Finding::Ok, "socket", text, "");
}

bool Doctor::checkConnection() {
  try {
    checkPeer(m_daemon.session().socket());
    return true;
  } catch (const NoDaemonError& error) {
    return unreachable("daemon", error.what(),
                       "the daemon ended without removing its socket, or accepts no connections: "
                       "restart it; its log says why");
  }
}

// The kernel reports the process that began to listen, which may since have passed the socket to a child.
void Doctor::checkPeer(int fd) {
  ucred peer = {};
  socklen_t size = sizeof peer;
  if (getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0)
    return tell(Finding::Warning, "daemon",
                std::string("the process that answers is unknown: ") + strerror(errno),
                "look for the process that listens there (ss -xlp)");
  std::string text = "runs as " + userText(peer.uid) + ", group " + std::to_string(peer.gid);
  std::string program;
  if (std::ifstream("/proc/" + std::to_string(peer.pid) + "/comm") >> program)
    text += ", process " + std::to_string(peer.pid) + " (" + shown(program) + ")";
  if (peer.uid == 0) return tell(Finding::Ok, "daemon", text, "");
  tell(Finding::Warning, "daemon", text, "the daemon should run as root: this is a stand-in or an impostor");
}

// Only one attempt: a second one could hide the fault.
bool Doctor::checkPing() {
  const auto start = std::chrono::steady_clock::now();
  try {
    IPCRequest request(IPC_OP_PING);
    IPCReply reply;
    m_daemon.session().execute(request, reply, false);
  } catch (const SystemException& error) {
    tell(Finding::Problem, "ping", error.what(), "the daemon refuses this user; its log says why");
    return false;
  } catch (const VESKException& error) {
    return unreachable("ping", std::string(error.className()) + ": " + error.what(),
                       "the daemon hangs, or the process that answers is not the daemon: restart it");
  }
  const std::chrono::duration<double, std::milli> elapsed = std::chrono::steady_clock::now() - start;
  char text[32];
  snprintf(text, sizeof text, "%.1f ms", elapsed.count());
  if (elapsed.count() < kSlowPing)
    tell(Finding::Ok, "ping", text, "");
  else
    tell(Finding::Warning, "ping", text,
         "the daemon is busy or waits for the directory: see its load and its log");
  return true;
}

const char* healthAdvice(int result) {
  switch (result) {
    case VR_NOT_JOINED:
    case VR_JOINED_ELSEWHERE:
      return "join this machine to its domain";
    case VR_SERVER_UNREACHABLE:
    case VR_DISCONNECTED_MODE:
    case VR_NETWORK_ERROR:
    case VR_NO_DNS_SERVER:
      return "check the network, the name servers and the clock, then run 'fokrazo network-changed'";
    default:
      return "see the daemon's log";
  }
}

void Doctor::checkHealth() {
  ValidationResult result = VR_SYSTEM_ERROR;
  int value1 = 0;
  int value2 = 0;
  std::string message;
  if (m_daemon.session().systemHealthInfo(true, result, value1, value2, message) != 0)
    return tell(Finding::Problem, "health", "the daemon does not answer", "restart it");
  std::string text = LocalRpcSession::errorString(result);
  if (!message.empty()) text += ": " + shown(message);
  if (result == VR_SUCCESS) return tell(Finding::Ok, "health", text, "");
  text += " (" + std::to_string(result) + ", " + std::to_string(value1) + ", " + std::to_string(value2) + ")";
  tell(Finding::Problem, "health", text, healthAdvice(result));
}

void Doctor::checkJoined() {
  if (!joined())
    return tell(Finding::Problem, "joined", "this machine is not joined to a domain",
                "join it; if that is under way, wait until it is done");
  const std::string text = shown(GetSetting(SETTING_DOMAIN_NAME, "")) + " as " + shown(longJoinedHostName());
  try {
    CheckEssentialKSets();
    tell(Finding::Ok, "joined", text, "");
  } catch (const IOException& error) {
    tell(Finding::Problem, "joined", text + ", but: " + error.what(), "join the machine again");
  }
}

ExitStatus Doctor::examine() {
  if (checkSocket() && checkConnection() && checkPing()) checkHealth();
  checkJoined();
  for (const Finding& finding : checkConfiguration(paths::kConfigFile)) tell(finding);
  if (!m_isReachable) return kNoDaemon;
  return m_worst == Finding::Problem ? kRefused : kFound;
}

ExitStatus doctor(Invocation& invocation) {
  invocation.arguments.done();
  if (!invocation.hasTimeout) Props(false, false)->setString(PN::LRPC_TIMEOUT, kLongestWait);
  return Doctor(invocation.output, invocation.daemon).examine();
}

const Command kCommands[] = {
    {"doctor", "", "find out what is wrong with this host, and what to do about it",
     "Checks the daemon's socket and its owner, the process that answers, the time of an exchange,\n"
     "the daemon's health, the joined state and the configuration file. Each line says ok,\n"
     "warning or problem; warnings and problems include advice. Waits 10 seconds for the daemon\n"
     "unless --timeout is given. Exit status: 0 no problem, 1 a problem, 3 the daemon cannot be\n"
     "reached.\n",
     doctor},
};

}  // namespace

Family doctorCommands() {
  return {"Find faults", kCommands, sizeof kCommands / sizeof *kCommands};
}

}  // namespace cli
