#pragma once

#include <deque>
#include <functional>
#include <string>

#include "platform/clock.h"
#include "platform/log.h"

namespace quorvel {

/// The lines that the user sees, oldest first, at most 1000.
class DebugLog : public Log {
 public:
  static constexpr std::size_t capacity = 1000;

  explicit DebugLog(const Clock& clock) : clock_(clock) {}

  /// Lines above this level are dropped.
  void set_level(LogLevel level) { level_ = level; }
  LogLevel level() const { return level_; }

  void debug_log(std::string_view text, LogLevel level) override;

  const std::deque<std::string>& lines() const { return lines_; }

  /// Called with each new line; `cleared` when the list was emptied just before.
  std::function<void(const std::string& line, bool cleared)> on_line = [](const std::string&, bool) {};

 private:
  void add(std::string line, bool cleared);

  const Clock& clock_;
  LogLevel level_ = LogLevel::Normal;
  std::deque<std::string> lines_;
};

}  // namespace quorvel
