#pragma once

#include <new>
#include <string>
#include <string_view>

#include "platform/log.h"
#include "text/failure.h"
#include "transport/no_answer.h"

namespace quorvel {

/// How one stage ended.
struct StageResult {
  bool passed = false;
  std::string failure = {};  // the description of the Failure that ended the stage; empty when there was none
  bool no_answer = false;    // that was a NoAnswer

  explicit operator bool() const { return passed; }

  /// The failure as a further line of an item's error text; empty when there was none.
  std::string line() const { return failure.empty() ? std::string() : "\r\n" + failure; }
};

/// Runs `stage`, which returns a bool. A Failure in it is logged after `prefix`, and the stage has not passed; neither
/// has one that needs more memory than there is, as for a huge answer, which by then has been freed.
template <typename Stage>
StageResult run_stage(Log& log, std::string_view prefix, Stage stage) {
  StageResult result;
  try {
    return {.passed = stage()};
  } catch (const NoAnswer& thrown) {
    result = {.failure = thrown.what(), .no_answer = true};
  } catch (const Failure& thrown) {
    result.failure = thrown.what();
  } catch (const std::bad_alloc&) {
    result.failure = "There is not enough memory";
  }
  log.debug_log(std::string(prefix) + result.failure, LogLevel::Normal);
  return result;
}

}  // namespace quorvel
