/// What a command prints: one record at a time, as a line for people and cut(1), or as a JSON object.
#pragma once

#include <list>
#include <string>
#include <vector>

namespace cli {

/// Named values in the order in which they were added.
class Record {
 public:
  Record& text(const std::string& name, const std::string& value);
  Record& number(const std::string& name, long long value);
  Record& boolean(const std::string& name, bool value);
  Record& texts(const std::string& name, const std::list<std::string>& values);

  /// {"name":"value", …}; bytes that are not printable text appear in hexadecimal.
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

/// Where records go.
class Output {
 public:
  explicit Output(bool json) : m_json(json) {}

  bool json() const { return m_json; }
  /// The record as a JSON line, or `line` with an end of line.
  void record(const Record& record, const std::string& line);
  /// The record as a JSON line, or as its own lines, with an empty line between two records.
  void record(const Record& record);

 private:
  bool m_json;
  bool m_isFirst = true;
};

/// A value as a terminal can show it: text in UTF-8 without controls as it stands, anything else in
/// hexadecimal.
std::string shown(const std::string& value);
/// A text of several lines, each as shown() has it.
std::string shownLines(const std::string& text);
/// A field of a passwd- or group-style line: what would break the line is shown as "?".
std::string lineField(const std::string& value);
/// Prints a complaint to standard error, behind what has been printed until now. Controls appear as "?".
void complain(const std::string& what);

}  // namespace cli
