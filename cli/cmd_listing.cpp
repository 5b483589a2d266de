// Lookups in the directory: list, search, fetch.

#include <vector>

#include <fokrazo/error_util.h>
#include <fokrazo/paged_search.h>
#include <fokrazo/session.h>
#include <fokrazo/unixviews.h>
#include "cli/command.h"
#include "cli/result.h"
#include "cli/views.h"

namespace cli {

namespace {

using namespace vesk;

// LocalRpcSession's functions that start and end listings return true on failure.
void succeedOrRefuse(bool failed, const LocalRpcSession& session, const char* what) {
  if (!failed) return;
  const std::string& message = session.statusMessage();
  throw RefusedError(std::string("the listing cannot be ") + what +
                     (message.empty() ? "" : ": " + shown(message)));
}

// Calls `next`, which prints one object, until it throws `End`.
template <class End, class Start, class Next, class Finish>
ExitStatus walk(const LocalRpcSession& session, Start start, Next next, Finish finish) {
  succeedOrRefuse(start(), session, "started");
  try {
    for (;;) next();
  } catch (const End&) {
  }
  succeedOrRefuse(finish(), session, "ended");
  return kFound;
}

ExitStatus list(Invocation& invocation) {
  const std::string what = invocation.arguments.operand("users, groups or shadow");
  invocation.arguments.done();
  if (what != "users" && what != "groups" && what != "shadow")
    throw UsageError("list takes users, groups or shadow, not '" + what + "'");
  Output& output = invocation.output;
  LocalRpcSession& session = invocation.daemon.session();
  if (what == "users")
    return walk<EndOfListException>(
        session, [&] { return session.startListUser(); },
        [&] { printUser(output, *session.getUser2(NEXT_ENTRY, 0)); }, [&] { return session.endListUser(); });
  if (what == "groups")
    return walk<EndOfListException>(
        session, [&] { return session.startListGroup(false); },
        [&] { printGroup(output, *session.getGroup2(NEXT_ENTRY, 0)); },
        [&] { return session.endListGroup(); });
  return walk<NotFoundException>(
      session, [&] { return session.startListShadow(); },
      [&] { printShadow(output, *session.getShadow(NEXT_ENTRY, 0)); },
      [&] { return session.endListShadow(); });
}

// Attribute names for the session. The result points into `names`.
std::vector<const char*> nullTerminated(const std::vector<std::string>& names) {
  std::vector<const char*> pointers;
  pointers.reserve(names.size() + 1);
  for (const std::string& name : names) pointers.push_back(name.c_str());
  pointers.push_back(nullptr);
  return pointers;
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
  const int page = arguments.number("--page", 0);
  const int limit = arguments.number("--limit", 0);
  const std::string filter = arguments.operand("a filter");
  const std::vector<std::string> names = arguments.operands();
  std::vector<const char*> wanted = nullTerminated(names);

  LocalRpcSession& session = invocation.daemon.session();
  bool found = false;
  if (page == 0) {
    for (const ADObject& object :
         session.ldapSearch(domain, base, filter, wanted.data(), scope, limit, false)) {
      printObject(invocation.output, object);
      found = true;
    }
    return found ? kFound : kRefused;
  }
  PagedSearchHandle handle = session.ldapPagedSearch(domain, base, filter, wanted.data(), scope, page, false);
  int count = 0;
  for (ADObject object = handle.getNext(); !object.isEmpty(); object = handle.getNext()) {
    printObject(invocation.output, object);
    if (++count == limit) break;
  }
  return count > 0 ? kFound : kRefused;
}

ExitStatus fetch(Invocation& invocation) {
  Arguments& arguments = invocation.arguments;
  std::string domain;
  arguments.option("--domain", domain);
  const std::string dn = arguments.operand("a DN");
  const std::vector<std::string> names = arguments.operands();
  std::vector<const char*> wanted = nullTerminated(names);
  LocalRpcSession& session = invocation.daemon.session();
  const ADObject object = orRefused([&] { return session.ldapFetch(domain, dn, wanted.data(), false); });
  if (object.isEmpty()) return kRefused;
  printObject(invocation.output, object);
  return kFound;
}

const Command kCommands[] = {
    {"list", "users|groups|shadow", "list all users, groups or shadow entries", "", list},
    {"search", "[--base DN] [--scope base|one|sub] [--page N] [--limit N] [--domain D] FILTER [ATTRIBUTE …]",
     "search the directory with an LDAP filter",
     "  --base DN      start here (default: the top of the domain)\n"
     "  --scope S      search this object (base), one level below it (one), or all of it\n"
     "                 (sub, the default)\n"
     "  --page N       fetch the result in pages of N objects\n"
     "  --limit N      stop after N objects\n"
     "  --domain D     search this domain (default: the host's)\n"
     "Prints the named attributes, or all of them.\n",
     search},
    {"fetch", "[--domain D] DN [ATTRIBUTE …]", "fetch one object by its DN",
     "  --domain D     search this domain (default: the host's)\n"
     "Prints the named attributes, or all of them.\n",
     fetch},
};

}  // namespace

Family listingCommands() {
  return {"List and search", kCommands, sizeof kCommands / sizeof *kCommands};
}

}  // namespace cli
