#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include <fokrazo/session.h>
#include <fokrazo/unixviews.h>
#include "bench/compared/parts.h"
#include "bench/support/measure.h"
#include "bench/support/plain_socket.h"

namespace bench {
namespace {

constexpr int kCpu = 0;  // for both processes
constexpr int kAccounts = 300;
constexpr double kBatchMs = 60;
constexpr int kBatches = 9;

std::string accountName(int number) {
  char name[16];
  snprintf(name, sizeof name, "user%04d", number);
  return name;
}

void writeAccounts(const std::string& path) {
  std::ofstream ldif(path);
  ldif << "dn: DC=example,DC=com\nobjectClass: domainDNS\nname: example\n\n";
  for (int i = 0; i < kAccounts; ++i) {
    const std::string name = accountName(i);
    ldif << "dn: CN=" << name << ",OU=people,DC=example,DC=com\nobjectClass: inetOrgPerson\n"
         << "objectClass: posixAccount\nuid: " << name << "\ncn: User " << name << "\nsn: " << name
         << "\nuidNumber: " << 10000 + i << "\ngidNumber: " << 20000 + i % 50 << "\nunixHomeDirectory: /home/"
         << name << "\nloginShell: /bin/bash\ngecos: User " << name << ",Room 12\nmail: " << name
         << "@example.com\n\n";
  }
}

/// The stand-in with its accounts, in its own folder. The destructor ends it.
class Standin {
 public:
  explicit Standin(const std::string& program)
      : m_folder(std::filesystem::temp_directory_path() / "bench-XXXXXX") {
    if (!mkdtemp(m_folder.data())) die("mkdtemp");
    writeAccounts(ldif());
    int ready[2];
    if (pipe(ready) != 0) die("pipe");
    m_pid = fork();
    if (m_pid == 0) {
      dup2(ready[1], STDOUT_FILENO);
      execl(program.c_str(), program.c_str(), "--foreground", "--socket", socket().c_str(), "--ldif",
            ldif().c_str(), nullptr);
      die(program.c_str());
    }
    close(ready[1]);
    char byte;
    if (read(ready[0], &byte, 1) != 1) die("the stand-in did not start");
    close(ready[0]);
  }
  ~Standin() {
    kill(m_pid, SIGTERM);
    waitpid(m_pid, nullptr, 0);
    std::error_code ignored;
    std::filesystem::remove_all(m_folder, ignored);
  }
  std::string socket() const { return m_folder + "/daemon"; }

 private:
  std::string ldif() const { return m_folder + "/accounts.ldif"; }

  std::string m_folder;
  pid_t m_pid;
};

}  // namespace

void measureStandin(const std::string& program) {
  pinTo(kCpu);
  {
    const Standin standin(program);
    vesk::LocalRpcSession session(standin.socket(), false, false);
    print("ours.ping.standin", nanosecondsOf([&] { session.ping(); }, kBatchMs, kBatches) / 1000, "us");
    std::vector<std::string> names;
    for (int i = 0; i < kAccounts; ++i) names.push_back(accountName(i));
    int next = 0;
    auto lookUp = [&] { keep(session.getUser(names[next++ % kAccounts], 0).get()); };
    print("ours.getuser.standin", nanosecondsOf(lookUp, kBatchMs, kBatches) / 1000, "us");
  }
  pinTo(-1);
}

}  // namespace bench
