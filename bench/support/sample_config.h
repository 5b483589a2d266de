/// The configuration file that the benchmarks read: 500 lines, 400 of them with a key, every fifth a comment.
#pragma once

#include <string>

namespace bench {

/// A temporary file, removed by the destructor.
class SampleConfig {
 public:
  /// "key: value", or "key = value" below the name of a section.
  enum Syntax { Plain, Ini };
  static constexpr int kLines = 500;
  static constexpr int kKeys = 400;
  static constexpr char kSection[] = "main";

  explicit SampleConfig(Syntax syntax);
  ~SampleConfig();
  SampleConfig(const SampleConfig&) = delete;
  SampleConfig& operator=(const SampleConfig&) = delete;

  const std::string& path() const { return m_path; }

 private:
  std::string m_path;
};

}  // namespace bench
