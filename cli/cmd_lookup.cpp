// Lookups of one object: ping, user, group, object, shadow.

#include <cstdio>
#include <iostream>

#include <fokrazo/ascii.h>
#include <fokrazo/error_util.h>
#include <fokrazo/guid.h>
#include <fokrazo/session.h>
#include <fokrazo/sid.h>
#include <fokrazo/unixviews.h>
#include "cli/command.h"
#include "cli/result.h"
#include "cli/sid_text.h"
#include "cli/views.h"

namespace cli {

namespace {

using namespace vesk;

enum class KeyKind { Name, Id, Sid, Guid };

// What to look up; the field that belongs to `kind` is set.
struct Key {
  KeyKind kind;
  std::string text;
  unsigned id = 0;
  SID sid = SID();
  Guid guid = Guid();
};

bool looksLikeSid(const std::string& text) {
  return text.compare(0, 2, "S-") == 0 && text.size() > 2 && isAsciiDigit(text[2]);
}

KeyKind kindByName(const std::string& name) {
  if (name == "name") return KeyKind::Name;
  if (name == "id") return KeyKind::Id;
  if (name == "sid") return KeyKind::Sid;
  if (name == "guid") return KeyKind::Guid;
  throw UsageError("option --by takes name, id, sid or guid, not '" + name + "'");
}

Guid readGuid(const std::string& text) {
  if (!Guid::isValidGuidStringFormat(text.c_str())) throw UsageError("'" + text + "' is not a GUID");
  Guid guid;
  guid.fromRealMSString(text);
  return guid;
}

// Derives the kind from the form of the key, unless `by` specifies it.
Key makeKey(const std::string& text, const std::string& by) {
  Key key{KeyKind::Name, text};
  const bool isNumber = readNumber(key.text, key.id);
  if (!by.empty())
    key.kind = kindByName(by);
  else if (isNumber)
    key.kind = KeyKind::Id;
  else if (looksLikeSid(key.text))
    key.kind = KeyKind::Sid;
  else if (Guid::isValidGuidStringFormat(key.text.c_str()))
    key.kind = KeyKind::Guid;
  if (key.text.empty()) throw UsageError("the name is empty");
  if (key.kind == KeyKind::Sid) key.sid = readSidText(key.text);
  if (key.kind == KeyKind::Guid) key.guid = readGuid(key.text);
  if (key.kind == KeyKind::Id && !isNumber) throw UsageError("'" + key.text + "' is not a number");
  return key;
}

int takeFlags(Arguments& arguments) {
  int flags = 0;
  if (arguments.flag("--unix-only")) flags |= UNIX_ONLY;
  if (arguments.flag("--refresh")) flags |= CHECK_AD_FIRST;
  if (arguments.flag("--membership")) flags |= GROUP_MEMBERSHIP;
  return flags;
}

boost::shared_ptr<User> findUser(LocalRpcSession& session, const Key& key, int flags) {
  switch (key.kind) {
    case KeyKind::Id:
      return session.getUser(static_cast<int>(key.id), flags);
    case KeyKind::Sid:
      return session.getUser(key.sid, flags);
    case KeyKind::Guid:
      return session.getUser(key.guid, flags);
    default:
      return session.getUser(key.text, flags);
  }
}

boost::shared_ptr<Group> findGroup(LocalRpcSession& session, const Key& key, int flags) {
  switch (key.kind) {
    case KeyKind::Id:
      return session.getGroup(static_cast<int>(key.id), flags);
    case KeyKind::Sid:
      return session.getGroup(key.sid, flags);
    case KeyKind::Guid:
      return session.getGroup(key.guid, flags);
    default:
      return session.getGroup(key.text, flags);
  }
}

// Looks for a user, then for a group.
ADObject findObject(LocalRpcSession& session, const Key& key, int flags) {
  if (key.kind == KeyKind::Sid) return session.getObject(key.sid, flags)->getObject();
  try {
    return findUser(session, key, flags)->getObject();
  } catch (const NotFoundException&) {
    return findGroup(session, key, flags)->getObject();
  }
}

ExitStatus ping(Invocation& invocation) {
  invocation.arguments.done();
  invocation.daemon.session().ping();
  invocation.output.record(Record().boolean("alive", true), "alive");
  return kFound;
}

// Looks up each key of standard input over one connection. A malformed key counts as not found.
template <class Answer>
ExitStatus answerInput(const std::string& by, Answer answer) {
  ExitStatus status = kFound;
  const auto refuse = [&](const std::exception& error) {
    complain(error.what());
    status = kRefused;
  };
  std::string line;
  while (std::getline(std::cin, line)) {
    try {
      answer(makeKey(line, by));
    } catch (const RefusedError& error) {
      refuse(error);
    } catch (const UsageError& error) {
      refuse(error);
    }
    fflush(stdout);
  }
  return status;
}

template <class Print>
ExitStatus find(Invocation& invocation, Print print) {
  Arguments& arguments = invocation.arguments;
  const int flags = takeFlags(arguments);
  std::string by;
  arguments.option("--by", by);
  const bool fromInput = arguments.flag("-");
  const std::string text = fromInput ? "" : arguments.operand("a name, id, SID or GUID");
  arguments.done();
  const auto answer = [&](const Key& key) {
    named(shown(key.text), [&] { print(invocation.daemon.session(), key, flags); });
  };
  if (fromInput) return answerInput(by, answer);
  answer(makeKey(text, by));
  return kFound;
}

ExitStatus user(Invocation& invocation) {
  return find(invocation, [&](LocalRpcSession& session, const Key& key, int flags) {
    printUser(invocation.output, *findUser(session, key, flags));
  });
}

ExitStatus group(Invocation& invocation) {
  return find(invocation, [&](LocalRpcSession& session, const Key& key, int flags) {
    printGroup(invocation.output, *findGroup(session, key, flags));
  });
}

ExitStatus object(Invocation& invocation) {
  return find(invocation, [&](LocalRpcSession& session, const Key& key, int flags) {
    printObject(invocation.output, findObject(session, key, flags));
  });
}

ExitStatus shadow(Invocation& invocation) {
  const int flags = invocation.arguments.flag("--refresh") ? CHECK_AD_FIRST : 0;
  const std::string name = invocation.arguments.operand("a name");
  invocation.arguments.done();
  if (name.empty()) throw UsageError("the name is empty");
  named(shown(name),
        [&] { printShadow(invocation.output, *invocation.daemon.session().getShadow(name, flags)); });
  return kFound;
}

constexpr char kKeyHelp[] =
    "Digits are an id, S-… is a SID, xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx is a GUID,\n"
    "and anything else is a name.\n"
    "  -              read the keys from standard input, one per line\n"
    "  --by KIND      what the key is: name, id, sid or guid\n"
    "  --unix-only    find only accounts with a Unix profile\n"
    "  --refresh      ask the directory, not the daemon's cache\n"
    "  --membership   fetch the group memberships too\n";

const Command kCommands[] = {
    {"ping", "", "check that the daemon answers", "", ping},
    {"user", "[--by KIND] [FLAG …] NAME|UID|SID|GUID|-", "look up a user; prints a passwd line", kKeyHelp,
     user},
    {"group", "[--by KIND] [FLAG …] NAME|GID|SID|GUID|-", "look up a group; prints a group line", kKeyHelp,
     group},
    {"object", "[--by KIND] [FLAG …] NAME|ID|SID|GUID|-",
     "look up a user or group; prints all its attributes", kKeyHelp, object},
    {"shadow", "[--refresh] NAME", "look up a user's password ageing; prints a shadow line",
     "  --refresh      ask the directory, not the daemon's cache\n", shadow},
};

}  // namespace

Family lookupCommands() {
  return {"Look up one object", kCommands, sizeof kCommands / sizeof *kCommands};
}

}  // namespace cli
