#include <windows.h>

#include <shellapi.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <string_view>
#include <thread>
#include <vector>

#include "platform/native.h"
#include "platform/system.h"
#include "platform/windows/wide.h"

namespace quorvel {
namespace {

using Request = FileOperationRequest;

// Codes of the shell's own, for what is refused before the shell is called.
constexpr int path_too_deep = 0x79, invalid_path = 0x7C, name_taken = 0x7E, destination_is_folder = 0x80,
              aborted = 0x75;

bool is_full(std::wstring_view path) {
  const bool on_drive = path.size() >= 3 && path[1] == L':' && (path[2] == L'\\' || path[2] == L'/');
  return on_drive || path.starts_with(L"\\\\");
}

/// Whether `path` names something that can be deleted, not a drive, a folder's own entry or the folder above it.
bool has_name(std::wstring path) {
  path.erase(path.find_last_not_of(L"\\/") + 1);
  const std::wstring name = path.substr(path.find_last_of(L"\\/") + 1);
  return !name.empty() && name != L"." && name != L".." && !name.ends_with(L':');
}

/// Makes of `path` the list that the shell takes: it ends in two NULs, one here and one that every string has.
/// 0, or why the path is refused.
int make_list(const std::string& path, std::wstring& list) {
  const std::optional<std::wstring> wide = to_utf16(path);
  if (!wide || path.find('\0') != std::string::npos || !is_full(*wide) || !has_name(*wide) ||
      wide->find_first_of(L"*?") != std::wstring::npos) {
    return invalid_path;
  }
  if (wide->size() >= MAX_PATH) return path_too_deep;
  list = *wide + L'\0';
  return 0;
}

/// 0 when the shell may be asked to put a file there.
int check_destination(const std::wstring& source, const std::wstring& destination, bool may_ask) {
  const DWORD attributes = GetFileAttributesW(destination.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) return 0;
  if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return destination_is_folder;
  // A name may change its case alone.
  const bool is_source = CompareStringOrdinal(source.c_str(), -1, destination.c_str(), -1, TRUE) == CSTR_EQUAL;
  return !is_source && !may_ask ? name_taken : 0;
}

/// Where there is no recycle bin, the shell would delete for good what was to go there.
bool has_recycle_bin(const std::wstring& path) {
  std::wstring root(MAX_PATH + 1, L'\0');
  return GetVolumePathNameW(path.c_str(), root.data(), static_cast<DWORD>(root.size())) &&
         GetDriveTypeW(root.c_str()) == DRIVE_FIXED;
}

DWORD process_of(HWND window) {
  DWORD process = 0;
  GetWindowThreadProcessId(window, &process);
  return process;
}

/// Brings what the shell shows to the front, for as long as it lives. Those windows belong to none of the program's,
/// and would come up behind it or fall behind it at a click, where nobody answers what they ask.
class ShellsWindowsInFront {
 public:
  ShellsWindowsInFront() = default;
  ShellsWindowsInFront(const ShellsWindowsInFront&) = delete;
  ShellsWindowsInFront& operator=(const ShellsWindowsInFront&) = delete;

 private:
  static constexpr auto look_again = std::chrono::milliseconds(50);

  /// On a thread of its own, for the shell's call comes back only when the user has answered.
  void watch(const std::stop_token& stop) {
    const auto look = [](HWND window, LPARAM self) -> BOOL {
      reinterpret_cast<ShellsWindowsInFront*>(self)->look_at(window);
      return TRUE;
    };
    std::unique_lock lock(mutex_);
    while (!changed_.wait_for(lock, stop, look_again, [&stop] { return stop.stop_requested(); })) {
      EnumWindows(look, reinterpret_cast<LPARAM>(this));
    }
  }

  void look_at(HWND window) {
    if (process_of(window) != GetCurrentProcessId() || !IsWindowVisible(window) || GetWindow(window, GW_OWNER)) return;
    std::array<wchar_t, 32> name{};
    GetClassNameW(window, name.data(), static_cast<int>(name.size()));
    const bool is_question = name.data() == std::wstring_view(L"#32770");
    if (!is_question && name.data() != std::wstring_view(L"OperationStatusWindow")) return;
    // The other class also shows how far it is, and must leave the program's window to the user.
    const HWND front = GetForegroundWindow();
    const bool has_fallen_behind =
        is_question && process_of(front) == GetCurrentProcessId() && GetAncestor(front, GA_ROOTOWNER) != window;
    const bool is_new = std::ranges::find(seen_, window) == seen_.end();
    if (is_new) seen_.push_back(window);
    if (is_new || has_fallen_behind) SetForegroundWindow(window);
  }

  std::mutex mutex_;
  std::condition_variable_any changed_;  // never, but the wait for it can be stopped
  std::vector<HWND> seen_;
  std::jthread thread_{[this](const std::stop_token& stop) { watch(stop); }};
};

/// The shell's own file operation: it can be undone from the recycle bin, asks before it replaces a file, and shows how
/// far it is. Its codes are answered as they are.
class ShellFileOperation : public FileOperation {
 public:
  /// With `may_ask` the shell shows its windows. Without it, where nobody would see them, a name that is taken is
  /// refused.
  explicit ShellFileOperation(bool may_ask) : may_ask_(may_ask) {}

  /// An empty or relative path, one that holds a NUL, a wildcard, a path beyond the shell's limit of length, and a
  /// destination that is a folder, into which the shell would put the file, are refused.
  int perform(const FileOperationRequest& request) override {
    std::wstring source, destination;
    if (const int refused = make_list(request.source, source); refused != 0) return refused;
    // The shell may take the absence of the file for the end of its work.
    if (GetFileAttributesW(source.c_str()) == INVALID_FILE_ATTRIBUTES) return static_cast<int>(GetLastError());
    if (request.operation != Request::Delete) {
      if (const int refused = make_list(request.destination, destination); refused != 0) return refused;
      if (const int refused = check_destination(source, destination, may_ask_); refused != 0) return refused;
    } else if ((request.flags & Request::AllowUndo) != 0 && !has_recycle_bin(source)) {
      return native::no_trash_code;
    }
    SHFILEOPSTRUCTW order{};
    order.wFunc = static_cast<UINT>(request.operation);
    order.pFrom = source.c_str();
    order.pTo = request.operation == Request::Delete ? nullptr : destination.c_str();
    order.fFlags = request.flags;
    if (!may_ask_) order.fFlags |= FOF_SILENT | FOF_NOERRORUI | FOF_NOCONFIRMMKDIR;
    // Only there: for the others it would be the word to replace a file.
    if (!may_ask_ && request.operation == Request::Delete) order.fFlags |= FOF_NOCONFIRMATION;
    std::optional<ShellsWindowsInFront> in_front;
    if (may_ask_) in_front.emplace();
    const int code = SHFileOperationW(&order);
    if (code != 0) return code;
    return order.fAnyOperationsAborted ? aborted : 0;
  }

 private:
  const bool may_ask_;
};

}  // namespace

std::unique_ptr<FileOperation> system_file_operation(CopyProgress, MayReplace may_replace) {
  return std::make_unique<ShellFileOperation>(may_replace != nullptr);
}

}  // namespace quorvel
