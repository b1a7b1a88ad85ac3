#include "cli/terminal.h"

#include <algorithm>

#include "cli/log_file.h"
#include "platform/console.h"
#include "text/characters.h"

namespace quorvel::cli {
namespace {

constexpr const char* erase_line = "\r\x1b[K";

std::string harmless(std::string_view text) {
  std::u32string characters = decode(text);
  std::replace_if(
      characters.begin(), characters.end(),
      [](char32_t character) { return character < 0x20 || (character >= 0x7F && character < 0xA0); }, U'?');
  return encode(characters);
}

std::string cut_to(std::string_view text, int width) {
  const std::u32string characters = decode(text);
  return encode(std::u32string_view(characters).substr(0, static_cast<std::size_t>(std::max(width, 1))));
}

}  // namespace

Terminal::Terminal(LogFile* log) : log_(log), has_progress_(console::error_is_terminal()) {}

void Terminal::keep(std::string_view text) {
  if (log_ != nullptr) log_->line(harmless(text));
}

void Terminal::log_line(std::string_view text, bool as_error) {
  const std::string_view after_time(") ");
  const std::size_t end = text.starts_with('(') ? text.find(after_time) : std::string_view::npos;
  keep(end == std::string_view::npos ? text : text.substr(end + after_time.size()));
  show(text, as_error);
}

void Terminal::out_line(std::string_view text) {
  keep(text);
  show(text, false);
}

void Terminal::error_line(std::string_view text) {
  keep(text);
  show(text, true);
}

void Terminal::show(std::string_view text, bool as_error) {
  hide_progress();
  as_error ? console::write_error(harmless(text) + "\n") : console::write_out(harmless(text) + "\n");
  show_progress();
}

void Terminal::ask(std::string_view text) {
  set_progress({});
  console::write_error(harmless(text));
}

void Terminal::set_progress(std::string_view text) {
  hide_progress();
  progress_ = harmless(text);
  show_progress();
}

void Terminal::hide_progress() {
  if (has_progress_ && !progress_.empty()) console::write_error(erase_line);
}

void Terminal::show_progress() {
  if (has_progress_ && !progress_.empty()) console::write_error(cut_to(progress_, console::width() - 1));
}

}  // namespace quorvel::cli
