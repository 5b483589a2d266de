// watch: the daemon's health and latency, every few seconds.

#include <cstdio>
#include <ctime>
#include <thread>

#include <fokrazo/session.h>
#include "cli/command.h"

namespace cli {

namespace {

using namespace vesk;

constexpr int kInterval = 2;  // seconds

std::string now() {
  const time_t seconds = time(nullptr);
  tm fields = {};
  gmtime_r(&seconds, &fields);
  char text[sizeof "2026-01-01T00:00:00Z"];
  return strftime(text, sizeof text, "%FT%TZ", &fields) > 0 ? text : "";
}

// Asks once, and prints what came back. Asks even if the daemon failed a moment ago.
ExitStatus look(Output& output, Daemon& daemon) {
  CallOptions options;
  options.evenIfAway = true;
  const auto start = std::chrono::steady_clock::now();
  const auto asked = daemon.client().health(options);
  const std::chrono::duration<double, std::milli> elapsed = std::chrono::steady_clock::now() - start;

  const bool isWell = asked && asked->result == VR_SUCCESS;
  const ExitStatus status = asked ? (isWell ? kFound : kRefused) : exitStatusOf(asked.status());
  const char* state = isWell ? "well" : asked ? "unwell" : idOf(asked.status().outcome);
  std::string text =
      asked ? LocalRpcSession::errorString(asked->result) : meaningOf(asked.status(), daemon.socketPath());
  if (asked && !asked->text.empty()) text += ": " + shown(asked->text);
  const std::string time = now();
  Record record;
  record.text("time", time).text("state", state).milliseconds("milliseconds", elapsed).text("text", text);
  output.record(record, time + "  " + state + "  " + textOf(elapsed) + " ms  " + text);
  fflush(stdout);
  return status;
}

ExitStatus watch(Invocation& invocation) {
  const int interval = invocation.arguments.number("--interval", kInterval);
  const int count = invocation.arguments.number("--count", 0);
  invocation.arguments.done();
  if (interval == 0) throw UsageError("option --interval needs at least one second");
  ExitStatus status = kFound;
  for (int i = 1;; ++i) {
    status = worse(status, look(invocation.output, invocation.daemon));
    if (i == count || ferror(stdout)) return status;
    if (count == 0) i = 0;
    std::this_thread::sleep_for(std::chrono::seconds(interval));
  }
}

constexpr Option kOptions[] = {
    {"--interval", "S", "wait S seconds between two looks (default 2)"},
    {"--count", "N", "end after N looks"},
};

const Command kCommands[] = {
    {"watch", "", "show the daemon's health and latency every few seconds", watch, kOptions,
     "Each line has the time (UTC), the state, the time of the answer and the daemon's words.\n"
     "With --count, the exit status is that of the worst look.\n"},
};

}  // namespace

Family watchCommands() {
  return {"Watch the daemon", kCommands, std::size(kCommands)};
}

}  // namespace cli
