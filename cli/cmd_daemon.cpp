// The daemon, and its knowledge of the domain: health, info, domain, spn, roles, flush, policy,
// network-changed, cache.

#include <sstream>

#include <fokrazo/adobject.h>
#include <fokrazo/session.h>
#include <fokrazo/strutil.h>
#include "cli/command.h"
#include "cli/result.h"
#include "cli/views.h"

namespace cli {

namespace {

using namespace vesk;

// Prints a text of one or more lines; the last one may end in a newline.
ExitStatus printText(Output& output, const char* name, std::string text) {
  if (!text.empty() && text.back() == '\n') text.pop_back();
  output.record(Record().text(name, text), shownLines(text));
  return kFound;
}

ExitStatus roles(Invocation& invocation) {
  const std::string user = invocation.arguments.operand("a user");
  invocation.arguments.done();
  ADObjectList roles;
  invocation.daemon.ask("roles", Client::Repeat::Harmless, user,
                        [&](LocalRpcSession& session) { roles = session.samGetUserRoles(user, false); });
  if (roles.empty()) throw RefusedError("roles " + shown(user) + ": the user has none");
  for (const ADObject& role : roles) invocation.output.record(recordOf(role));
  return kFound;
}

ExitStatus info(Invocation& invocation) {
  unsigned what = 0;
  if (invocation.arguments.hasOperand()) {
    const std::string text = invocation.arguments.operand("a number");
    if (!readNumber(text, what)) throw UsageError("info takes a number, not '" + text + "'");
  }
  invocation.arguments.done();
  std::string text;
  invocation.daemon.ask("info", Client::Repeat::Harmless, "",
                        [&](LocalRpcSession& session) { text = session.getSystemInfo(what); });
  return printText(invocation.output, "info", text);
}

ExitStatus health(Invocation& invocation) {
  invocation.arguments.done();
  const auto asked = invocation.daemon.client().health();
  const Health& health = invocation.daemon.require(asked);
  const std::string meaning = LocalRpcSession::errorString(health.result);
  Record record;
  record.number("result", health.result).text("text", meaning);
  record.number("value1", health.value1).number("value2", health.value2).text("message", health.text);
  invocation.output.record(record, health.text.empty() ? meaning : meaning + ": " + shown(health.text));
  return health.result == VR_SUCCESS ? kFound : kRefused;
}

ExitStatus mapDomain(Invocation& invocation, const std::string& name) {
  std::string first;
  std::string second;
  invocation.daemon.ask("domain", Client::Repeat::Harmless, name,
                        [&](LocalRpcSession& session) { session.mapDomain(name, first, second, 0); });
  invocation.output.record(Record().text("first", first).text("second", second),
                           shown(first) + ' ' + shown(second));
  return kFound;
}

ExitStatus domain(Invocation& invocation) {
  const bool isNtlm = invocation.arguments.flag("--ntlm");
  const bool isMap = invocation.arguments.flag("--map");
  const std::string name = invocation.arguments.operand("a name");
  invocation.arguments.done();
  if (isMap) return mapDomain(invocation, name);
  std::string domain;
  invocation.daemon.ask("domain", Client::Repeat::Harmless, name, [&](LocalRpcSession& session) {
    domain = isNtlm ? session.getNtlmDomain(name) : session.getADDomain(name);
  });
  return printText(invocation.output, "domain", domain);
}

ExitStatus spn(Invocation& invocation) {
  const std::string host = invocation.arguments.operand("a host");
  const std::string service = invocation.arguments.hasOperand() ? invocation.arguments.operand("") : "host";
  invocation.arguments.done();
  std::string principal;
  invocation.daemon.ask("spn", Client::Repeat::Harmless, service + '/' + host, [&](LocalRpcSession& session) {
    principal = session.getServicePrincipal(host, service);
  });
  return printText(invocation.output, "principal", principal);
}

constexpr struct {
  const char* name;
  unsigned selector;
} kCaches[] = {
    {"objects", FLUSH_OBJ_CACHE},   {"dns", FLUSH_DNS_CACHE},
    {"auth", FLUSH_AUTH_STORE},     {"expire", FLUSH_EXPIRE_OBJ_CACHE},
    {"trusts", FLUSH_TRUSTS_CACHE}, {"binding", FLUSH_REFRESH_BINDING},
    {"pmon", FLUSH_PMON},           {"health", FLUSH_SYSTEM_HEALTH},
};

unsigned selectorOf(const std::string& name) {
  for (const auto& row : kCaches)
    if (name == row.name) return row.selector;
  throw UsageError("unknown cache " + name);
}

ExitStatus flush(Invocation& invocation) {
  std::string key;
  const bool isOne = invocation.arguments.option("--key", key);
  unsigned selectors = 0;
  for (const std::string& name : invocation.arguments.operands()) selectors |= selectorOf(name);
  if (isOne && selectors != 0) throw UsageError("flush takes --key or caches, not both");
  Client& client = invocation.daemon.client();
  const CallStatus call = isOne ? client.flush(key) : client.flush(selectors ? selectors : FLUSH_OBJ_CACHE);
  invocation.daemon.require(call);
  return report(invocation.output, call);
}

ExitStatus policy(Invocation& invocation) {
  const bool ofUser = invocation.arguments.hasOperand();
  const std::string user = ofUser ? invocation.arguments.operand("a user") : "";
  invocation.arguments.done();
  std::string text;
  invocation.daemon.ask("policy", Client::Repeat::Never, user, [&](LocalRpcSession& session) {
    text = ofUser ? session.updateUserPolicy(user) : session.updateMachinePolicy();
  });
  return printText(invocation.output, "message", text);
}

// The lines "name: value" of the daemon's information that are about its cache.
Record cacheLines(const std::string& info) {
  Record record;
  std::istringstream lines(info);
  for (std::string line; std::getline(lines, line);) {
    const size_t colon = line.find(": ");
    if (startsWith(line, "cache", false, false) && colon != std::string::npos)
      record.text(line.substr(0, colon), line.substr(colon + 2));
  }
  return record;
}

ExitStatus dumpCache(Invocation& invocation) {
  std::vector<std::string> texts = invocation.arguments.operands();
  if (texts.size() > 3) throw UsageError("cache --dump takes at most three texts");
  texts.resize(3);
  const auto ask = [&](LocalRpcSession& session) { session.dumpCache(texts[0], texts[1], texts[2]); };
  return report(invocation.output, invocation.daemon.ask("cache", Client::Repeat::Harmless, "", ask));
}

ExitStatus cache(Invocation& invocation) {
  if (invocation.arguments.flag("--dump")) return dumpCache(invocation);
  invocation.arguments.done();
  std::string info;
  invocation.daemon.ask("cache", Client::Repeat::Harmless, "",
                        [&](LocalRpcSession& session) { info = session.getSystemInfo(0); });
  const Record record = cacheLines(info);
  if (record.isEmpty()) throw RefusedError("cache: the daemon says nothing about a cache");
  invocation.output.record(record);
  return kFound;
}

ExitStatus networkChanged(Invocation& invocation) {
  invocation.arguments.done();
  const auto ask = [](LocalRpcSession& session) { session.networkChange(); };
  return report(invocation.output,
                invocation.daemon.ask("network-changed", Client::Repeat::Harmless, "", ask));
}

constexpr Option kDomainOptions[] = {
    {"--ntlm", nullptr, "show the short (NetBIOS) name of the domain"},
    {"--map", nullptr, "show both names"},
};
constexpr Option kCacheOptions[] = {{"--dump", nullptr, "have the daemon write its cache to its log"}};
constexpr Option kFlushOptions[] = {{"--key", "KEY", "remove only this object"}};

const Command kCommands[] = {
    {"health", "", "show the daemon's health", health, {}},
    {"info", "[NUMBER]", "show the daemon's system information", info, {}},
    {"domain", "NAME", "show the domain of a name", domain, kDomainOptions},
    {"spn", "HOST [SERVICE]", "show the canonical principal of a host's service", spn, {}},
    {"roles", "USER", "show a user's roles", roles, {}},
    {"flush", "[CACHE …]", "flush the daemon's caches", flush, kFlushOptions,
     "Caches: objects (default), dns, auth, expire, trusts, binding, pmon, health.\n"},
    {"cache", "[TEXT …]", "show what the daemon says about its cache", cache, kCacheOptions,
     "Only the daemon knows what the texts for --dump mean; most need none.\n"},
    {"policy", "[USER]", "refresh the computer's policy, or a user's", policy, {}},
    {"network-changed", "", "tell the daemon that the network has changed", networkChanged, {}},
};

}  // namespace

Family daemonCommands() {
  return {"Query and control the daemon", kCommands, std::size(kCommands)};
}

}  // namespace cli
