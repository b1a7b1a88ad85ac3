#pragma once

#include <memory>
#include <string>

#include "platform/clock.h"

namespace quorvel {

class SystemClock : public Clock {
 public:
  SystemClock();
  ~SystemClock() override;
  SystemClock(const SystemClock&) = delete;
  SystemClock& operator=(const SystemClock&) = delete;

  std::chrono::year_month_day today() const override;

  /// In UTF-8; as "14:05:33" when the user's locale does not exist here or writes in another encoding.
  std::string time_of_day() const override;
  void wait(std::chrono::milliseconds time) override;

 private:
  struct Format;
  std::unique_ptr<Format> format_;
};

}  // namespace quorvel
