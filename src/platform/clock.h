#pragma once

#include <chrono>
#include <string>

namespace quorvel {

class Clock {
 public:
  virtual ~Clock() = default;

  /// The calendar day in the user's time zone.
  virtual std::chrono::year_month_day today() const = 0;

  /// Hours, minutes and seconds of the user's time zone in the user's long time format, e.g. "14:05:33".
  virtual std::string time_of_day() const = 0;

  /// That moment in the user's time zone.
  virtual std::chrono::local_seconds local(std::chrono::sys_seconds moment) const = 0;

  virtual std::chrono::system_clock::time_point utc() const { return std::chrono::system_clock::now(); }

  /// A moment to measure from, which no change of the system's time affects.
  virtual std::chrono::steady_clock::time_point instant() const { return std::chrono::steady_clock::now(); }

  /// Comes back after this time; no events run meanwhile.
  virtual void wait(std::chrono::milliseconds time) = 0;
};

}  // namespace quorvel
