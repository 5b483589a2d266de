#include "cli/doctor/service_records.h"

#include <arpa/inet.h>
#include <arpa/nameser.h>
#include <netinet/in.h>
#include <poll.h>
#include <resolv.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <utility>

namespace cli {

namespace {

using Clock = std::chrono::steady_clock;
using Bytes = std::vector<unsigned char>;

// Each server is asked this often, and has this long to answer.
constexpr int kRounds = 2;
constexpr std::chrono::milliseconds kWait(1500);
constexpr size_t kLongestAnswer = 65535;
constexpr unsigned short kPriorityOffset = 0;
constexpr unsigned short kPortOffset = 4;
constexpr unsigned short kHostOffset = 6;

// The configuration of the resolver.
class Resolver {
 public:
  Resolver() : m_isReady(res_ninit(&m_state) == 0) {}
  ~Resolver() {
    if (m_isReady) res_nclose(&m_state);
  }
  Resolver(const Resolver&) = delete;
  Resolver& operator=(const Resolver&) = delete;

  /// An empty query is an error.
  Bytes query(const std::string& name) {
    Bytes bytes(NS_PACKETSZ);
    const int size = !m_isReady ? -1
                                : res_nmkquery(&m_state, ns_o_query, name.c_str(), ns_c_in, ns_t_srv, nullptr,
                                               0, nullptr, bytes.data(), static_cast<int>(bytes.size()));
    bytes.resize(size > 0 ? static_cast<size_t>(size) : 0);
    return bytes;
  }

  std::vector<sockaddr_storage> servers() const {
    std::vector<sockaddr_storage> all;
    for (int i = 0; i < m_state.nscount && i < MAXNS; ++i) {
      sockaddr_storage address = {};
      const sockaddr_in6* const other = m_state._u._ext.nsaddrs[i];
      if (m_state.nsaddr_list[i].sin_family == AF_INET)
        memcpy(&address, &m_state.nsaddr_list[i], sizeof m_state.nsaddr_list[i]);
      else if (other)
        memcpy(&address, other, sizeof *other);
      if (address.ss_family != AF_UNSPEC) all.push_back(address);
    }
    return all;
  }

