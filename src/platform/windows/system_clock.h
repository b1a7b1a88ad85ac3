#pragma once

#include <string>

#include "platform/clock.h"

namespace quorvel {

class SystemClock : public Clock {
 public:
  std::chrono::year_month_day today() const override;
  std::string time_of_day() const override;
  void wait(std::chrono::milliseconds time) override;
};

}  // namespace quorvel
