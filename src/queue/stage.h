#pragma once

#include <string>
#include <string_view>

#include "platform/log.h"
#include "text/failure.h"

namespace quorvel {

/// How one stage ended.
struct StageResult {
  bool passed = false;
  std::string failure;  // the description of the Failure that ended the stage; empty when there was none

  explicit operator bool() const { return passed; }
};

/// Runs `stage`, which returns a bool. A Failure in it is logged after `prefix`, and the stage has not passed.
template <typename Stage>
StageResult run_stage(Log& log, std::string_view prefix, Stage stage) {
  try {
    return {stage(), {}};
  } catch (const Failure& failure) {
    log.debug_log(std::string(prefix) + failure.what(), LogLevel::Normal);
    return {false, failure.what()};
  }
}

}  // namespace quorvel
