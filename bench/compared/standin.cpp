#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>

#include <fokrazo/session.h>
#include <fokrazo/unixviews.h>
#include "bench/compared/parts.h"
#include "bench/support/measure.h"
#include "bench/support/plain_socket.h"
#include "bench/support/standin_process.h"

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

}  // namespace

void measureStandin(const std::string& program) {
  pinTo(kCpu);
  {
    const std::string ldif = std::filesystem::temp_directory_path() / ("bench." + std::to_string(getpid()));
    writeAccounts(ldif);
    const StandinProcess standin(program, ldif);
    unlink(ldif.c_str());
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
