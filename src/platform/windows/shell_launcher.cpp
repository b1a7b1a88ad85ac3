#include <windows.h>

#include <shellapi.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

#include "platform/system.h"
#include "platform/system_launcher.h"
#include "platform/windows/wide.h"
#include "text/case.h"

namespace quorvel {
namespace {

constexpr std::array<std::string_view, 5> read_not_run = {"chm", "htm", "html", "pdf", "txt"};

std::string extension_of(const std::string& path) {
  return lower_case(path.substr(path.rfind('.') + 1));
}

bool is_full(const std::string& path) {
  return path.starts_with("\\\\") || (path.size() >= 3 && path.compare(1, 2, ":\\") == 0);
}

/// Of what is there; empty where `path` is no full path of something that exists.
std::optional<DWORD> attributes_of(const std::string& path) {
  const std::optional<std::wstring> wide = system_path(path);
  if (!is_full(path) || !wide) return {};
  const DWORD attributes = GetFileAttributesW(wide->c_str());
  return attributes == INVALID_FILE_ATTRIBUTES ? std::nullopt : std::optional(attributes);
}

bool execute(const std::string& file, const std::wstring& parameters) {
  const std::optional<std::wstring> wide = to_utf16(file);
  if (!wide) return false;
  SHELLEXECUTEINFOW order{};
  order.cbSize = sizeof order;
  order.fMask = SEE_MASK_FLAG_NO_UI | SEE_MASK_NOASYNC;
  order.lpVerb = L"open";
  order.lpFile = wide->c_str();
  order.lpParameters = parameters.empty() ? nullptr : parameters.c_str();
  order.nShow = SW_SHOWNORMAL;
  return ShellExecuteExW(&order);
}

/// The user's own choice of programs.
class ShellLauncher : public SystemLauncher {
 public:
  /// Files of type "exe" alone.
  bool start(const std::string& program, const std::string& argument) override {
    const std::optional<DWORD> attributes = attributes_of(program);
    const std::optional<std::wstring> parameters = to_utf16(argument);
    if (!attributes || (*attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 || extension_of(program) != "exe") return false;
    return parameters && argument.find('\0') == std::string::npos && execute(program, *parameters);
  }

 protected:
  bool open_address(const std::string& address) override { return execute(address, L""); }

  /// Folders and files of types that are read and not run.
  bool open_document(const std::string& path) override {
    const std::optional<DWORD> attributes = attributes_of(path);
    if (!attributes) return false;
    const bool is_folder = (*attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    const bool is_read = std::find(read_not_run.begin(), read_not_run.end(), extension_of(path)) != read_not_run.end();
    return (is_folder || is_read) && execute(path, L"");
  }
};

}  // namespace

std::unique_ptr<Launcher> system_launcher() {
  return std::make_unique<ShellLauncher>();
}

}  // namespace quorvel
