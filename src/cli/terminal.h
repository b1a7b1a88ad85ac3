#pragma once

#include <string>
#include <string_view>

namespace quorvel::cli {

/// What the user reads: lines on standard output and standard error, and below them, where standard error is a
/// terminal, one line of progress that comes and goes.
class Terminal {
 public:
  Terminal();
  ~Terminal() { set_progress({}); }
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  /// A whole line, at once. Control characters, which a file name may hold, become "?", so that a line is one line and
  /// commands nothing.
  void out_line(std::string_view text);
  void error_line(std::string_view text);

  /// Leaves the cursor after the text.
  void ask(std::string_view text);

  /// An empty text takes the line away. Does nothing where standard error is no terminal.
  void set_progress(std::string_view text);

 private:
  void hide_progress();
  void show_progress();

  bool has_progress_;
  std::string progress_;
};

}  // namespace quorvel::cli
