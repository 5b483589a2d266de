/// Applies faults to requests and replies.
#pragma once

#include <string_view>

#include "daemon/traffic.h"
#include "standin/faults.h"

namespace standin {

/// Mishandles requests as `Faults` selects.
class FaultyTraffic : public brondalt::Traffic {
 public:
  /// `faults` must outlive this object.
  explicit FaultyTraffic(Faults& faults) : m_faults(faults) {}

  Admission admit() override;
  void deliver(brondalt::Connection& connection, std::string_view message, int mark) override;

 private:
  Faults& m_faults;
};

}  // namespace standin
