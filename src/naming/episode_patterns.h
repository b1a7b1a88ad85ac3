#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/native.h"

/// Finding show, season and episode in a name.
namespace quorvel {

/// What a name says about its episode.
struct Detection {
  std::string show = {};  // lower case, cleaned, dots turned into spaces
  int season = 0;
  int episode = 0;
  int id = 0;               // of the pattern, for the log
  bool is_refused = false;  // the pattern fits nothing but a resolution such as "1080p"; nothing else is set then
  bool operator==(const Detection&) const = default;
};

/// In the file's own name, extension included, given in lower case. Empty when no pattern fits.
/// Throws Failure when the show's name cannot be cleaned.
std::optional<Detection> detect_in_file(std::string_view name);

/// In the name of a folder, given in lower case; four of the patterns are too loose for folders and not tried.
std::optional<Detection> detect_in_folder(std::string_view name);

/// The name of the folder that holds the file at `path`. Throws Failure when the path names no folder.
std::string_view parent_folder_name(std::string_view path, char separator = native::separator);

}  // namespace quorvel
