#include "platform/windows/shell_launcher.h"

#include <windows.h>

#include <shellapi.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

#include "naming/file_names.h"
#include "platform/windows/wide.h"
#include "text/case.h"

namespace quorvel {
namespace {

constexpr std::array<std::string_view, 5> read_not_run = {"chm", "htm", "html", "pdf", "txt"};

bool has_control_character(std::string_view text) {
  return std::any_of(text.begin(), text.end(), [](unsigned char byte) { return byte < ' ' || byte == 0x7F; });
}

bool is_web_address(const std::string& text) {
  if (has_control_character(text)) return false;
  for (const std::string_view scheme : {"http://", "https://"}) {
    const bool has_host = text.size() > scheme.size() && text[scheme.size()] != '/';
    if (has_host && lower_case(text.substr(0, scheme.size())) == scheme) return true;
  }
  return false;
}

bool is_full(const std::string& path) {
  return path.starts_with("\\\\") || (path.size() > 3 && path.compare(1, 2, ":\\") == 0);
}

bool is_document(const std::string& path, DWORD attributes) {
  if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return true;
  return std::find(read_not_run.begin(), read_not_run.end(), getextension(path)) != read_not_run.end();
}

/// What is there, or nothing where `path` is no full path of something that exists.
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

}  // namespace

bool ShellLauncher::open(const std::string& target) {
  const bool quoted = target.size() >= 2 && target.front() == '"' && target.back() == '"';
  const std::string bare = quoted ? target.substr(1, target.size() - 2) : target;
  if (is_web_address(bare)) return execute(bare, L"");
  const std::optional<DWORD> attributes = attributes_of(bare);
  return attributes && is_document(bare, *attributes) && execute(bare, L"");
}

bool ShellLauncher::start(const std::string& program, const std::string& argument) {
  const std::optional<DWORD> attributes = attributes_of(program);
  const std::optional<std::wstring> parameters = to_utf16(argument);
  if (!attributes || (*attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 || getextension(program) != "exe") return false;
  return parameters && argument.find('\0') == std::string::npos && execute(program, *parameters);
}

}  // namespace quorvel
