#pragma once

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>

#include "platform/clock.h"

namespace quorvel::cli {

/// A file of dated lines that does not grow without end: when it is full it becomes FILE.1, in place of the last such,
/// and a new one is begun.
class LogFile {
 public:
  static constexpr std::uintmax_t capacity = 1'000'000;  // bytes

  /// Lines are added to a log that is there. Throws Failure, which says why, when it cannot be written, or is there and
  /// no such log: whatever it is, it is not ours to write into.
  LogFile(const std::string& path, std::unique_ptr<Clock> clock);

  /// With the date and the time in front. What cannot be written is dropped.
  void line(std::string_view text);

 private:
  void open();

  const std::filesystem::path path_;
  const std::unique_ptr<Clock> clock_;
  std::ofstream file_;
  std::uintmax_t size_ = 0;
};

}  // namespace quorvel::cli
