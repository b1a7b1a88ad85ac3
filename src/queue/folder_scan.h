#pragma once

#include <string>
#include <vector>

#include "platform/files.h"

namespace quorvel {

/// The paths of all files below `folder`, which ends in a separator, relative to it; each folder's entries in natural
/// order. Links to folders come last, and none leads to a folder twice or to one that holds `folder`, so
/// that a loop ends and no file is found under two names. What cannot be listed is left out.
std::vector<std::string> scan_folder(const Files& files, const std::string& folder);

}  // namespace quorvel
