#pragma once

#include <string>
#include <string_view>

namespace quorvel::cli {

class LogFile;

/// What the user reads: lines on standard output and standard error, and below them, where standard error is a
/// terminal, one line of progress that comes and goes.
class Terminal {
 public:
  /// `log`: where what is told is kept as well; null for nowhere. It outlives this.
  explicit Terminal(LogFile* log = nullptr);
  ~Terminal() { set_progress({}); }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  /// A whole line, at once. Control characters, which a file name may hold, become "?", so that a line is one line and
  /// commands nothing.
  void out_line(std::string_view text);
  void error_line(std::string_view text);

  /// On standard output, for programs; it is kept nowhere.
  void data_line(std::string_view text) { show(text, false); }

  /// One of the log, which begins with its time in brackets.
  void log_line(std::string_view text, bool as_error);

  /// Leaves the cursor after the text.
  void ask(std::string_view text);

  /// An empty text takes the line away. Does nothing where standard error is no terminal.
  void set_progress(std::string_view text);

 private:
  void hide_progress();
  void show_progress();

  void keep(std::string_view text);
  void show(std::string_view text, bool as_error);

  LogFile* const log_;
  bool has_progress_;
  std::string progress_;
};

}  // namespace quorvel::cli
