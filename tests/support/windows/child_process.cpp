#include "child_process.h"

#include <windows.h>

#include <list>
#include <stdexcept>
#include <thread>

#include "platform/windows/handle.h"
#include "platform/windows/wide.h"

namespace quorvel::testing {
namespace {

constexpr DWORD killed_code = 0xDEAD;

/// As programs take it apart again: backslashes count only before a quote. What needs no quotes gets none.
std::string quoted(const std::string& argument) {
  if (!argument.empty() && argument.find_first_of(" \t\"") == std::string::npos) return argument;
  std::string text = "\"";
  std::size_t backslashes = 0;
  for (const char each : argument) {
    if (each == '"') text.append(backslashes + 1, '\\');
    backslashes = each == '\\' ? backslashes + 1 : 0;
    text += each;
  }
  return text.append(backslashes, '\\') + "\"";
}

Handle opened(const std::string& file, DWORD access, DWORD how) {
  SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
  return Handle(CreateFileW(to_utf16(file)->c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                            &inherited, how, 0, nullptr));
}

Handle output(const std::string& file) {
  return file.empty() ? opened("NUL", GENERIC_WRITE, OPEN_EXISTING) : opened(file, GENERIC_WRITE, CREATE_ALWAYS);
}

Handle console(const char* name) {
  return opened(name, GENERIC_READ | GENERIC_WRITE, OPEN_EXISTING);
}

/// The process started with these handles.
HANDLE started(const Start& start, const Handle& in, const Handle& out, const Handle& error, DWORD flags) {
  std::string line = quoted(start.program);
  for (const std::string& argument : start.arguments) line += " " + quoted(argument);
  std::list<Variable> environment;
  for (const auto& [name, value] : start.environment) environment.emplace_back(name, value);
  STARTUPINFOW how{};
  how.cb = sizeof how;
  how.dwFlags = STARTF_USESTDHANDLES;
  how.hStdInput = in.get();
  how.hStdOutput = out.get();
  how.hStdError = error.get();
  PROCESS_INFORMATION process{};
  const std::wstring folder = *to_utf16(start.folder);
  if (!CreateProcessW(nullptr, to_utf16(line)->data(), nullptr, nullptr, TRUE, flags, nullptr,
                      folder.empty() ? nullptr : folder.c_str(), &how, &process)) {
    throw std::runtime_error(start.program + ": " + error_text(GetLastError()));
  }
  CloseHandle(process.hThread);
  return process.hProcess;
}

BOOL WINAPI stay(DWORD) {
  return TRUE;
}

int status_of(const Handle& process) {
  DWORD code = 0;
  WaitForSingleObject(process.get(), INFINITE);
  GetExitCodeProcess(process.get(), &code);
  return code == killed_code ? ChildProcess::killed : static_cast<int>(code);
}

}  // namespace

struct ChildProcess::System {
  const Handle process;
};

struct Conversation::System {
  System() {
    FreeConsole();  // one without a screen, which the test may have been started in
    if (!AllocConsole()) throw std::runtime_error("no console: " + error_text(GetLastError()));
    SetConsoleCtrlHandler(stay, TRUE);
  }
  ~System() {
    SetConsoleCtrlHandler(stay, FALSE);
    FreeConsole();
  }

  std::unique_ptr<Handle> process;
};

ChildProcess::ChildProcess(const Start& start)
    : system_(new System{Handle(started(start, opened("NUL", GENERIC_READ, OPEN_EXISTING), output(start.out),
                                        output(start.error), CREATE_NO_WINDOW))}) {}

ChildProcess::~ChildProcess() {
  kill();
  status();
}

void ChildProcess::kill() {
  TerminateProcess(system_->process.get(), killed_code);
}

int ChildProcess::status() {
  return status_of(system_->process);
}

Conversation::Conversation(const Start& start) : system_(std::make_unique<System>()) {
  const Handle out = console("CONOUT$");
  system_->process = std::make_unique<Handle>(started(start, console("CONIN$"), out, out, 0));
}

Conversation::~Conversation() = default;

bool Conversation::shows(const std::string& text) {
  bool running = true;
  while (true) {
    CONSOLE_SCREEN_BUFFER_INFO info{};
    const Handle out = console("CONOUT$");
    GetConsoleScreenBufferInfo(out.get(), &info);
    std::wstring screen(static_cast<std::size_t>(info.dwSize.X) * info.dwSize.Y, L' ');
    DWORD size = 0;
    ReadConsoleOutputCharacterW(out.get(), screen.data(), static_cast<DWORD>(screen.size()), {0, 0}, &size);
    if (to_utf8(screen).find(text) != std::string::npos) return true;
    if (!running) return false;
    running = WaitForSingleObject(system_->process->get(), 10) == WAIT_TIMEOUT;
  }
}

void Conversation::type(const std::string& keys) {
  const Handle in = console("CONIN$");
  for (const char key : keys) {
    if (key == '\x03') {
      GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0);
      continue;
    }
    INPUT_RECORD record{};
    record.EventType = KEY_EVENT;
    record.Event.KeyEvent.wRepeatCount = 1;
    record.Event.KeyEvent.uChar.UnicodeChar = key == '\n' ? L'\r' : static_cast<wchar_t>(key);
    record.Event.KeyEvent.wVirtualKeyCode = key == '\n' ? VK_RETURN : 0;
    for (const BOOL down : {TRUE, FALSE}) {
      record.Event.KeyEvent.bKeyDown = down;
      DWORD written = 0;
      WriteConsoleInputW(in.get(), &record, 1, &written);
    }
  }
}

int Conversation::status() {
  return status_of(*system_->process);
}

EventLoop::EventLoop(const std::string& caption)
    : window_(CreateWindowExW(0, L"STATIC", to_utf16(caption)->c_str(), WS_OVERLAPPED, 0, 0, 9, 9, nullptr, nullptr,
                              nullptr, nullptr)) {}

EventLoop::~EventLoop() {
  DestroyWindow(static_cast<HWND>(window_));
}

void EventLoop::process() const {
  MSG message;
  if (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
    DispatchMessageW(&message);
  } else {
    std::this_thread::yield();
  }
}

void kill_this_process() {
  TerminateProcess(GetCurrentProcess(), killed_code);
  std::abort();
}

void set_variable(const std::string& name, const std::string& value) {
  _wputenv_s(to_utf16(name)->c_str(), to_utf16(value)->c_str());
}

}  // namespace quorvel::testing
