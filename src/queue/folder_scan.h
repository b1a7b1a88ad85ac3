#pragma once

#include <string>
#include <vector>

#include "platform/files.h"

namespace quorvel {

/// What is below a folder; the paths are relative to it.
struct FolderScan {
  std::vector<std::string> files;     // each folder's entries in natural order
  std::vector<std::string> unread;    // folders that could not be listed to their end; "" for the folder itself
  std::vector<std::string> ways_out;  // links to folders that are not below it
};

/// Looks at everything below `folder`, which ends in a separator, and at nothing else: links to folders are not
/// followed, for those that lead to a place below it are not needed, and what is elsewhere was not meant.
FolderScan scan_folder(const Files& files, const std::string& folder);

}  // namespace quorvel
