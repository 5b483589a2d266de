/// Named values, as JSON or as lines.
#pragma once

#include <chrono>
#include <list>
#include <string>
#include <vector>

namespace cli {

/// Milliseconds with one decimal.
std::string textOf(std::chrono::duration<double, std::milli> value);

/// Named values in the order of addition.
class Record {
 public:
  Record& text(const std::string& name, const std::string& value);
  Record& number(const std::string& name, long long value);
  /// With one decimal.
  Record& milliseconds(const std::string& name, std::chrono::duration<double, std::milli> value);
  Record& boolean(const std::string& name, bool value);
  Record& texts(const std::string& name, const std::list<std::string>& values);
  /// Values that are JSON already, such as records.
  Record& list(const std::string& name, const std::list<std::string>& values);
  Record& object(const std::string& name, const Record& value);

  /// Puts a text before all other fields.
  Record& first(const std::string& name, const std::string& value);

  bool isEmpty() const { return m_fields.empty(); }
  /// {"name":"value", …}; names and values as in shown().
  std::string json() const;
  /// One "name: value" line for each value.
  std::string lines() const;

 private:
  enum class Kind { Text, Plain, Texts, List };
  struct Field {
    std::string name;
    Kind kind;
    std::list<std::string> values;
  };

  static std::string jsonValue(const Field& field);

  std::vector<Field> m_fields;
};

}  // namespace cli
