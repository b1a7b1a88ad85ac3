#include "transport/pace.h"

#include <algorithm>

namespace quorvel {

std::chrono::milliseconds Pace::time_left() const {
  using std::chrono::milliseconds;
  if (!is_slow_ || last_.size() < max_requests) return milliseconds(0);
  return std::max(milliseconds(0), std::chrono::ceil<milliseconds>(last_.front() + period - clock_.instant()));
}

void Pace::count_request() {
  last_.push_back(clock_.instant());
  if (last_.size() > max_requests) last_.pop_front();
}

}  // namespace quorvel
