/// The outcome of an operation, returned immediately or later.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>

#include <fokrazo/validation_result.h>

namespace brondalt {

/// The outcome of an operation, as sent to the client. A plain value.
struct Status {
  Status(vesk::ValidationResult result = vesk::VR_SUCCESS, std::string message = std::string(),
         int detail = 0)
      : result(result), message(std::move(message)), detail(detail) {}

  /// There is no such object.
  static Status notFound() { return vesk::VR_NOT_FOUND; }
  /// The back end never supports this: the feature is missing or read-only.
  static Status notSupported();
  /// The directory cannot be reached now; the same request may succeed later.
  static Status away(const std::string& message) { return {vesk::VR_SERVER_UNREACHABLE, message}; }

  bool isSuccess() const { return result == vesk::VR_SUCCESS; }

  vesk::ValidationResult result;
  std::string message;  ///< human-readable; empty for the result's default text
  int detail;           ///< an NT status, if there is one
};

/// What an operation returns: a value, or the status of its failure.
template <class T>
class Answer {
 public:
  Answer(T value) : m_value(std::move(value)) {}
  /// Requires: a failure.
  Answer(Status failure) : m_status(std::move(failure)) {}
  Answer(vesk::ValidationResult failure) : m_status(failure) {}

  explicit operator bool() const { return m_value.has_value(); }
  T& operator*() { return *m_value; }
  /// A success if there is a value.
  const Status& status() const { return m_status; }

 private:
  Status m_status;
  std::optional<T> m_value;
};

/// Completes an operation. Called at most once, on the loop's thread, during the operation or later; a back
/// end with its own threads posts it to the loop. A completion destroyed without a call answers "system
/// error". It does nothing if the client is gone.
template <class T>
using Done = std::function<void(Answer<T>)>;
using DoneStatus = std::function<void(Status)>;

}  // namespace brondalt
