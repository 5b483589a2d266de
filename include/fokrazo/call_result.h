/// A value from the daemon, or the reason why there is none.
#pragma once

#include <utility>

#include <boost/shared_ptr.hpp>

#include <fokrazo/call_status.h>

namespace vesk {

/// What a call returns:
///
///   const auto user = client.user("lquispe");
///   if (user) return user->home();
///   if (user.status().outcome == CallOutcome::NotFound) …
///
/// A copy shares the value. Thread-safety: as boost::shared_ptr.
template <class T>
class CallResult {
 public:
  /// A value.
  CallResult(boost::shared_ptr<T> value, CallStatus status)
      : m_value(std::move(value)), m_status(std::move(status)) {}
  /// A failure.
  explicit CallResult(CallStatus status) : m_status(std::move(status)) {}

  /// Whether there is a value.
  explicit operator bool() const noexcept { return m_value != nullptr; }
  const CallStatus& status() const noexcept { return m_status; }

  /// The value. @throws CallException there is none
  T& value() const {
    m_status.throwIfFailed();
    return *m_value;
  }
  /// The value. Requires: there is one.
  T& operator*() const noexcept { return *m_value; }
  T* operator->() const noexcept { return m_value.get(); }
  /// The value, to be kept; null if there is none.
  const boost::shared_ptr<T>& share() const noexcept { return m_value; }

 private:
  boost::shared_ptr<T> m_value;
  CallStatus m_status;
};

}  // namespace vesk
