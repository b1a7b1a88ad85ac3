#pragma once

#include <string_view>

namespace quorvel {

/// The debug log as the working code sees it.
class Log {
 public:
  virtual ~Log() = default;

  /// Takes one line: level 1 for what always matters (failures, results), level 2 for single steps.
  /// Never fails towards the caller.
  virtual void debug_log(std::string_view text, int level) = 0;
};

}  // namespace quorvel
