/// Applies faults to requests and replies.
#pragma once

#include <chrono>
#include <optional>
#include <string_view>

#include "daemon/traffic.h"
#include "standin/faults.h"

namespace standin {

/// What happens to every request that has no fault. By default, it is carried out.
struct Treatment {
  std::chrono::milliseconds delay{0};      ///< from its arrival to its reply
  std::optional<brondalt::Status> answer;  ///< its reply
};

/// Mishandles requests as `Faults` selects, and treats all of them alike otherwise.
class FaultyTraffic : public brondalt::Traffic {
 public:
  /// `faults` must outlive this object.
  FaultyTraffic(Faults& faults, Treatment treatment) : m_faults(faults), m_treatment(std::move(treatment)) {}

  Admission admit() override;
  void deliver(brondalt::Connection& connection, std::string_view message, int mark) override;

 private:
  Faults& m_faults;
  const Treatment m_treatment;
};

}  // namespace standin
