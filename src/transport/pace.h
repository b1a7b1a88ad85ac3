#pragma once

#include <chrono>
#include <cstddef>
#include <deque>

#include "platform/clock.h"

namespace quorvel {

/// When the next request may be sent. A service that never refuses one is asked as fast as possible; one that ever did
/// gets at most 20 requests in any 10 seconds from then on, those before included.
class Pace {
 public:
  explicit Pace(Clock& clock) : clock_(clock) {}

  /// Zero when that is now.
  std::chrono::milliseconds time_left() const;

  void count_request();

  /// The service has refused a request because it gets too many.
  void slow_down() { is_slow_ = true; }

 private:
  static constexpr std::size_t max_requests = 20;
  static constexpr std::chrono::milliseconds period{10'250};  // a little more, for the way to the service varies

  Clock& clock_;
  bool is_slow_ = false;
  std::deque<std::chrono::steady_clock::time_point> last_;  // requests, the oldest first, no more than matter
};

}  // namespace quorvel
