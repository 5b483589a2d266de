#include "cli/output.h"

#include <unistd.h>

#include <cstdio>
#include <utility>

#include <fokrazo/strutil.h>
#include <fokrazo/utf8.h>

namespace cli {

namespace {

// Of the members of a failure. A new member leaves it; a changed or removed one raises it.
constexpr int kErrorVersion = 1;

const char* idOf(ExitStatus status) {
  switch (status) {
    case kUsage:
      return "usage";
    case kRefused:
      return "refused";
    default:
      return "failed";
  }
}

// For those who look into a fault.
std::string detailsOf(const vesk::CallStatus& call) {
  std::string text = call.describe();
  if (call.result != vesk::VR_NO_REPLY_YET) text += "; result " + std::to_string(call.result);
  if (call.ntStatus != 0) text += "; NT status 0x" + uitoa(static_cast<unsigned>(call.ntStatus), 16);
  return text;
}

}  // namespace

void complain(const std::string& message) {
  fflush(stdout);
  fprintf(stderr, "fokrazo: %s\n", vesk::withoutTerminalControls(message).c_str());
}

Record recordOf(const Failure& failure) {
  Record record;
  record.number("version", kErrorVersion);
  const vesk::CallStatus* call = failure.call();
  record.text("outcome", call ? idOf(call->outcome) : idOf(failure.status()));
  record.number("status", failure.status());
  record.text("message", vesk::withoutTerminalControls(failure.what()))
      .text("advice", vesk::withoutTerminalControls(failure.advice()));
  if (!call) return record;
  record.text("operation", call->operation).text("step", idOf(call->step)).text("text", call->text);
  if (call->result != vesk::VR_NO_REPLY_YET) record.number("result", call->result);
  return record.number("ntStatus", call->ntStatus);
}

void Output::printJson(Record record) {
  if (m_key) record.first("key", *m_key);
  if (m_collected)
    m_collected->push_back(record.json());
  else
    printf("%s\n", record.json().c_str());
}

void Output::record(const Record& record, const std::string& text) {
  if (m_json)
    printJson(record);
  else
    print((m_key ? shown(*m_key) + '\t' : "") + text + '\n');
}

void Output::print(const std::string& text) {
  const std::string visible = vesk::withoutTerminalControls(text, "\n\t");
  fwrite(visible.data(), 1, visible.size(), stdout);
}

void Output::record(const Record& record) {
  if (m_json) return printJson(record);
  const std::string key = m_key ? "key: " + shown(*m_key) + '\n' : "";
  printf("%s%s%s", m_isFirst ? "" : "\n", key.c_str(), record.lines().c_str());
  m_isFirst = false;
}

void Output::show(const View& view) {
  if (m_table)
    m_table->add(view.cells);
  else
    record(view.record, view.line);
}

bool Output::startTable(std::vector<std::string> titles) {
  if (m_json || !isatty(STDOUT_FILENO)) return false;
  m_table.emplace(std::move(titles));
  return true;
}

void Output::endTable() {
  if (m_table) print(m_table->text());
  m_table.reset();
}

void Output::fail(const Failure& failure) {
  if (m_json) return printJson(Record().object("error", recordOf(failure)));
  complain(failure.what());
  if (!failure.advice().empty())
    fprintf(stderr, "  %s\n", vesk::withoutTerminalControls(failure.advice()).c_str());
  if (m_verbose && failure.call())
    fprintf(stderr, "  details: %s\n", vesk::withoutTerminalControls(detailsOf(*failure.call())).c_str());
}

}  // namespace cli
