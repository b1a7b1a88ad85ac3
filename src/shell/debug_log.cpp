#include "shell/debug_log.h"

#include <exception>

namespace quorvel {

void DebugLog::debug_log(std::string_view text, LogLevel level) {
  if (level > level_) return;
  try {
    if (lines_.size() == capacity) {
      lines_.clear();
      add("Log has exceeded maximum allowed limit and will be cleared.", true);
    }
    add("(" + clock_.time_of_day() + ") " + std::string(text), false);
  } catch (const std::exception&) {
    return;  // the work that is logged matters more than its log
  }
}

void DebugLog::add(std::string line, bool cleared) {
  lines_.push_back(std::move(line));
  on_line(lines_.back(), cleared);
}

}  // namespace quorvel
