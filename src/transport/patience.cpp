#include "transport/patience.h"

#include <algorithm>

namespace quorvel {
namespace {

constexpr Patience::Duration slice(50);

}  // namespace

bool Patience::wait_for_turn() {
  for (Duration left = pace_.claim(); left.count() > 0; left = pace_.claim()) {
    if (!wait(left)) return false;
  }
  return true;
}

bool Patience::wait_after_refusal(Duration named, const std::string& trouble) {
  pace_.slow_down();
  const Duration time = named.count() > 0 ? named : next_;
  if (waited_ + time > limit) return false;
  log_.debug_log(
      trouble + "; asking again in " + std::to_string(std::max<long long>(time.count() / 1000, 1)) + " seconds",
      LogLevel::Normal);
  waited_ += time;
  next_ *= 2;
  return wait(time);
}

void Patience::renew() {
  waited_ = {};
  next_ = first_wait;
}

bool Patience::wait(Duration time) {
  for (const auto until = clock_.instant() + time; clock_.instant() < until;) {
    clock_.wait(slice);
    if (!on_slice(slice)) return false;
  }
  return true;
}

}  // namespace quorvel
