#pragma once

#include <windows.h>

#include <optional>
#include <string>

/// One file at a time by the system's plain calls, which take paths of every length and show no windows.
namespace quorvel::plain_files {

/// The last error as a code of file operations: of the codes that the shell gives another meaning, those that say the
/// same in other words.
int last_error();

/// Gives a file a name, on its volume. Nothing is ever replaced: name_taken or destination_is_folder where something
/// has the name, ERROR_NOT_SAME_DEVICE where it is another volume's.
int rename(const std::wstring& from, const std::wstring& to);

/// Gives a file a second name on its volume, or makes a link to its path. Nothing is ever replaced, as above.
int hard_link(const std::wstring& file, const std::wstring& link);
int symbolic_link(const std::wstring& file, const std::wstring& link);

/// Deletes a file for good, even one that is protected, or a link.
int remove(const std::wstring& path);

/// Whether somebody has the file open in a way that keeps others from removing it; 0 if not.
int check_removable(const std::wstring& path);

bool is_there(const std::wstring& path);

}  // namespace quorvel::plain_files
