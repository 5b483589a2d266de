#include <sys/stat.h>

#include <algorithm>

#include <fokrazo/setting.h>
#include "cli/doctor/checks.h"
#include "cli/doctor/service_records.h"
#include "cli/doctor/shell_word.h"
#include "cli/shown.h"

namespace cli {

namespace {

constexpr char kConfig[] = "/etc/resolv.conf";
constexpr size_t kShownHosts = 3;

std::string listed(const std::vector<std::string>& texts, size_t most) {
  std::string out;
  for (size_t i = 0; i < std::min(texts.size(), most); ++i) out += (i > 0 ? ", " : "") + shown(texts[i]);
  return texts.size() > most ? out + ", …" : out;
}

// Shows, or lets the reader change, which name servers this host asks.
std::string configure(const std::vector<std::string>& nameServers) {
  const bool isResolved =
      !nameServers.empty() && nameServers.front() == "127.0.0.53";  // systemd-resolved's own
  return isResolved ? "resolvectl status" : std::string("editor ") + kConfig;
}

bool isRegularOrMissing(const char* path) {
  struct stat info;
  return stat(path, &info) != 0 || S_ISREG(info.st_mode);
}

}  // namespace

Findings checkDns(Patient&) {
  Findings findings("dns");
  const std::string domain = vesk::GetSetting(SETTING_DOMAIN_NAME, "");
  if (domain.empty()) return findings;  // the check of the joined state says so
  if (!isRegularOrMissing(kConfig)) {   // the resolver would wait for a FIFO
    findings.problem(std::string(kConfig) + " is not a regular file",
                     "replace it with a regular file that names the domain's name servers",
                     std::string("ls -lL ") + kConfig);
    return findings;
  }
  const std::string name = "_ldap._tcp.dc._msdcs." + domain;
  const ServiceRecords records = lookUpService(name);
  switch (records.outcome) {
    case ServiceRecords::Found:
      findings.ok(shown(domain) + " has " + std::to_string(records.hosts.size()) +
                  " domain controllers: " + listed(records.hosts, kShownHosts));
      break;
    case ServiceRecords::None:
      findings.problem(
          "the name server " + records.server + " knows no domain controllers of " + shown(domain),
          "let this host ask the domain's own name servers", configure(records.nameServers));
      break;
    case ServiceRecords::Failed:
      findings.problem("the name server " + records.server + " could not look up " + shown(name) + " (" +
                           records.failure + ')',
                       std::string("ask its administrator, or name another one in ") + kConfig,
                       "dig SRV " + shellWord(name) + ' ' + shellWord('@' + records.server));
      break;
    case ServiceRecords::NoServer:
      findings.problem(
          "no name server answers (" + listed(records.nameServers, records.nameServers.size()) + ")",
          std::string("check the network, and the servers in ") + kConfig,
          records.nameServers.empty() ? configure(records.nameServers)
                                      : "ping -c 3 " + records.nameServers.front());
      break;
    case ServiceRecords::BadName:
      findings.problem(shown(domain) + " is not the name of a domain in DNS", "join the machine again",
                       "fokrazo setting get domain");
      break;
  }
  return findings;
}

}  // namespace cli
