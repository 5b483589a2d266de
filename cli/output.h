/// The output of commands: one record at a time, as a line for people and cut(1), as a row of a table, or as
/// a JSON object. Untrusted text cannot control a terminal: control characters, direction marks and bytes
/// that are not UTF-8 are replaced, in names as well as in values.
#pragma once

#include <list>
#include <optional>
#include <string>
#include <vector>

#include "cli/failure.h"
#include "cli/record.h"
#include "cli/shown.h"
#include "cli/table.h"

namespace cli {

/// One thing in all the forms in which it may be printed.
struct View {
  Record record;
  std::string line;
  std::vector<std::string> cells;  // of a table
};

/// Prints records to standard output, and failures to standard error; with --json everything to standard
/// output.
class Output {
 public:
  Output(bool json, bool verbose) : m_json(json), m_verbose(verbose) {}

  bool json() const { return m_json; }
  /// Prints the record as a JSON line, or `text` and a newline. In `text`, which may have several lines,
  /// terminal controls appear as "?".
  void record(const Record& record, const std::string& text);
  /// Prints the record as a JSON line or as lines(), with an empty line between records.
  void record(const Record& record);
  /// Prints a JSON line, a row if a table was started, or the line.
  void show(const View& view);
  /// Prints text as record() does without --json, but without a newline.
  static void print(const std::string& text);
  /// Prints why something failed, and what to do about it.
  void fail(const Failure& failure);

  /// Prints the following views as a table, if standard output is a terminal. Returns whether it is.
  bool startTable(std::vector<std::string> titles);
  /// Prints the rows since the start.
  void endTable();

  /// The key to which the following records and failures belong; it is printed with them.
  void setKey(std::optional<std::string> key) { m_key = std::move(key); }
  /// Collects JSON lines instead of printing them, until it is called with null.
  void collectInto(std::list<std::string>* lines) { m_collected = lines; }

 private:
  void printJson(Record record);

  bool m_json;
  bool m_verbose;
  bool m_isFirst = true;
  std::optional<std::string> m_key;
  std::optional<Table> m_table;
  std::list<std::string>* m_collected = nullptr;
};

/// The members of a failure, for JSON; the man page describes them.
Record recordOf(const Failure& failure);

/// Prints a message to standard error, after everything printed so far. Terminal controls are replaced with
/// "?".
void complain(const std::string& message);

}  // namespace cli
