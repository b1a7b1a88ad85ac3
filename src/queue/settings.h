#pragma once

#include <string>

namespace quorvel {

inline constexpr const char* default_types = "avi;mkv;mpg;mp4";

/// The user's preferences, as start-up has read them.
struct Settings {
  enum ContextState { NotInstalled = 0, TurnedOff = 1, Installed = 2 };

  std::string types = default_types;  // accepted extensions without dots, separated by ";"
  int context = NotInstalled;         // the entries in the file manager's context menu
  bool confirm = false;               // ask before each file operation
  bool nocache = false;
  bool noutf8 = false;
  bool autoclose = false;  // end the program when the queue has been processed
  std::string work_dir;    // where rule files and caches live; ends in a separator; not among the stored values
};

}  // namespace quorvel
