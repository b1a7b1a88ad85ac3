#pragma once

#include <string>

namespace quorvel {

/// Whether somebody has the file open for writing, or mapped so. False where the system does not tell: for files of
/// other users, and on file systems without leases. A link is followed when `follows_links`.
bool is_being_written(const std::string& path, bool follows_links);

}  // namespace quorvel
