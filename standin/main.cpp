// brondalt-standin: serves a directory from LDIF files over the daemon's protocol, for development,
// demonstrations and tests. No product daemon.

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>

#include "standin/error.h"
#include "standin/options.h"
#include "standin/server.h"
#include "standin/service.h"

namespace standin {
namespace {

constexpr int kUsageStatus = 2;
constexpr int kFailureStatus = 4;

void load(Service& service, const Options& options) {
  for (const std::string& path : options.ldifPaths) service.directory.load(path);
  if (options.passwordsPath.empty()) return;
  for (const std::string& name : service.accounts.load(options.passwordsPath))
    fprintf(stderr, "brondalt-standin: %s: there is no account %s\n", options.passwordsPath.c_str(),
            name.c_str());
}

void sayReady() {
  puts("ready");
  fflush(stdout);
}

void writePid(std::ofstream& file, pid_t pid) {
  if (file.is_open()) file << pid << std::endl;
}

/// The caller goes on in the background; the process that was started ends.
void goToBackground(std::ofstream& pidFile) {
  pid_t child = fork();
  if (child < 0) throw Error(std::string("fork: ") + strerror(errno));
  if (child > 0) {
    writePid(pidFile, child);
    sayReady();
    // No destructor runs in the process that ends: the socket belongs to the other one now.
    _exit(0);
  }
  setsid();
  int null = open("/dev/null", O_RDWR | O_CLOEXEC);
  if (null < 0) throw Error(std::string("/dev/null: ") + strerror(errno));
  for (int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) dup2(null, fd);
  close(null);
}

void serve(Options& options) {
  Service service;
  load(service, options);
  Server server(options.socketPath, service, options.faults, options.isVerbose);
  server.open();
  std::ofstream pidFile;  // that of a daemon which has the socket already stays as it is
  if (!options.pidPath.empty()) pidFile.open(options.pidPath);
  if (!pidFile) throw Error(options.pidPath + ": " + strerror(errno));
  if (options.isForeground) {
    writePid(pidFile, getpid());
    sayReady();
  } else {
    goToBackground(pidFile);
  }
  server.run();
}

int run(int argc, char** argv) {
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
