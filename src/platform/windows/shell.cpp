#include "platform/windows/shell.h"

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

#include "platform/file_operation.h"
#include "platform/windows/plain_files.h"
#include "platform/windows/registry.h"
#include "platform/windows/wide.h"

namespace quorvel::shell {
namespace {

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

/// What the shell leaves where it had to change a name.
struct NameMappings {
  UINT count;
  SHNAMEMAPPINGW* list;
};

/// Takes a file back that the shell has given another name than it was to get.
void take_back(const SHFILEOPSTRUCTW& order, const std::wstring& from) {
  if (order.hNameMappings == nullptr) return;
  const auto* const mappings = static_cast<const NameMappings*>(order.hNameMappings);
  if (mappings->count == 1) plain_files::rename(mappings->list[0].pszNewPath, from);
  SHFreeNameMappings(order.hNameMappings);
}

int carry_out(SHFILEOPSTRUCTW& order) {
  const int code = SHFileOperationW(&order);
  return code == 0 && order.fAnyOperationsAborted ? aborted : code;
}

/// The paths in the list that the shell takes end in two NULs, one here and one that every string has.
std::wstring list_of(const std::wstring& path) {
  return path + L'\0';
}

/// In bytes; where the user has never opened its settings, what Windows gives the bin of a large drive.
std::uint64_t size_of_bin(const std::wstring& root, const std::string& settings) {
  constexpr std::uint64_t megabyte = 1U << 20, usual_share = 20;
  if (const auto size = registry::read_number(HKEY_CURRENT_USER, settings, "MaxCapacity")) return *size * megabyte;
  ULARGE_INTEGER drive{};
  GetDiskFreeSpaceExW(root.c_str(), nullptr, &drive, nullptr);
  return drive.QuadPart / usual_share;
}

std::uint64_t size_of_file(const std::wstring& path) {
  WIN32_FILE_ATTRIBUTE_DATA found{};
  GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &found);
  return std::uint64_t{found.nFileSizeHigh} << 32 | found.nFileSizeLow;
}

}  // namespace

int move(int operation, const std::wstring& from, const std::wstring& to) {
  const std::wstring source = list_of(from), destination = list_of(to);
  SHFILEOPSTRUCTW order{};
  order.wFunc = static_cast<UINT>(operation);
  order.pFrom = source.c_str();
  order.pTo = destination.c_str();
  order.fFlags = FOF_ALLOWUNDO | FOF_NOCONFIRMMKDIR | FOF_RENAMEONCOLLISION | FOF_WANTMAPPINGHANDLE;
  const ShellsWindowsInFront in_front;
  const int code = carry_out(order);
  take_back(order, from);
  if (!plain_files::is_there(from) && plain_files::is_there(to)) return 0;
  return code != 0 ? code : not_done;
}

int remove(const std::wstring& path, std::uint16_t flags, bool may_ask) {
  const std::wstring source = list_of(path);
  SHFILEOPSTRUCTW order{};
  order.wFunc = FO_DELETE;
  order.pFrom = source.c_str();
  order.fFlags = flags;
  std::optional<ShellsWindowsInFront> in_front;
  if (may_ask) {
    order.fFlags |= (flags & FOF_ALLOWUNDO) != 0 ? FOF_WANTNUKEWARNING : 0;
    in_front.emplace();
  } else {
    order.fFlags |= FOF_SILENT | FOF_NOERRORUI | FOF_NOCONFIRMATION;
  }
  const int code = carry_out(order);
  if (!plain_files::is_there(path)) return 0;
  return code != 0 ? code : not_done;
}

/// The settings are where Explorer's dialog for the bin keeps them.
bool has_bin_for(const std::wstring& path) {
  const std::string explorer = "Software\\Microsoft\\Windows\\CurrentVersion\\";
  std::wstring root(MAX_PATH + 1, L'\0'), volume(MAX_PATH, L'\0');
  const auto size = static_cast<DWORD>(root.size());
  // A drive that stands for a folder has no volume, and what the network brings no bin.
  if (!GetVolumePathNameW(path.c_str(), root.data(), size) || GetDriveTypeW(root.c_str()) != DRIVE_FIXED ||
      !GetVolumeNameForVolumeMountPointW(root.c_str(), volume.data(), MAX_PATH)) {
    return false;
  }
  SHQUERYRBINFO bin{};
  bin.cbSize = sizeof bin;
  if (FAILED(SHQueryRecycleBinW(root.c_str(), &bin))) return false;
  for (const HKEY hive : {HKEY_CURRENT_USER, HKEY_LOCAL_MACHINE}) {
    if (registry::read_number(hive, explorer + "Policies\\Explorer", "NoRecycleFiles").value_or(0) != 0) return false;
  }
  const std::size_t braces = volume.find(L'{');
  const std::string of_volume =
      explorer + "Explorer\\BitBucket\\Volume\\" + to_utf8(volume.substr(braces, volume.find(L'}') - braces + 1));
  return registry::read_number(HKEY_CURRENT_USER, of_volume, "NukeOnDelete").value_or(0) == 0 &&
         size_of_file(path) <= size_of_bin(root, of_volume);
}

}  // namespace quorvel::shell
