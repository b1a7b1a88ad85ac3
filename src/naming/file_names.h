#pragma once

#include <string>
#include <string_view>

#include "platform/native.h"

/// Splitting names and paths. Nothing here looks at the file system.
namespace quorvel {

/// What follows the last "/", or the whole text, in lower case.
std::string getshowname(std::string_view text);

/// What follows the last ".", or the whole name when it has none, in lower case.
std::string getextension(std::string_view name);

/// What stands before the last ".". Throws Failure when there is none.
std::string remextension(std::string_view name);

/// What follows the last separator, or the whole path when it has none.
std::string getfname(std::string_view path, char separator = native::separator);

/// The path without its last `levels` + 1 components, ending in a separator; 0 gives the folder that holds the file.
/// Empty when the path has no more components than that.
std::string getpath(std::string_view path, int levels, char separator = native::separator);

/// The path, with "\" in place of every "/" where that is the separator: both separate there.
std::string with_native_separators(std::string path, char separator = native::separator);

/// Whether the folder is named from the root, the drive or the home folder ("~") on.
bool is_full_path(std::string_view folder, char separator = native::separator);

/// The folder, with the home folder in place of a "~" at its start.
std::string with_home(const std::string& folder);

/// The path, with a separator at its end.
std::string with_separator(std::string path, char separator = native::separator);

}  // namespace quorvel
