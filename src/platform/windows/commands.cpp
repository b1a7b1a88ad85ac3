#include "platform/commands.h"

#include <windows.h>

#include <array>

#include "platform/native.h"
#include "platform/windows/handle.h"
#include "platform/windows/wide.h"
#include "text/case.h"
#include "text/failure.h"

namespace quorvel::commands {
namespace {

constexpr DWORD slice_ms = 100;

/// As programs take their command lines apart: backslashes stand for themselves but in front of quotes.
std::wstring quoted(const std::wstring& word) {
  if (!word.empty() && word.find_first_of(L" \t\"") == std::wstring::npos) return word;
  std::wstring text = L"\"";
  std::size_t backslashes = 0;
  for (const wchar_t unit : word) {
    if (unit == L'"') text.append(backslashes + 1, L'\\');
    backslashes = unit == L'\\' ? backslashes + 1 : 0;
    text += unit;
  }
  return text.append(backslashes, L'\\') + L"\"";
}

std::wstring wide(const std::string& text) {
  return to_utf16(text).value_or(L"");
}

/// Our own variables and these, as the system wants them: each ended by a NUL, and all by another.
std::wstring environment_with(const Environment& variables) {
  std::wstring block;
  wchar_t* const own = GetEnvironmentStringsW();
  for (const wchar_t* each = own; each != nullptr && *each != L'\0';) {
    const std::wstring entry = each;
    each += entry.size() + 1;
    const std::string name = lower_case(to_utf8(entry.substr(0, entry.find(L'=', 1))));
    bool is_ours = false;
    for (const auto& [variable, value] : variables) is_ours |= name == lower_case(variable);
    if (!is_ours) block.append(entry).push_back(L'\0');
  }
  if (own != nullptr) FreeEnvironmentStringsW(own);
  for (const auto& [name, value] : variables) block.append(wide(name + "=" + value)).push_back(L'\0');
  block.push_back(L'\0');
  return block;
}

/// A handle of our own that a program inherits.
Handle inheritable(HANDLE handle) {
  HANDLE copy = INVALID_HANDLE_VALUE;
  DuplicateHandle(GetCurrentProcess(), handle, GetCurrentProcess(), &copy, 0, TRUE, DUPLICATE_SAME_ACCESS);
  return Handle(copy);
}

}  // namespace

std::vector<std::string> words_of(const std::string& text) {
  return native::split_command_line(text);
}

Ending run(const std::vector<std::string>& words, const Environment& variables, const std::function<bool()>& goes_on) {
  std::wstring line;
  for (const std::string& word : words) line.append(line.empty() ? L"" : L" ").append(quoted(wide(word)));
  SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
  const Handle nothing(
      CreateFileW(L"NUL", GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, OPEN_EXISTING, 0, nullptr));
  const Handle output = inheritable(GetStdHandle(STD_ERROR_HANDLE));
  STARTUPINFOW start{};
  start.cb = sizeof start;
  start.dwFlags = STARTF_USESTDHANDLES;
  start.hStdInput = nothing.get();
  start.hStdOutput = start.hStdError = output.get();
  std::wstring environment = environment_with(variables);
  PROCESS_INFORMATION started{};
  if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, CREATE_UNICODE_ENVIRONMENT, environment.data(),
                      nullptr, &start, &started)) {
    return {{}, native::error_words(static_cast<int>(GetLastError()))};
  }
  const Handle process(started.hProcess), thread(started.hThread);
  while (WaitForSingleObject(process.get(), slice_ms) == WAIT_TIMEOUT) {
    if (goes_on()) continue;
    TerminateProcess(process.get(), 1);
    WaitForSingleObject(process.get(), INFINITE);
    return {{}, "It was ended"};
  }
  DWORD status = 0;
  GetExitCodeProcess(process.get(), &status);
  return {static_cast<int>(status), {}};
}

}  // namespace quorvel::commands
