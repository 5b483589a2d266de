// brondalt-standin: serves a directory from LDIF files over the daemon's protocol, for development,
// demonstrations and tests. Not for production.

#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <fstream>

#include "daemon/event_loop.h"
#include "daemon/listening_socket.h"
#include "daemon/server.h"
#include "daemon/signals.h"
#include "daemon/standard_streams.h"
#include "standin/error.h"
#include "standin/faulty_traffic.h"
#include "standin/ldif_backend.h"
#include "standin/options.h"

namespace standin {
namespace {

constexpr int kUsageStatus = 2;
constexpr int kFailureStatus = 4;
constexpr size_t kMaxFrameBytes = 16 << 20;

void load(LdifBackend& backend, const Options& options) {
  for (const std::string& path : options.ldifPaths) backend.directory().load(path);
  if (options.passwordsPath.empty()) return;
  for (const std::string& name : backend.accounts().load(options.passwordsPath))
    fprintf(stderr, "brondalt-standin: %s: unknown account %s\n", options.passwordsPath.c_str(),
            name.c_str());
}

void reportReady() {
  puts("ready");
  fflush(stdout);
}

void writePid(std::ofstream& file, pid_t pid) {
  if (file.is_open()) file << pid << std::endl;
}

/// Continues in a background process; the original process ends.
void goToBackground(std::ofstream& pidFile) {
  const pid_t child = fork();
  if (child < 0) brondalt::throwSystemError("fork");
  if (child > 0) {
    writePid(pidFile, child);
    reportReady();
    // Runs no destructors: the socket now belongs to the background process.
    _exit(0);
  }
  setsid();
  brondalt::discardStandardStreams();
}

void logToStandardError(const std::string& line) {
  fprintf(stderr, "%s\n", line.c_str());
}

void runServer(Options& options, brondalt::ListeningSocket& socket, brondalt::Signals& signals,
               brondalt::Service& service) {
  brondalt::EventLoop loop;
  FaultyTraffic traffic(options.faults, options.treatment);
  brondalt::Limits limits;
  limits.frameBytes = kMaxFrameBytes;
  brondalt::Server server(loop, socket, service, traffic, limits,
                          options.isVerbose ? logToStandardError : brondalt::Server::Log());
  signals.deliver(loop, [&](int number) {
    if (number == SIGHUP) {
      server.restart();
    } else {
      loop.stop();
    }
  });
  loop.run();
}

void serve(Options& options) {
  brondalt::Statistics statistics;
  LdifBackend backend(statistics);
  load(backend, options);
  brondalt::Signals signals{SIGTERM, SIGINT, SIGHUP};
  brondalt::ListeningSocket socket(options.socketPath);
  std::ofstream pidFile;  // opened late, to keep the file of a daemon that already has the socket
  if (!options.pidPath.empty()) pidFile.open(options.pidPath);
  if (!pidFile) brondalt::throwSystemError(options.pidPath);
  if (options.isForeground) {
    writePid(pidFile, getpid());
    reportReady();
  } else {
    goToBackground(pidFile);
  }
  brondalt::Service service{backend, statistics};
  runServer(options, socket, signals, service);
}

int run(int argc, char** argv) {
  brondalt::openStandardStreams();
  Options options = parseOptions(argc, argv);
  if (options.wantsHelp) {
    fputs(helpText().c_str(), stdout);
    return 0;
  }
  serve(options);
  return 0;
}

}  // namespace
}  // namespace standin

int main(int argc, char** argv) {
  try {
    return standin::run(argc, argv);
  } catch (const standin::UsageError& error) {
    fprintf(stderr, "brondalt-standin: %s\nTry --help.\n", error.what());
    return standin::kUsageStatus;
  } catch (const std::exception& error) {
    fprintf(stderr, "brondalt-standin: %s\n", error.what());
    return standin::kFailureStatus;
  }
}
