#pragma once

#include <chrono>
#include <functional>
#include <string>

#include "platform/clock.h"
#include "platform/log.h"
#include "transport/pace.h"

namespace quorvel {

/// The waiting for a service that refuses requests because it gets too many: as long as it asks for, or else 2, 4, 8
/// seconds and so on, up to a limit since the last request that was not refused.
class Patience {
 public:
  using Duration = std::chrono::milliseconds;

  Patience(Pace& pace, Clock& clock, Log& log) : pace_(pace), clock_(clock), log_(log) {}

  Duration limit = std::chrono::minutes(1);

  /// Called after each slice of a wait, with its length; false ends it.
  std::function<bool(Duration)> on_slice = [](Duration) { return true; };

  /// Waits until the next request may be sent; false when on_slice has ended that.
  bool wait_for_turn();

  /// After a refusal: waits until the request may be sent again. `named` is what the service asks for, zero when it
  /// does not; `trouble` says in the log what it has answered. False when that would take longer than there is patience
  /// for, or when on_slice has ended it.
  bool wait_after_refusal(Duration named, const std::string& trouble);

  /// After an answer that is no refusal.
  void renew();

 private:
  static constexpr Duration first_wait = std::chrono::seconds(2);

  bool wait(Duration time);

  Pace& pace_;
  Clock& clock_;
  Log& log_;
  Duration waited_{}, next_ = first_wait;
};

}  // namespace quorvel
