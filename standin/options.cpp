#include "standin/options.h"

#include <getopt.h>

#include <charconv>
#include <string_view>

#include "standin/answers.h"
#include "standin/error.h"

namespace standin {
namespace {

/// Well below Limits::step, after which a connection without progress is closed. In milliseconds.
constexpr long kMaxDelay = 60'000;

enum OptionCode : int {
  SocketOption = 256,
  LdifOption,
  PasswordsOption,
  FaultOption,
  DelayOption,
  AnswerOption,
  PidOption
};

const option kOptions[] = {
    {"socket", required_argument, nullptr, SocketOption},
    {"ldif", required_argument, nullptr, LdifOption},
    {"passwords", required_argument, nullptr, PasswordsOption},
    {"fault", required_argument, nullptr, FaultOption},
    {"delay", required_argument, nullptr, DelayOption},
    {"answer", required_argument, nullptr, AnswerOption},
    {"pid-file", required_argument, nullptr, PidOption},
    {"foreground", no_argument, nullptr, 'f'},
    {"verbose", no_argument, nullptr, 'v'},
    {"help", no_argument, nullptr, 'h'},
    {},
};

constexpr char kHelpHead[] = R"(brondalt-standin - serve a directory from LDIF files in place of the daemon

Usage: brondalt-standin --socket PATH --ldif FILE [OPTION]...

The stand-in speaks the daemon's protocol on a unix-domain socket and answers every
operation of a client session from a directory in memory. It is meant for development,
demonstrations and tests, not for production: it contacts no directory server,
checks no tickets, does not protect passwords, and loses all changes when it ends.

Once its socket accepts connections it prints a line "ready" to its standard output and,
without --foreground, goes to the background.

Options:
  --socket PATH      where to listen. Every user may connect. A socket left over from a
                     dead process is replaced
  --ldif FILE        entries to serve (LDIF version 1); may be repeated
  --passwords FILE   lines "name:password"; "#" begins a comment line. Accounts without a
                     password cannot log in
  -f, --foreground   stay in the foreground
  -v, --verbose      print a line for each request to standard error, without secrets
  --pid-file FILE    write the process id to FILE
  --fault WHAT       inject a fault, see below; may be repeated
  --delay MS         send each reply MS milliseconds after its request has arrived, at
                     most 60000. Connections do not wait for each other
  --answer RESULT    reply to every operation with this result instead of carrying it
                     out: RESULT or RESULT=TEXT, where RESULT is a name or a number of
                     <fokrazo/validation_result.h>. A success has no values. Ping, stop and
                     the authentication of a process are carried out as usual
  -h, --help         print this text

What clients receive:
  All attributes of an entry unchanged, and in addition the names that Unix views read:
  _UnixName from uid, else sAMAccountName; _Uid and _Gid from uidNumber and gidNumber;
  _LoginShell, _HomeDirectory, _GECOS from loginShell, unixHomeDirectory, gecos; _Members
  and _groupSidList with nested groups; _SID and others.
  Accounts and groups are found by Unix name, account name, user principal name,
  DOMAIN\name, DN, Unix id, SID and GUID; the case of letters in names does not matter.
  Searches take domain, base DN, filter, attributes and a scope: 0 base, 1 one level,
  2 subtree. The limit of a paged search is the size of its pages (100 if it is 0).
  The password itself replaces what a client would derive from it. A Kerberos
  token is the password; so is the token of a logon by remote procedure call. The answer
  to an NTLM challenge is the challenge, the user name, a NUL byte and the password.
  A new user has a name, password, uid, gid, full name, home, shell and container.
  Administrators are the members of Domain Admins or Administrators. Root and the user
  that runs the stand-in have the same rights.

Faults: WHAT affects every request, WHAT@N only the Nth, WHAT%N every Nth. Requests are
counted from 1 over all connections.
)";

constexpr char kHelpTail[] = R"(
Signals: SIGTERM and SIGINT end the stand-in. SIGHUP makes it close all connections and
replace its socket, as a restart would; the directory stays as it is.

Exit status: 0 ended by a signal or a client, 2 wrong usage, 4 any other failure.

Example:
  brondalt-standin --socket /tmp/daemon --ldif accounts.ldif --passwords passwords -f \
    --fault lose%10
)";

void addFault(Options& options, const char* text) {
  try {
    options.faults.add(text);
  } catch (const Error& error) {
    throw UsageError(error.what());
  }
}

void setDelay(Options& options, std::string_view text) {
  long delay = -1;
  const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), delay);
  if (error != std::errc() || stop != text.data() + text.size() || delay < 0 || delay > kMaxDelay)
    throw UsageError("the delay \"" + std::string(text) + "\" is not 0 to " + std::to_string(kMaxDelay));
  options.treatment.delay = std::chrono::milliseconds(delay);
}

void setAnswer(Options& options, const std::string& text) {
  options.treatment.answer = readAnswer(text);
  if (!options.treatment.answer) throw UsageError("unknown result \"" + text + "\"");
}

void take(Options& options, int code) {
  switch (code) {
    case SocketOption:
      options.socketPath = optarg;
      break;
    case LdifOption:
      options.ldifPaths.push_back(optarg);
      break;
    case PasswordsOption:
      options.passwordsPath = optarg;
      break;
    case FaultOption:
      addFault(options, optarg);
      break;
    case DelayOption:
      setDelay(options, optarg);
      break;
    case AnswerOption:
      setAnswer(options, optarg);
      break;
    case PidOption:
      options.pidPath = optarg;
      break;
    case 'f':
      options.isForeground = true;
      break;
    case 'v':
      options.isVerbose = true;
      break;
    case 'h':
      options.wantsHelp = true;
      break;
  }
}

}  // namespace

Options parseOptions(int argc, char** argv) {
  Options options;
  opterr = 0;
  for (;;) {
    const char* const word = argv[optind];
    const int code = getopt_long(argc, argv, "+:fvh", kOptions, nullptr);
    if (code == -1) break;
    if (code == ':') throw UsageError(std::string(word) + " needs a value");
    if (code == '?') throw UsageError(std::string("unknown option ") + word);
    take(options, code);
  }
  if (options.wantsHelp) return options;
  if (optind < argc) throw UsageError(std::string("unexpected argument ") + argv[optind]);
  if (options.socketPath.empty()) throw UsageError("--socket is missing");
  if (options.ldifPaths.empty()) throw UsageError("--ldif is missing");
  return options;
}

std::string helpText() {
  return kHelpHead + Faults::help() + kHelpTail;
}

}  // namespace standin
