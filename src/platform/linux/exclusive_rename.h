#pragma once

#include <string>

/// Gives the file or link `from` the name `to` on the same file system and never overwrites: whatever is at `to`, even
/// a link that leads nowhere, makes it EEXIST. Each call answers 0 or an errno value; both names are then as they were.
namespace quorvel::exclusive_rename {

/// By the system's own operation; EINVAL or ENOSYS where the file system does not know it.
int by_flag(const std::string& from, const std::string& to);

/// By a second hard link, then removing the first; EPERM and others where the file system has none.
int by_link(const std::string& from, const std::string& to);

/// By reserving `to` with an empty file of our own and renaming over that. The weakest way: `to` shows an empty file
/// for an instant.
int by_placeholder(const std::string& from, const std::string& to);

/// By the best way that this file system knows.
int rename(const std::string& from, const std::string& to);

}  // namespace quorvel::exclusive_rename
