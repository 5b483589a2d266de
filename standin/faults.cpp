#include "standin/faults.h"

#include <charconv>
#include <string_view>

#include "standin/error.h"

namespace standin {
namespace {

struct FaultRow {
  const char* word;
  Fault fault;
  const char* meaning;
};

constexpr FaultRow kFaults[] = {
    {"drop", Fault::Drop, "close the connection; the request is not carried out"},
    {"lose", Fault::Lose, "carry the request out, then close without a reply"},
    {"stall", Fault::Stall, "never reply, and leave the connection open"},
    {"garbage", Fault::Garbage, "reply with bytes that are not a message"},
    {"empty", Fault::Empty, "reply with a frame of length 0"},
    {"huge", Fault::Huge, "announce a reply of four gigabytes and send none of it"},
    {"short", Fault::Short, "close in the middle of the reply"},
    {"cut", Fault::Cut, "close between the reply's length and its message"},
    {"trickle", Fault::Trickle, "send the reply one byte at a time"},
    {"refuse", Fault::Refuse, "reply with the result \"not authorized\""},
    {"restart", Fault::Restart, "close all connections and replace the socket, as a restart would"},
};

const FaultRow* findRow(std::string_view word) {
  for (const FaultRow& row : kFaults)
    if (word == row.word) return &row;
  return nullptr;
}

}  // namespace

void Faults::add(const std::string& text) {
  size_t mark = text.find_first_of("@%");
  const FaultRow* row = findRow(std::string_view(text).substr(0, mark));
  if (!row) throw Error("unknown fault \"" + text + "\"");
  Rule rule = {row->fault, true, 1};
  if (mark != std::string::npos) {
    rule.repeats = text[mark] == '%';
    const char* end = text.data() + text.size();
    auto [stop, error] = std::from_chars(text.data() + mark + 1, end, rule.number);
    if (error != std::errc() || stop != end || rule.number == 0)
      throw Error("the number in the fault \"" + text + "\" is not 1 or more");
  }
  m_rules.push_back(rule);
}

Fault Faults::next() {
  ++m_count;
  for (const Rule& rule : m_rules)
    if (rule.repeats ? m_count % rule.number == 0 : m_count == rule.number) return rule.fault;
  return Fault::None;
}

std::string Faults::help() {
  std::string text;
  for (const FaultRow& row : kFaults) {
    std::string word = row.word;
    word.resize(10, ' ');
    text += "    " + word + row.meaning + "\n";
  }
  return text;
}

}  // namespace standin
