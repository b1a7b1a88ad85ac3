#include "platform/native.h"

#include <windows.h>

#include "platform/windows/wide.h"

namespace quorvel::native {

const char separator = '\\';
const std::string_view system_name = "Windows";
const int no_trash_code = -1;  // no code of the system's own is negative
const std::string_view help_file = "quorvel help.chm";

// The file manager hands over the selected path without quotes, and names hold blanks.
const bool command_line_is_one_text = true;
const bool uninstall_clears_current_folder = true;

}  // namespace quorvel::native

namespace quorvel {

std::string absolute_path(const std::string& path) {
  const std::optional<std::wstring> wide = to_utf16(path);
  // What cannot be a path stays what it is, and names nothing.
  if (path.empty() || !wide || path.find('\0') != std::string::npos) return path;
  std::wstring full(MAX_PATH, L'\0');
  while (true) {
    const DWORD size = GetFullPathNameW(wide->c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
    if (size == 0) return path;
    if (size < full.size()) return to_utf8({full.data(), size});
    full.resize(size);
  }
}

}  // namespace quorvel
