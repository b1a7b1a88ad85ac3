#pragma once

#include <string>
#include <vector>

#include "platform/files.h"
#include "platform/native.h"

namespace quorvel {

/// What the program was asked to do when it was started.
struct CommandLine {
  bool uninstall = false;
  bool startup = false;            // start hidden
  std::vector<std::string> paths;  // absolute; nothing need exist there

  bool operator==(const CommandLine&) const = default;
};

/// Parses the arguments, without the program's name. Empty ones are ignored.
///
/// Where the command line is one text, "/uninstall" and "/startup" are switches anywhere in it, and all of it is one
/// path. Elsewhere only a whole argument is a switch, "--uninstall" and "--startup" too, and none that names something
/// that exists; all others are paths or "file:" addresses. Arguments that together, joined by single spaces, name
/// something that exists are that one path, as when a name with spaces was passed without quotes.
CommandLine parse_command_line(const std::vector<std::string>& arguments, const Files& files,
                               bool is_one_text = native::command_line_is_one_text);

}  // namespace quorvel
