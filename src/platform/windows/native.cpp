#include "platform/native.h"

#include <windows.h>

#include <shellapi.h>

#include <algorithm>
#include <iterator>

#include "platform/windows/shell.h"
#include "platform/windows/wide.h"
#include "text/natural_order.h"

namespace quorvel::native {
namespace {

struct ShellError {
  int code;
  const char* words;
};
/// The codes that the shell's file operation has of its own. Source: Microsoft's documentation of SHFileOperation.
constexpr ShellError shell_errors[] = {{0x71, "The source and the destination are the same file."},
                                       {0x72, "There are several sources but only one destination."},
                                       {0x73, "A file cannot be renamed into another folder."},
                                       {0x74, "A drive cannot be moved or renamed."},
                                       {0x75, "The operation was cancelled."},
                                       {0x76, "The destination lies below the source."},
                                       {0x78, "Access to the source is denied."},
                                       {0x79, "The path is too long."},
                                       {0x7A, "There are several destinations."},
                                       {0x7C, "The path is invalid."},
                                       {0x7D, "The source and the destination have the same folder."},
                                       {0x7E, "There is a file of that name already."},
                                       {0x80, "There is a folder of that name already."},
                                       {0x81, "The name is too long."},
                                       {0x82, "The destination is a read-only disc."},
                                       {0x83, "The destination is a read-only disc."},
                                       {0x84, "The destination is a read-only disc."},
                                       {0x85, "The file is too large for the destination."},
                                       {0x86, "The source is a read-only disc."},
                                       {0x87, "The source is a read-only disc."},
                                       {0x88, "The source is a read-only disc."},
                                       {0x402, "The path cannot be used."},
                                       {0x10000, "The destination cannot be written to."},
                                       {-1, "There is no recycle bin that the file would go to."},
                                       {-2, "Windows says that it is done, but the file is where it was."},
                                       {-3, "It is a folder."}};

}  // namespace

const char separator = '\\';
const std::string_view system_name = "Windows";
const std::string_view trash_name = "recycle bin";
const int no_trash_code = -1;  // no code of the system's own is negative
// Not the one of any file that is in use: a player that has it open for reading writes nothing.
const int being_written_code = ERROR_FILE_CHECKED_OUT;
const int copy_differs_code = ERROR_CRC;
const int name_taken_code = shell::name_taken, no_folder_code = ERROR_PATH_NOT_FOUND;
const int name_too_long_code = shell::name_too_long;
const std::string_view help_file = "quorvel help.chm";

// The file manager's menu hands over the selected path without quotes, and names hold blanks.
const bool command_line_is_one_text = true;
const bool uninstall_clears_current_folder = true;

std::string home_folder() {
  const wchar_t* const named = _wgetenv(L"USERPROFILE");
  std::string folder = named == nullptr ? "" : to_utf8(named);
  folder.erase(folder.find_last_not_of('\\') + 1);
  return folder;
}

bool is_too_long(const std::string& name) {
  constexpr std::size_t longest = 255;
  const std::optional<std::wstring> wide = to_utf16(name);
  return wide && wide->size() > longest;
}

std::string_view link_trouble(int code) {
  switch (code) {
    case ERROR_NOT_SAME_DEVICE:
      return "A hard link cannot lead to another drive";
    case ERROR_INVALID_FUNCTION:
    case ERROR_NOT_SUPPORTED:
      return "The drive has no such links";
    case ERROR_PRIVILEGE_NOT_HELD:
      return "Windows lets only administrators make symbolic links, unless its developer mode is on";
    default:
      return {};
  }
}

std::string error_words(int code) {
  const auto* const known = std::find_if(std::begin(shell_errors), std::end(shell_errors),
                                         [code](const ShellError& error) { return error.code == code; });
  return known != std::end(shell_errors) ? known->words : error_text(static_cast<DWORD>(code));
}

std::vector<std::string> split_command_line(const std::string& text) {
  std::vector<std::string> arguments;
  int count = 0;
  // The first argument, the program's name, has rules of its own.
  wchar_t** const found = CommandLineToArgvW((L"x " + to_utf16_or_marks(text)).c_str(), &count);
  for (int i = 1; found != nullptr && i < count; ++i) arguments.push_back(to_utf8(found[i]));
  LocalFree(found);
  return arguments;
}

/// Hidden files and the system's are left out, as the command shell does: a recycle bin is in the root of every drive.
std::vector<std::string> files_of_pattern(const std::string& pattern) {
  std::vector<std::string> found;
  const std::size_t name_start = pattern.find_last_of("\\/:") + 1;
  const std::optional<std::wstring> wide = system_path(pattern);
  if (pattern.find_first_of("*?", name_start) == std::string::npos || !wide) return found;
  WIN32_FIND_DATAW entry{};
  const HANDLE listing = FindFirstFileW(wide->c_str(), &entry);
  if (listing == INVALID_HANDLE_VALUE) return found;
  do {
    const std::wstring_view name = entry.cFileName;
    const bool hidden = (entry.dwFileAttributes & (FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM)) != 0;
    if (!hidden && name != L"." && name != L"..") found.push_back(pattern.substr(0, name_start) + to_utf8(name));
  } while (FindNextFileW(listing, &entry));
  FindClose(listing);
  std::ranges::sort(found, {}, natural_key);
  return found;
}

}  // namespace quorvel::native

namespace quorvel {

namespace {

/// "C:", which to the system is the current folder there and to the user the whole drive.
bool is_drive_alone(const std::string& path) {
  return path.size() == 2 && path[1] == ':';
}

}  // namespace

std::string absolute_path(const std::string& path) {
  const std::optional<std::wstring> wide = to_utf16(path);
  // What cannot be a path stays what it is, and names nothing.
  if (path.empty() || is_drive_alone(path) || !wide || path.find('\0') != std::string::npos) return path;
  std::wstring full(MAX_PATH, L'\0');
  while (true) {
    const DWORD size = GetFullPathNameW(wide->c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
    if (size == 0) return path;
    if (size < full.size()) return to_utf8({full.data(), size});
    full.resize(size);
  }
}

}  // namespace quorvel
