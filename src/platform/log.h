#pragma once

#include <string_view>

namespace quorvel {

/// How much a line matters, and how much of the log the user wants to see. The numbers are those of the settings.
enum class LogLevel {
  Normal = 1,   // failures and results
  Verbose = 2,  // single steps
};

/// The debug log as the working code sees it.
class Log {
 public:
  virtual ~Log() = default;

  /// Takes one line. Never fails towards the caller.
  virtual void debug_log(std::string_view text, LogLevel level) = 0;
};

}  // namespace quorvel
