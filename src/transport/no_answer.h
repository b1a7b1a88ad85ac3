#pragma once

#include "text/failure.h"

namespace quorvel {

/// The service could not be asked, or gave no whole answer: at another time it may.
class NoAnswer : public Failure {
 public:
  using Failure::Failure;
};

}  // namespace quorvel
