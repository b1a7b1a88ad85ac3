#pragma once

#include <string>

#include "platform/files.h"

/// Whole data files: text inside, bytes of the code page on disk, nothing translated besides.
namespace quorvel {

/// The whole file. Throws Failure ("File not found") when there is none. A file that exists but cannot be opened
/// gives as many blanks as it has bytes, and so do bytes that vanish while it is read.
std::string loadfile(const Files& files, const std::string& path);

/// What becomes of an existing file's bytes after the new ones.
enum class OldTail { Kept, Dropped };

/// Writes `text` to the file at `path`, which holds its old or its new contents at every moment.
/// False, and nothing changed, when that fails, or when `keep_existing` and there is a file already.
bool savefile(Files& files, const std::string& path, const std::string& text, bool keep_existing,
              OldTail old_tail = OldTail::Kept);

}  // namespace quorvel
