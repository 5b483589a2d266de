// The daemon, and its knowledge of the domain: health, info, domain, spn, roles, flush, policy,
// network-changed.

#include <fokrazo/adobject.h>
#include <fokrazo/session.h>
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
  LocalRpcSession& session = invocation.daemon.session();
  bool any = false;
  for (const ADObject& role : orRefused([&] { return session.samGetUserRoles(user, false); })) {
    printObject(invocation.output, role);
    any = true;
  }
  return any ? kFound : kRefused;
}

ExitStatus info(Invocation& invocation) {
  unsigned what = 0;
  if (invocation.arguments.hasOperand()) {
    const std::string text = invocation.arguments.operand("a number");
    if (!readNumber(text, what)) throw UsageError("info takes a number, not '" + text + "'");
  }
  invocation.arguments.done();
  return printText(invocation.output, "info", invocation.daemon.session().getSystemInfo(what));
}

ExitStatus health(Invocation& invocation) {
  invocation.arguments.done();
  LocalRpcSession& session = invocation.daemon.session();
  session.ping();  // without a reply the session would report old values
  ValidationResult result = VR_SUCCESS;
  int value1 = 0;
  int value2 = 0;
  std::string text;
  if (session.systemHealthInfo(true, result, value1, value2, text) != 0)
    throw NoDaemonError("the daemon does not answer");
  const std::string meaning = LocalRpcSession::errorString(result);
  Record record;
  record.number("result", result).text("text", meaning).number("value1", value1).number("value2", value2);
  record.text("message", text);
  invocation.output.record(record, text.empty() ? meaning : meaning + ": " + shown(text));
  return result == VR_SUCCESS ? kFound : kRefused;
}

ExitStatus domain(Invocation& invocation) {
  const bool ntlm = invocation.arguments.flag("--ntlm");
  const bool map = invocation.arguments.flag("--map");
  const std::string name = invocation.arguments.operand("a name");
  invocation.arguments.done();
  LocalRpcSession& session = invocation.daemon.session();
  if (!map)
    return printText(invocation.output, "domain", orRefused([&] {
                       return ntlm ? session.getNtlmDomain(name) : session.getADDomain(name);
                     }));
  std::string first;
  std::string second;
  const ValidationResult result = session.mapDomain(name, first, second, 0);
  if (result != VR_SUCCESS) return report(invocation.output, session, result);
  invocation.output.record(Record().text("first", first).text("second", second),
                           shown(first) + ' ' + shown(second));
  return kFound;
}

ExitStatus spn(Invocation& invocation) {
  const std::string host = invocation.arguments.operand("a host");
  const std::string service = invocation.arguments.hasOperand() ? invocation.arguments.operand("") : "host";
  invocation.arguments.done();
  return printText(invocation.output, "principal",
                   invocation.daemon.session().getServicePrincipal(host, service));
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
  const bool one = invocation.arguments.option("--key", key);
  unsigned selectors = 0;
  for (const std::string& name : invocation.arguments.operands()) selectors |= selectorOf(name);
  if (one && selectors != 0) throw UsageError("flush takes --key or caches, not both");
  LocalRpcSession& session = invocation.daemon.session();
  const ValidationResult result =
      one ? session.flushCache(key) : session.flushCache(selectors ? selectors : FLUSH_OBJ_CACHE);
  return report(invocation.output, session, result);
}

ExitStatus policy(Invocation& invocation) {
  const bool ofUser = invocation.arguments.hasOperand();
  const std::string user = ofUser ? invocation.arguments.operand("a user") : "";
  invocation.arguments.done();
  LocalRpcSession& session = invocation.daemon.session();
  return printText(invocation.output, "message", orRefused([&] {
                     return ofUser ? session.updateUserPolicy(user) : session.updateMachinePolicy();
                   }));
}

ExitStatus networkChanged(Invocation& invocation) {
  invocation.arguments.done();
  LocalRpcSession& session = invocation.daemon.session();
  return report(invocation.output, session, session.networkChange());
}

const Command kCommands[] = {
    {"health", "", "show the daemon's health", "", health},
    {"info", "[NUMBER]", "show the daemon's system information", "", info},
    {"domain", "[--ntlm | --map] NAME", "show the domain of a name",
     "  --ntlm         show the short (NetBIOS) name of the domain\n"
     "  --map          show both names\n",
     domain},
    {"spn", "HOST [SERVICE]", "show the canonical principal of a host's service", "", spn},
    {"roles", "USER", "show a user's roles", "", roles},
    {"flush", "[--key KEY | CACHE …]", "flush the daemon's caches",
     "Caches: objects (default), dns, auth, expire, trusts, binding, pmon, health.\n"
     "  --key KEY      remove only this object\n",
     flush},
    {"policy", "[USER]", "refresh the computer's policy, or a user's", "", policy},
    {"network-changed", "", "tell the daemon that the network has changed", "", networkChanged},
};

}  // namespace

Family daemonCommands() {
  return {"Query and control the daemon", kCommands, sizeof kCommands / sizeof *kCommands};
}

}  // namespace cli
