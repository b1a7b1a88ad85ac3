#pragma once

#include <utility>

namespace quorvel {

/// Puts a value back at the end of a block.
template <typename T>
class Restored {
 public:
  Restored(T& value, const T& meanwhile) : value_(value), old_(std::exchange(value, meanwhile)) {}
  ~Restored() { value_ = old_; }
  Restored(const Restored&) = delete;
  Restored& operator=(const Restored&) = delete;

 private:
  T& value_;
  const T old_;
};

}  // namespace quorvel
