/// Looking up the servers of a service in DNS (RFC 2782).
#pragma once

#include <string>
#include <vector>

namespace cli {

/// What became of a lookup.
struct ServiceRecords {
  enum Outcome {
    Found,
    None,      // a name server says that there are none
    Failed,    // a name server could not say, or its answer is unreadable
    NoServer,  // no name server answered
    BadName,   // the name cannot be asked for
  };

  Outcome outcome = NoServer;
  std::vector<std::string> hosts;        // "dc1.example.com:389", by priority; not escaped
  std::string server;                    // the name server that answered
  std::vector<std::string> nameServers;  // those that were asked
  std::string failure;                   // of Failed: such as "SERVFAIL"
};

/// Asks the name servers of /etc/resolv.conf for the SRV records of `name`. Waits about ten seconds at the
/// most.
ServiceRecords lookUpService(const std::string& name);

}  // namespace cli
