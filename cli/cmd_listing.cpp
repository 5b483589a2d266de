// Lookups in the directory: list, search, fetch.

#include <unistd.h>

#include <vector>

#include <fokrazo/session.h>
#include <fokrazo/unixviews.h>
#include "cli/command.h"
#include "cli/progress.h"
#include "cli/views.h"

namespace cli {

namespace {

using namespace vesk;

constexpr int kPageSize = 500;

// What is missing if a listing failed after some objects.
std::string incomplete(size_t count) {
  return count == 0 ? "" : "(incomplete, " + std::to_string(count) + " found)";
}

// Prints what a listing returns, even if it fails in the middle.
template <class Range, class View>
ExitStatus print(Invocation& invocation, const char* what, std::vector<std::string> titles, Range range,
                 View view) {
  const bool isTable = invocation.output.startTable(std::move(titles));
  {
    ProgressLine progress(what, isTable || !isatty(STDOUT_FILENO));
    while (const auto* object = range.next()) {
      invocation.output.show(view(*object));
      progress.update(range.count());
    }
  }
  invocation.output.endTable();
  invocation.daemon.require(range.status(), incomplete(range.count()));
  return kFound;
}

// Lines of accounts without a Unix profile would all be alike.
int takeUnixOnly(Invocation& invocation) {
  const bool isAll = invocation.arguments.flag("--all");
  const bool isUnixOnly = invocation.arguments.flag("--unix-only");
  if (isAll && isUnixOnly) throw UsageError("list takes --all or --unix-only, not both");
  return isUnixOnly || (!isAll && !invocation.output.json()) ? UNIX_ONLY : 0;
}

ExitStatus list(Invocation& invocation) {
  const int flags = takeUnixOnly(invocation);
  const std::string what = invocation.arguments.operand("users, groups or shadow");
  invocation.arguments.done();
  Client& client = invocation.daemon.client();
  if (what == "users")
    return print(invocation, "users", userTitles(), client.users(flags),
                 [](const User& user) { return viewOf(user); });
  if (what == "groups")
    return print(invocation, "groups", groupTitles(), client.groups(flags),
                 [](const Group& group) { return viewOf(group); });
  if (what == "shadow") return print(invocation, "entries", shadowTitles(), client.shadows(), shadowViewOf);
  throw UsageError("list takes users, groups or shadow, not '" + what + "'");
}

LdapSearchScopeType takeScope(Arguments& arguments) {
  std::string text = "sub";
  arguments.option("--scope", text);
  if (text == "base") return ScopeBase;
  if (text == "one") return ScopeOneLevel;
  if (text == "sub") return ScopeSubtree;
  throw UsageError("option --scope takes base, one or sub, not '" + text + "'");
}

ExitStatus search(Invocation& invocation) {
  Arguments& arguments = invocation.arguments;
  std::string base;
  std::string domain;
  arguments.option("--base", base);
  arguments.option("--domain", domain);
  const LdapSearchScopeType scope = takeScope(arguments);
  const int page = arguments.number("--page", kPageSize);
  const int limit = arguments.number("--limit", 0);
  const std::string filter = arguments.operand("a filter");
  const std::vector<std::string> names = arguments.operands();

  SearchRange found = invocation.daemon.client().search(domain, base, filter, names, scope, page);
  {
    ProgressLine progress("objects", !isatty(STDOUT_FILENO));
    while (const ADObject* object = found.next()) {
      invocation.output.record(recordOf(*object));
      progress.update(found.count());
      if (found.count() == static_cast<size_t>(limit)) break;
    }
  }
  invocation.daemon.require(found.status(), incomplete(found.count()));
  if (found.count() == 0) throw RefusedError("search: nothing matches");
  return kFound;
}

// Attribute names for the session. The result points into `names`.
std::vector<const char*> nullTerminated(const std::vector<std::string>& names) {
  std::vector<const char*> pointers;
  pointers.reserve(names.size() + 1);
  for (const std::string& name : names) pointers.push_back(name.c_str());
  pointers.push_back(nullptr);
  return pointers;
}

ExitStatus fetch(Invocation& invocation) {
  Arguments& arguments = invocation.arguments;
  std::string domain;
  arguments.option("--domain", domain);
  const std::string dn = arguments.operand("a DN");
  const std::vector<std::string> names = arguments.operands();
  std::vector<const char*> wanted = nullTerminated(names);
  ADObject object;
  invocation.daemon.ask("fetch", Client::Repeat::Harmless, dn, [&](LocalRpcSession& session) {
    object = session.ldapFetch(domain, dn, wanted.data(), false);
  });
  if (object.isEmpty()) throw RefusedError("fetch " + shown(dn) + ": there is no such object");
  invocation.output.record(recordOf(object));
  return kFound;
}

constexpr Option kListOptions[] = {
    {"--unix-only", nullptr, "only accounts with a Unix profile (the default, but for --json)"},
    {"--all", nullptr, "the others too; as lines they are all \"nobody\""},
};
constexpr Option kSearchOptions[] = {
    {"--base", "DN", "start here (default: the top of the domain)"},
    {"--scope", "SCOPE",
     "search this object (base), one level below it (one), or all of it\n(sub, the default)"},
    {"--page", "N", "fetch pages of N objects (default 500)"},
    {"--limit", "N", "stop after N objects"},
    {"--domain", "D", "search this domain (default: the host's)"},
};
constexpr Option kFetchOptions[] = {{"--domain", "D", "look in this domain (default: the host's)"}};
constexpr char kAttributeNotes[] = "Prints the named attributes, or all of them.\n";

const Command kCommands[] = {
    {"list", "users|groups|shadow", "list all users, groups or shadow entries", list, kListOptions,
     "Prints a table on a terminal, otherwise lines.\n"},
    {"search", "FILTER [ATTRIBUTE …]", "search the directory with an LDAP filter", search, kSearchOptions,
     kAttributeNotes},
    {"fetch", "DN [ATTRIBUTE …]", "fetch one object by its DN", fetch, kFetchOptions, kAttributeNotes},
};

}  // namespace

Family listingCommands() {
  return {"List and search", kCommands, std::size(kCommands)};
}

}  // namespace cli
