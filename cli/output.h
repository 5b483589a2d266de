/// The output of commands: one record at a time, as a line for people and cut(1), or as a JSON object.
/// Untrusted text cannot control a terminal: control characters, direction marks and bytes that are not UTF-8
/// are replaced, in names as well as in values.
#pragma once

#include <list>
#include <string>
#include <vector>

namespace cli {

/// Named values in the order of addition.
class Record {
 public:
  Record& text(const std::string& name, const std::string& value);
  Record& number(const std::string& name, long long value);
  Record& boolean(const std::string& name, bool value);
  Record& texts(const std::string& name, const std::list<std::string>& values);

  /// {"name":"value", …}; names and values as in shown().
  std::string json() const;
  /// One "name: value" line for each value.
  std::string lines() const;

 private:
  enum class Kind { Text, Number, Boolean, Texts };
  struct Field {
    std::string name;
    Kind kind;
    std::list<std::string> values;
  };

  static std::string jsonValue(const Field& field);

  std::vector<Field> m_fields;
};

/// Prints records to standard output.
class Output {
 public:
  explicit Output(bool json) : m_json(json) {}

  bool json() const { return m_json; }
  /// Prints the record as a JSON line, or `text` and a newline. In `text`, which may have several lines,
  /// terminal controls appear as "?".
  void record(const Record& record, const std::string& text);
  /// Prints text as record() does without --json, but without a newline.
  static void print(const std::string& text);
  /// Prints the record as a JSON line or as lines(), with an empty line between records.
  void record(const Record& record);

 private:
  bool m_json;
  bool m_isFirst = true;
};

/// A value that is safe to print: unchanged if it is UTF-8 without terminal controls, otherwise in
/// hexadecimal.
std::string shown(const std::string& value);
/// shown() for each line of a text.
std::string shownLines(const std::string& text);
/// A field of a passwd- or group-style line: separators and terminal controls are replaced with "?".
std::string lineField(const std::string& value);
/// Prints a message to standard error, after everything printed so far. Terminal controls are replaced with
/// "?".
void complain(const std::string& message);

}  // namespace cli
