#pragma once

#include <optional>
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
  bool help = false;               // tell what the command line may hold, and end
  bool version = false;            // the same for the version
  bool exact = false;              // use exact names in this run
  bool classic = false;            // do not, whatever the settings say

  bool operator==(const CommandLine&) const = default;
};

/// Parses the arguments, without the program's name. Empty ones are ignored.
///
/// Arguments that together, joined by single spaces, name something that exists are that one path, as when a name with
/// spaces was passed without quotes. Otherwise each is a switch, or a path or "file:" address; what names something
/// that exists is no switch.
///
/// Where the command line is one text, "/uninstall" and "/startup" are switches anywhere in it, and what is a switch is
/// never a path. A text that is no path is taken apart, with patterns of file names replaced by what fits them. Without
/// any quotes, that is done only when each part is a switch or exists: the parts of a path with spaces that has just
/// gone may name other folders.
CommandLine parse_command_line(const std::vector<std::string>& arguments, const Files& files,
                               bool is_one_text = native::command_line_is_one_text);

/// What is to be told in place of a start; empty when nothing was asked.
std::optional<std::string> answer_to(const CommandLine& line);

}  // namespace quorvel
