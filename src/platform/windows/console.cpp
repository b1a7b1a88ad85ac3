#include "platform/console.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <atomic>

#include "platform/windows/wide.h"

namespace quorvel::console {
namespace {

constexpr DWORD piece = 8192;
constexpr int usual_width = 80;

// The system counts on a thread of its own, which can reach nothing but a static.
std::atomic<int> interrupt_count = 0;
int interrupts_told = 0;

BOOL WINAPI on_interrupt(DWORD event) {
  ++interrupt_count;
  // After the others the program is ended as soon as this returns; it may go on to finish what it is at.
  if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) Sleep(INFINITE);
  return TRUE;
}

bool is_console(DWORD which, DWORD& mode) {
  return GetConsoleMode(GetStdHandle(which), &mode) != FALSE;
}

/// Whether the console moves its cursor when told to by the text.
bool is_terminal(DWORD which) {
  DWORD mode = 0;
  return is_console(which, mode) &&
         SetConsoleMode(GetStdHandle(which), mode | ENABLE_PROCESSED_OUTPUT | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
}

void write_console(HANDLE console, std::wstring_view text) {
  while (!text.empty()) {
    DWORD written = 0;
    const auto size = static_cast<DWORD>(std::min<std::size_t>(text.size(), piece));
    if (!WriteConsoleW(console, text.data(), size, &written, nullptr) || written == 0) return;
    text.remove_prefix(written);
  }
}

void write_all(DWORD which, std::string_view text) {
  const HANDLE handle = GetStdHandle(which);
  DWORD mode = 0;
  if (is_console(which, mode)) return write_console(handle, to_utf16_or_marks(text));
  while (!text.empty()) {
    DWORD written = 0;
    if (!WriteFile(handle, text.data(), static_cast<DWORD>(text.size()), &written, nullptr) || written == 0) return;
    text.remove_prefix(written);
  }
}

}  // namespace

void open_missing_streams() {
  for (const DWORD which : {STD_INPUT_HANDLE, STD_OUTPUT_HANDLE, STD_ERROR_HANDLE}) {
    SetLastError(ERROR_SUCCESS);
    if (GetFileType(GetStdHandle(which)) != FILE_TYPE_UNKNOWN || GetLastError() == ERROR_SUCCESS) continue;
    SetStdHandle(which, CreateFileW(L"NUL", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    OPEN_EXISTING, 0, nullptr));
  }
}

void write_out(std::string_view text) {
  write_all(STD_OUTPUT_HANDLE, text);
}

void write_error(std::string_view text) {
  write_all(STD_ERROR_HANDLE, text);
}

bool error_is_terminal() {
  return is_terminal(STD_ERROR_HANDLE);
}

int width() {
  CONSOLE_SCREEN_BUFFER_INFO info{};
  if (!GetConsoleScreenBufferInfo(GetStdHandle(STD_ERROR_HANDLE), &info)) return usual_width;
  return info.srWindow.Right - info.srWindow.Left + 1;
}

std::optional<std::string> read_line() {
  DWORD mode = 0;
  if (!is_console(STD_INPUT_HANDLE, mode)) return std::nullopt;
  std::wstring line;
  while (interrupt_count == interrupts_told) {
    std::array<wchar_t, 256> part{};
    DWORD size = 0;
    // An interrupt ends the call with nothing read.
    if (!ReadConsoleW(GetStdHandle(STD_INPUT_HANDLE), part.data(), part.size(), &size, nullptr) || size == 0) break;
    line.append(part.data(), size);
    if (line.front() == L'\x1A') break;  // Ctrl+Z: the end of the input
    if (!line.ends_with(L'\n')) continue;
    line.erase(line.find_last_not_of(L"\r\n") + 1);
    return to_utf8(line);
  }
  return std::nullopt;
}

void count_interrupts() {
  SetConsoleCtrlHandler(on_interrupt, TRUE);
}

int interrupts() {
  return interrupts_told = interrupt_count;
}

}  // namespace quorvel::console
