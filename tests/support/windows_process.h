#pragma once

#include <windows.h>

#include <stdexcept>
#include <string>

#include "platform/windows/handle.h"
#include "platform/windows/wide.h"
#include "variable.h"

namespace quorvel::testing {

/// A program that runs beside the test, started with what stands behind its name as one text; ended with the test.
class Process {
 public:
  Process(const std::string& program, const std::string& arguments) {
    std::wstring line = to_utf16_or_marks("\"" + program + "\" " + arguments);
    STARTUPINFOW start{};
    start.cb = sizeof start;
    if (!CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, CREATE_NO_WINDOW, nullptr, nullptr, &start,
                        &started_)) {
      throw std::runtime_error(program + ": " + error_text(GetLastError()));
    }
  }
  ~Process() {
    TerminateProcess(started_.hProcess, 99);
    CloseHandle(started_.hProcess);
    CloseHandle(started_.hThread);
  }
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  DWORD id() const { return started_.dwProcessId; }
  /// Waits for the end, for two minutes at most.
  DWORD status() const {
    DWORD code = 0;
    WaitForSingleObject(started_.hProcess, 120'000);
    GetExitCodeProcess(started_.hProcess, &code);
    return code;
  }

 private:
  PROCESS_INFORMATION started_{};
};

}  // namespace quorvel::testing