 private:
  struct __res_state m_state = {};
  bool m_isReady;
};

socklen_t sizeOf(const sockaddr_storage& address) {
  return address.ss_family == AF_INET ? sizeof(sockaddr_in) : sizeof(sockaddr_in6);
}

std::string textOf(const sockaddr_storage& address) {
  char text[INET6_ADDRSTRLEN] = "";
  const void* const bytes =
      address.ss_family == AF_INET
          ? static_cast<const void*>(&reinterpret_cast<const sockaddr_in*>(&address)->sin_addr)
          : static_cast<const void*>(&reinterpret_cast<const sockaddr_in6*>(&address)->sin6_addr);
  inet_ntop(address.ss_family, bytes, text, sizeof text);
  return text;
}

// Whether the bytes are the response to the query: its number, and the mark of a response.
bool isResponse(const Bytes& bytes, const Bytes& query) {
  return bytes.size() >= NS_HFIXEDSZ && std::equal(query.begin(), query.begin() + 2, bytes.begin()) &&
         (bytes[2] & 0x80) != 0;
}

// Receives the response; nothing if it does not come in time.
Bytes receive(int fd, const Bytes& query) {
  const auto end = Clock::now() + kWait;
  for (;;) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
    pollfd entry = {fd, POLLIN, 0};
    if (left.count() <= 0) return {};
    if (poll(&entry, 1, static_cast<int>(left.count())) <= 0) continue;
    Bytes bytes(kLongestAnswer);
    const ssize_t count = recv(fd, bytes.data(), bytes.size(), MSG_DONTWAIT);
    if (count < 0 && errno != EINTR && errno != EAGAIN) return {};  // such as ECONNREFUSED
    bytes.resize(count > 0 ? static_cast<size_t>(count) : 0);
    if (isResponse(bytes, query)) return bytes;
  }
}

Bytes ask(const sockaddr_storage& server, const Bytes& query) {
  const int fd = socket(server.ss_family, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (fd < 0) return {};
  const auto* const address = reinterpret_cast<const sockaddr*>(&server);
  Bytes response;
  if (connect(fd, address, sizeOf(server)) == 0 && send(fd, query.data(), query.size(), MSG_NOSIGNAL) > 0)
    response = receive(fd, query);
  close(fd);
  return response;
}

using Host = std::pair<unsigned, std::string>;  // priority, host and port

// A record of the answer that is no SRV record, or says that there is no such service, is left out.
void addHost(std::vector<Host>& hosts, const ns_msg& message, const ns_rr& record) {
  if (ns_rr_type(record) != ns_t_srv || ns_rr_rdlen(record) <= kHostOffset) return;
  const unsigned char* const data = ns_rr_rdata(record);
  char host[NS_MAXDNAME];
  const int size =
      ns_name_uncompress(ns_msg_base(message), ns_msg_end(message), data + kHostOffset, host, sizeof host);
  if (size < 0 || host[0] == '\0' || host[0] == '.') return;
  hosts.emplace_back(ns_get16(data + kPriorityOffset),
                     std::string(host) + ':' + std::to_string(ns_get16(data + kPortOffset)));
}

// Reads the answer. Returns false if there is one, but no record in it can be read.
bool readHosts(const Bytes& response, std::vector<std::string>& texts) {
  ns_msg message;
  if (ns_initparse(response.data(), static_cast<int>(response.size()), &message) != 0) return false;
  std::vector<Host> hosts;
  ns_rr record;
  for (int i = 0; i < ns_msg_count(message, ns_s_an) && ns_parserr(&message, ns_s_an, i, &record) == 0; ++i)
    addHost(hosts, message, record);
  std::stable_sort(hosts.begin(), hosts.end(),
                   [](const Host& a, const Host& b) { return a.first < b.first; });
  for (Host& host : hosts) texts.push_back(std::move(host.second));
  return !texts.empty() || ns_msg_count(message, ns_s_an) == 0;
}

// RFC 6895, 2.3.
std::string codeText(int code) {
  static const char* const kNames[] = {"NOERROR", "FORMERR", "SERVFAIL", "NXDOMAIN", "NOTIMP", "REFUSED"};
  return code < static_cast<int>(sizeof kNames / sizeof *kNames) ? kNames[code]
                                                                 : "code " + std::to_string(code);
}

void read(const Bytes& response, ServiceRecords& records) {
  const int code = response[3] & 0x0f;
  records.outcome = ServiceRecords::Failed;
  records.failure = codeText(code);
  if (code == ns_r_nxdomain) {
    records.outcome = ServiceRecords::None;
  } else if (code == ns_r_noerror) {
    records.failure = "unreadable answer";
    if (readHosts(response, records.hosts))
      records.outcome = records.hosts.empty() ? ServiceRecords::None : ServiceRecords::Found;
  }
}

}  // namespace

ServiceRecords lookUpService(const std::string& name) {
  ServiceRecords records;
  Resolver resolver;
  const Bytes query = resolver.query(name);
  if (query.size() < NS_HFIXEDSZ) {
    records.outcome = ServiceRecords::BadName;
    return records;
  }
  const std::vector<sockaddr_storage> servers = resolver.servers();
  for (const sockaddr_storage& server : servers) records.nameServers.push_back(textOf(server));
  for (int round = 0; round < kRounds; ++round) {
    for (size_t i = 0; i < servers.size(); ++i) {
      const Bytes response = ask(servers[i], query);
      if (response.empty()) continue;
      records.server = records.nameServers[i];
      read(response, records);
      if (records.outcome != ServiceRecords::Failed) return records;
    }
    if (records.outcome == ServiceRecords::Failed) return records;
  }
  return records;
}

}  // namespace cli
