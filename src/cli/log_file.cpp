#include "cli/log_file.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "platform/native.h"
#include "shell/past_text.h"
#include "text/characters.h"
#include "text/failure.h"

namespace quorvel::cli {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view shape = "2026-11-22 14:05:33 ";  // in front of each line

bool is_log(const fs::path& path) {
  std::error_code failed;
  if (!fs::is_regular_file(path, failed)) return false;
  if (fs::file_size(path, failed) == 0) return true;
  std::string start(shape.size(), '\0');
  std::ifstream(path, std::ios::binary).read(start.data(), static_cast<std::streamsize>(start.size()));
  return std::ranges::equal(
      shape, start, [](char wanted, char given) { return is_digit(wanted) ? is_digit(given) : wanted == given; });
}

fs::path path_of(const std::string& text) {
  return fs::path(std::u8string(text.begin(), text.end()));
}

}  // namespace

LogFile::LogFile(const std::string& path, std::unique_ptr<Clock> clock)
    : path_(path_of(absolute_path(path))), clock_(std::move(clock)) {
  std::error_code failed;
  if (fs::exists(path_, failed) && !is_log(path_)) throw Failure("\"" + path + "\" is there and is no log");
  open();
  if (!file_) throw Failure("The log \"" + path + "\" cannot be written");
}

void LogFile::open() {
  std::error_code failed;
  file_.open(path_, std::ios::binary | std::ios::app);
  size_ = fs::file_size(path_, failed);
  if (failed) size_ = 0;
}

void LogFile::line(std::string_view text) {
  if (size_ >= capacity) {
    file_.close();
    fs::path older = path_;
    older += ".1";
    std::error_code failed;
    // Where another file has that name, this one only grows.
    if (!fs::exists(older, failed) || is_log(older)) fs::rename(path_, older, failed);
    open();
  }
  const auto now = std::chrono::floor<std::chrono::seconds>(clock_->utc());
  const auto seconds = (now - std::chrono::floor<std::chrono::minutes>(now)).count();
  const std::string written =
      time_text(*clock_, now) + (seconds < 10 ? ":0" : ":") + std::to_string(seconds) + " " + std::string(text) + "\n";
  file_.write(written.data(), static_cast<std::streamsize>(written.size())).flush();
  file_.clear();
  size_ += written.size();
}

}  // namespace quorvel::cli
