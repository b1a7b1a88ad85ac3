#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

/// What only the shell can do: have Explorer undo it, and put files into the recycle bin. What it says of the outcome
/// is not believed: Wine's says that it has moved a file that another program holds open, and Windows' may say nothing
/// of a name that it has changed.
namespace quorvel::shell {

/// Codes of the shell's own, also for what is refused before it is called.
inline constexpr int aborted = 0x75, path_too_long = 0x79, invalid_path = 0x7C, name_taken = 0x7E,
                     destination_is_folder = 0x80, name_too_long = 0x81;

/// The program's own: the system has said that it is done and is not; a folder was to be moved or copied.
inline constexpr int not_done = -2, source_is_folder = -3;

/// Moves a file on its volume, or renames it; `operation` says how Explorer calls that. Nothing is replaced: when
/// somebody takes the name in the instant before, the file goes back to its old one. 0 only when it has its new name
/// and no other.
int move(int operation, const std::wstring& from, const std::wstring& to);

/// Deletes a file or a folder by these flags of a request. With `may_ask` it asks before it deletes for good what was
/// to go to the bin; without, it shows nothing. 0 only when nothing is left there.
int remove(const std::wstring& path, std::uint16_t flags, bool may_ask);

/// Whether the shell would put the file at `path` into a recycle bin: its drive has one, which is not turned off, and
/// the file is not too large for it. It deletes for good what does not fit.
bool has_bin_for(const std::wstring& path);

}  // namespace quorvel::shell
