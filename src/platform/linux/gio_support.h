#pragma once

#include <gio/gio.h>

#include <string>

/// GIO's files as the system's calls would have them.
namespace quorvel {

/// The errno value that stood behind the error, as far as can be told.
int errno_of(const GError& error);

/// The caller owns it.
GFile* local_file(const std::string& path);

/// Whether there is a trash for the file.
bool can_trash(const std::string& path);

/// 0 when the file is in the trash, native::no_trash_code where there is none for it, else an errno value.
int trash(const std::string& path);

}  // namespace quorvel
