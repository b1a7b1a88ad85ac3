#pragma once

#include <stdexcept>

namespace quorvel {

/// Something went wrong inside a procedure; what() is a description that a user can read.
class Failure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace quorvel
