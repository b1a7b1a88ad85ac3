#include "child_process.h"

#include <windows.h>

#include <psapi.h>

#include <algorithm>
#include <list>
#include <stdexcept>

#include "platform/windows/handle.h"
#include "platform/windows/registry_store.h"
#include "platform/windows/wide.h"
#include "shell/version.h"
#include "variable.h"

namespace quorvel::testing {

struct ChildProcess::System {
  HANDLE handle = nullptr;
  PROCESS_MEMORY_COUNTERS used{};
};

namespace {

constexpr const char* second = "QUORVEL_TEST_SECOND_PROCESS";
constexpr DWORD killed_code = 0xDEAD;

/// As programs take it apart again: backslashes count only in front of a quote.
std::string quoted(const std::string& argument) {
  std::string text = "\"";
  std::size_t backslashes = 0;
  for (const char each : argument) {
    if (each == '"') text.append(backslashes + 1, '\\');
    backslashes = each == '\\' ? backslashes + 1 : 0;
    text += each;
  }
  return text.append(backslashes, '\\') + "\"";
}

HANDLE opened(const std::string& file, DWORD access) {
  SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
  return CreateFileW(to_utf16(file.empty() ? "NUL" : file)->c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE,
                     &inherited, file.empty() ? OPEN_EXISTING : CREATE_ALWAYS, 0, nullptr);
}

std::string own_name() {
  std::wstring path(MAX_PATH, L'\0');
  path.resize(GetModuleFileNameW(nullptr, path.data(), MAX_PATH));
  return to_utf8(path);
}

std::string key_for(const std::string& folder) {
  std::string name = folder;
  std::replace(name.begin(), name.end(), '\\', '/');  // a backslash would begin a key below
  return "SOFTWARE\\Quorvel test " + name;
}

/// A key of its own, which ends with it.
struct PassingStore : RegistryStore {
  explicit PassingStore(const std::string& folder) : RegistryStore(key_for(folder)) {}
  ~PassingStore() override { erase_all(); }
};

}  // namespace

ChildProcess::ChildProcess(const Start& start) : system_(std::make_unique<System>()) {
  std::string line = quoted(start.program);
  for (const std::string& argument : start.arguments) line += " " + quoted(argument);
  std::wstring wide_line = *to_utf16(line);
  std::list<Variable> environment;
  for (const auto& [name, value] : start.environment) environment.emplace_back(name, value);
  const Handle in(opened("", GENERIC_READ)), out(opened(start.out, GENERIC_WRITE)),
      error(opened(start.error, GENERIC_WRITE));
  STARTUPINFOW how{};
  how.cb = sizeof how;
  how.dwFlags = STARTF_USESTDHANDLES;
  how.hStdInput = in.get();
  how.hStdOutput = out.get();
  how.hStdError = error.get();
  PROCESS_INFORMATION started{};
  const std::wstring folder = *to_utf16(start.folder);
  if (!CreateProcessW(nullptr, wide_line.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW, nullptr,
                      folder.empty() ? nullptr : folder.c_str(), &how, &started)) {
    throw std::runtime_error(start.program + ": " + error_text(GetLastError()));
  }
  CloseHandle(started.hThread);
  system_->handle = started.hProcess;
}

ChildProcess::~ChildProcess() {
  kill();
  status();
  CloseHandle(system_->handle);
}

void ChildProcess::kill() {
  TerminateProcess(system_->handle, killed_code);
}

int ChildProcess::status() {
  DWORD code = 0;
  WaitForSingleObject(system_->handle, INFINITE);
  GetExitCodeProcess(system_->handle, &code);
  GetProcessMemoryInfo(system_->handle, &system_->used, sizeof system_->used);
  return code == killed_code ? killed : static_cast<int>(code);
}

std::uint64_t ChildProcess::most_memory() const {
  return system_->used.PeakWorkingSetSize;
}

Start second_process(const std::string& name, const std::string& told) {
  return {
      .program = own_name(), .arguments = {"--gtest_filter=SecondProcess." + name}, .environment = {{second, told}}};
}

std::string told_by_first() {
  return Variable::get(second).value_or("");
}

void kill_this_process() {
  TerminateProcess(GetCurrentProcess(), killed_code);
  std::abort();
}

std::map<std::string, std::string> user_at(const std::string& home, const std::string& api_base) {
  return {{"APPDATA", home}, {"QUORVEL_API_BASE", api_base}};
}

std::unique_ptr<KeyValueStore> settings_of(Files&, const std::string&) {
  return std::make_unique<RegistryStore>(std::string("SOFTWARE\\") + application_title);
}

std::unique_ptr<KeyValueStore> settings_in(Files&, const std::string& folder) {
  return std::make_unique<PassingStore>(folder);
}

std::string data_folder_of(const std::string& home) {
  return home + "\\Quorvel";
}

}  // namespace quorvel::testing
