// Lookups by key: ping, user, group, object, shadow.

#include <cstdio>
#include <functional>
#include <iostream>

#include <fokrazo/unixviews.h>
#include "cli/command.h"
#include "cli/object_key.h"
#include "cli/run.h"
#include "cli/views.h"

namespace cli {

namespace {

using namespace vesk;

ExitStatus ping(Invocation& invocation) {
  invocation.arguments.done();
  invocation.daemon.require(invocation.daemon.client().ping());
  invocation.output.record(Record().boolean("alive", true), "alive");
  return kFound;
}

int takeFlags(Arguments& arguments) {
  int flags = 0;
  if (arguments.flag("--unix-only")) flags |= UNIX_ONLY;
  if (arguments.flag("--refresh")) flags |= CHECK_AD_FIRST;
  if (arguments.flag("--membership")) flags |= GROUP_MEMBERSHIP;
  return flags;
}

// Looks up keys, and prints each answer with its key if there may be several.
class Lookup {
 public:
  using Answer = std::function<void(const ObjectKey& key, const std::string& text)>;

  // An answer that takes one line has one even if there is nothing to say, so that lines and keys stay
  // paired.
  Lookup(Invocation& invocation, bool isLine, Answer answer, std::string by = "")
      : m_output(invocation.output), m_isLine(isLine), m_answer(std::move(answer)), m_by(std::move(by)) {
    invocation.arguments.option("--by", m_by);
    m_keys = invocation.arguments.operands();
    if (m_keys.empty()) throw UsageError("a name, id, SID or GUID is missing");
  }

  ExitStatus run() {
    const bool isOne = m_keys.size() == 1 && m_keys.front() != kInput;
    for (const std::string& key : m_keys)
      if (key != kInput) readObjectKey(key, m_by);  // before anything is printed
    if (isOne) {
      m_answer(readObjectKey(m_keys.front(), m_by), m_keys.front());
      return kFound;
    }
    for (const std::string& key : m_keys) key == kInput ? answerInput() : answer(key);
    m_output.setKey({});
    return m_status;
  }

 private:
  static constexpr char kInput[] = "-";

  void answerInput() {
    for (std::string line; std::getline(std::cin, line);) answer(line);
    m_output.setKey({});
    if (ferror(stdin)) throw UnreadableError("standard input");
  }

  void answer(const std::string& text) {
    m_output.setKey(text);
    const ExitStatus status = guarded(m_output, [&] {
      m_answer(keyOf(text), text);
      return kFound;
    });
    if (status != kFound && m_isLine && !m_output.json()) m_output.record(Record(), "");
    fflush(stdout);
    m_status = worse(m_status, status);
  }

  // A malformed key among good ones is like a name that does not exist.
  ObjectKey keyOf(const std::string& text) {
    try {
      return readObjectKey(text, m_by);
    } catch (const UsageError& error) {
      throw RefusedError(error.what());
    }
  }

  Output& m_output;
  const bool m_isLine;
  const Answer m_answer;
  std::string m_by;
  std::vector<std::string> m_keys;
  ExitStatus m_status = kFound;
};

ExitStatus user(Invocation& invocation) {
  const int flags = takeFlags(invocation.arguments);
  return Lookup(invocation, true,
                [&](const ObjectKey& key, const std::string& text) {
                  const auto found = invocation.daemon.client().user(key, flags);
                  invocation.output.show(viewOf(invocation.daemon.require(found, text)));
                })
      .run();
}

ExitStatus group(Invocation& invocation) {
  const int flags = takeFlags(invocation.arguments);
  return Lookup(invocation, true,
                [&](const ObjectKey& key, const std::string& text) {
                  const auto found = invocation.daemon.client().group(key, flags);
                  invocation.output.show(viewOf(invocation.daemon.require(found, text)));
                })
      .run();
}

ExitStatus object(Invocation& invocation) {
  const int flags = takeFlags(invocation.arguments);
  return Lookup(invocation, false,
                [&](const ObjectKey& key, const std::string& text) {
                  const auto found = invocation.daemon.client().object(key, flags);
                  invocation.output.record(recordOf(invocation.daemon.require(found, text)));
                })
      .run();
}

ExitStatus shadow(Invocation& invocation) {
  const int flags = invocation.arguments.flag("--refresh") ? CHECK_AD_FIRST : 0;
  const auto answer = [&](const ObjectKey&, const std::string& name) {
    const auto found = invocation.daemon.client().shadow(name, flags);
    invocation.output.show(shadowViewOf(invocation.daemon.require(found, name)));
  };
  return Lookup(invocation, true, answer, "name").run();
}

constexpr Option kKeyOptions[] = {
    {"--by", "KIND", "what the keys are: name, id, sid or guid"},
    {"--unix-only", nullptr, "find only accounts with a Unix profile"},
    {"--refresh", nullptr, "ask the directory, not the daemon's cache"},
    {"--membership", nullptr, "fetch the group memberships too"},
};
constexpr Option kShadowOptions[] = {{"--refresh", nullptr, "ask the directory, not the daemon's cache"}};

constexpr char kKeyNotes[] =
    "Digits are an id, S-… is a SID, xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx is a GUID,\n"
    "and anything else is a name. The key - stands for the lines of standard input.\n"
    "With several keys each answer follows its key and a tab; \"key\" in JSON.\n";
constexpr char kObjectNotes[] =
    "Digits are an id, S-… is a SID, xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx is a GUID,\n"
    "and anything else is a name. The key - stands for the lines of standard input.\n"
    "With several keys each answer begins with its key.\n";

const Command kCommands[] = {
    {"ping", "", "check that the daemon answers", ping, {}},
    {"user", "NAME|UID|SID|GUID|- …", "look up users; prints passwd lines", user, kKeyOptions, kKeyNotes},
    {"group", "NAME|GID|SID|GUID|- …", "look up groups; prints group lines", group, kKeyOptions, kKeyNotes},
    {"object", "NAME|ID|SID|GUID|- …", "look up users or groups; prints all their attributes", object,
     kKeyOptions, kObjectNotes},
    {"shadow", "NAME|- …", "look up users' password ageing; prints shadow lines", shadow, kShadowOptions},
};

}  // namespace

Family lookupCommands() {
  return {"Look up objects", kCommands, std::size(kCommands)};
}

}  // namespace cli
