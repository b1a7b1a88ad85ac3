#include "platform/system.h"

#include <windows.h>

#include "naming/file_names.h"
#include "platform/curl/curl_socket_control.h"
#include "platform/disk_files.h"
#include "platform/windows/copy_data_channel.h"
#include "platform/windows/explorer_verbs.h"
#include "platform/windows/registry_store.h"
#include "platform/windows/shell_file_operation.h"
#include "platform/windows/shell_launcher.h"
#include "platform/windows/system_clock.h"
#include "platform/windows/wide.h"
#include "shell/version.h"

namespace quorvel {
namespace {

/// Empty when the system does not tell.
std::string program_file() {
  std::wstring path(MAX_PATH, L'\0');
  while (true) {
    const DWORD size = GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    if (size < path.size()) return to_utf8({path.data(), size});
    path.resize(path.size() * 2);
  }
}

}  // namespace

std::unique_ptr<Files> system_files() {
  return std::make_unique<DiskFiles>();
}

std::unique_ptr<FileOperation> system_file_operation(std::function<bool(std::uint64_t, std::uint64_t)>,
                                                     std::function<bool(const std::string&)> replace) {
  // The shell shows by itself how far it is, and has a question of its own before it replaces a file.
  return std::make_unique<ShellFileOperation>(replace != nullptr);
}

std::unique_ptr<KeyValueStore> system_key_values(Files&) {
  return std::make_unique<RegistryStore>(std::string("SOFTWARE\\") + application_title);
}

std::unique_ptr<SocketControl> system_socket() {
  return std::make_unique<CurlSocketControl>();
}

std::unique_ptr<Clock> system_clock() {
  return std::make_unique<SystemClock>();
}

std::unique_ptr<InstanceChannel> system_instance_channel() {
  return std::make_unique<CopyDataChannel>(std::string(application_title) + " " + short_version, application_title);
}

std::unique_ptr<ContextMenu> system_context_menu(Files&) {
  return std::make_unique<ExplorerVerbs>(program_file());
}

std::unique_ptr<Launcher> system_launcher() {
  return std::make_unique<ShellLauncher>();
}

std::string application_data_folder(Files&) {
  std::wstring folder(GetEnvironmentVariableW(L"APPDATA", nullptr, 0), L'\0');
  folder.resize(GetEnvironmentVariableW(L"APPDATA", folder.data(), static_cast<DWORD>(folder.size())));
  folder.erase(folder.find_last_not_of(L"\\/") + 1);
  return to_utf8(folder);
}

std::string program_folder() {
  std::string folder = getpath(program_file(), 0);
  if (!folder.empty()) folder.pop_back();
  return folder;
}

}  // namespace quorvel
