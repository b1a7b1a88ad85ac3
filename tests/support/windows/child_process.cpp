#include "child_process.h"

#include <windows.h>

#include <list>
#include <stdexcept>
#include <thread>

#include "platform/windows/handle.h"
#include "platform/windows/wide.h"
#include "text/cut.h"

namespace quorvel::testing {
namespace {

Handle opened(const std::string& file, DWORD how = OPEN_EXISTING) {
  SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
  return Handle(CreateFileW(to_utf16(file)->c_str(), GENERIC_READ | GENERIC_WRITE,
                            FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, &inherited, how, 0, nullptr));
}

}  // namespace

struct ChildProcess::System {
  const Handle process;

  ~System() {
    TerminateProcess(process.get(), static_cast<UINT>(-1));
    WaitForSingleObject(process.get(), INFINITE);
  }
};

ChildProcess::ChildProcess(const Start& start) {
  if (start.terminal) {
    FreeConsole();  // the last one, or one without a screen, which the test may have been started in
    if (!AllocConsole()) throw std::runtime_error("no console: " + error_text(GetLastError()));
    SetConsoleCtrlHandler([](DWORD) { return TRUE; }, TRUE);  // the program is interrupted, not the test
  }
  // What holds no blank stands without quotes, as users type it.
  std::string line = "\"" + start.program + "\"";
  for (std::string each : start.arguments) {
    replace_all(each, "\"", "\\\"");
    const bool plain = !each.empty() && each.find(' ') == std::string::npos;
    // Else the last backslash would take the quote behind it for part of the argument.
    if (!plain) each.append(each.size() - (each.find_last_not_of('\\') + 1), '\\');
    line += plain ? " " + each : " \"" + each + "\"";
  }
  std::list<Variable> environment;
  for (const auto& [name, value] : start.environment) environment.emplace_back(name, value);
  const auto output = [&](const std::string& file) {
    return start.terminal || file.empty() ? opened(start.terminal ? "CONOUT$" : "NUL") : opened(file, CREATE_ALWAYS);
  };
  const Handle in = opened(start.terminal ? "CONIN$" : "NUL"), out = output(start.out), error = output(start.error);
  STARTUPINFOW how{};
  how.cb = sizeof how;
  how.dwFlags = STARTF_USESTDHANDLES;
  how.hStdInput = in.get();
  how.hStdOutput = out.get();
  how.hStdError = error.get();
  PROCESS_INFORMATION process{};
  const std::wstring folder = *to_utf16(start.folder);
  if (!CreateProcessW(nullptr, to_utf16(line)->data(), nullptr, nullptr, TRUE, start.terminal ? 0 : CREATE_NO_WINDOW,
                      nullptr, folder.empty() ? nullptr : folder.c_str(), &how, &process)) {
    throw std::runtime_error(start.program + ": " + error_text(GetLastError()));
  }
  CloseHandle(process.hThread);
  system_.reset(new System{Handle(process.hProcess)});
}

void ChildProcess::kill() const {
  TerminateProcess(system_->process.get(), static_cast<UINT>(-1));
}

int ChildProcess::status() const {
  DWORD code = 0;
  WaitForSingleObject(system_->process.get(), INFINITE);
  GetExitCodeProcess(system_->process.get(), &code);
  return static_cast<int>(code);
}

bool ChildProcess::shows(const std::string& text) const {
  for (bool running = true;; running = WaitForSingleObject(system_->process.get(), 10) == WAIT_TIMEOUT) {
    std::wstring screen(20'000, L' ');  // of a fresh terminal, all that the program has shown
    DWORD size = 0;
    ReadConsoleOutputCharacterW(opened("CONOUT$").get(), screen.data(), 20'000, {0, 0}, &size);
    if (to_utf8(screen).find(text) != std::string::npos) return true;
    if (!running) return false;
  }
}

void ChildProcess::type(const std::string& keys) const {
  const Handle in = opened("CONIN$");
  for (const char key : keys) {
    if (key == '\x03') {
      GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0);
      continue;
    }
    const bool enter = key == '\n';
    for (const BOOL down : {TRUE, FALSE}) {
      INPUT_RECORD record{};
      record.EventType = KEY_EVENT;
      record.Event.KeyEvent = {down, 1, static_cast<WORD>(enter ? VK_RETURN : 0), 0, {enter ? L'\r' : WCHAR(key)}, 0};
      DWORD written = 0;
      WriteConsoleInputW(in.get(), &record, 1, &written);
    }
  }
}

EventLoop::EventLoop(const std::string& caption)
    : window_(CreateWindowExW(0, L"STATIC", to_utf16(caption)->c_str(), WS_OVERLAPPED, 0, 0, 9, 9, nullptr, nullptr,
                              nullptr, nullptr),
              [](void* window) { DestroyWindow(static_cast<HWND>(window)); }) {}

void EventLoop::process() const {
  MSG message;
  if (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
    DispatchMessageW(&message);
  } else {
    std::this_thread::yield();
  }
}

void set_variable(const std::string& name, const std::string& value) {
  _wputenv_s(to_utf16(name)->c_str(), to_utf16(value)->c_str());
}

}  // namespace quorvel::testing
