#include <windows.h>

#include "cli_fixture.h"
#include "platform/windows/handle.h"
#include "platform/windows/wide.h"
#include "variable.h"

namespace quorvel::testing {
namespace {

/// A console with a user in front of it, in which one program runs.
class Console {
 public:
  Console() {
    FreeConsole();  // one without a screen, which the test may have been started in
    EXPECT_TRUE(AllocConsole()) << error_text(GetLastError());
    SetConsoleCtrlHandler(stay, TRUE);
  }
  ~Console() {
    SetConsoleCtrlHandler(stay, FALSE);
    FreeConsole();
  }
  Console(const Console&) = delete;
  Console& operator=(const Console&) = delete;

  void start(const Start& start) {
    const Variable base("QUORVEL_API_BASE", start.environment.at("QUORVEL_API_BASE")),
        data("APPDATA", start.environment.at("APPDATA"));
    std::wstring line = L"\"" + *to_utf16(start.program) + L"\"";
    for (const std::string& argument : start.arguments) line += L" " + *to_utf16(argument);
    const Handle in = opened(L"CONIN$"), out = opened(L"CONOUT$");
    STARTUPINFOW how{};
    how.cb = sizeof how;
    how.dwFlags = STARTF_USESTDHANDLES;
    how.hStdInput = in.get();
    how.hStdOutput = how.hStdError = out.get();
    PROCESS_INFORMATION started{};
    ASSERT_TRUE(CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr,
                               to_utf16(start.folder)->c_str(), &how, &started))
        << error_text(GetLastError());
    CloseHandle(started.hThread);
    process_ = started.hProcess;
  }
  /// All that is on the screen, without the ends of its lines.
  std::string shown() const {
    CONSOLE_SCREEN_BUFFER_INFO info{};
    const Handle out = opened(L"CONOUT$");
    GetConsoleScreenBufferInfo(out.get(), &info);
    std::wstring text(static_cast<std::size_t>(info.dwSize.X) * info.dwSize.Y, L' ');
    DWORD size = 0;
    ReadConsoleOutputCharacterW(out.get(), text.data(), static_cast<DWORD>(text.size()), {0, 0}, &size);
    return to_utf8(text);
  }
  void wait_for(const std::string& text) const {
    while (shown().find(text) == std::string::npos && WaitForSingleObject(process_, 10) == WAIT_TIMEOUT) continue;
    EXPECT_NE(shown().find(text), std::string::npos) << shown();
  }
  void type(const std::wstring& keys) const {
    const Handle in = opened(L"CONIN$");
    for (const wchar_t key : keys) {
      INPUT_RECORD record{};
      record.EventType = KEY_EVENT;
      record.Event.KeyEvent.wRepeatCount = 1;
      record.Event.KeyEvent.uChar.UnicodeChar = key;
      record.Event.KeyEvent.wVirtualKeyCode = key == L'\r' ? VK_RETURN : 0;
      for (const BOOL down : {TRUE, FALSE}) {
        record.Event.KeyEvent.bKeyDown = down;
        DWORD written = 0;
        WriteConsoleInputW(in.get(), &record, 1, &written);
      }
    }
  }
  /// As Ctrl+C does, which reaches whoever shares the console.
  static void interrupt() { EXPECT_TRUE(GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0)) << error_text(GetLastError()); }
  DWORD status() const {
    DWORD code = 0;
    WaitForSingleObject(process_, INFINITE);
    GetExitCodeProcess(process_, &code);
    CloseHandle(process_);
    return code;
  }

 private:
  static BOOL WINAPI stay(DWORD) { return TRUE; }
  static Handle opened(const wchar_t* name) {
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    return Handle(CreateFileW(name, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited,
                              OPEN_EXISTING, 0, nullptr));
  }

  HANDLE process_ = nullptr;
};

TEST_F(Cli, OnAConsoleItAsksAndShowsItsProgress) {
  Console console;
  for (const auto& [answer, status] : {std::pair(L"n\r", 1u), {L"\r", 1u}, {L"y\r", 0u}}) {
    add("The.Harbour.Lights.S01E02.mkv");
    console.start(command({"--set", "confirm=1", "The.Harbour.Lights.S01E02.mkv"}));
    console.wait_for("Continue with file rename? [y/N]");
    console.type(answer);
    EXPECT_EQ(console.status(), status) << console.shown();
  }
  EXPECT_TRUE(exists("in/The Harbour Lights - 1x02 - The Pilot Boat.mkv"));
}

TEST_F(Cli, OnAConsoleAnInterruptEndsTheStageAndASecondTheTransfer) {
  for (const char* name : {"The.Harbour.Lights.S01E02.mkv", "The.Harbour.Lights.S01E03.mkv"}) add(name);
  service.slow_down(std::chrono::milliseconds(20));
  Console console;
  console.start(command({"."}));
  console.wait_for("1 of 2");
  console.interrupt();
  console.interrupt();
  EXPECT_EQ(console.status(), 1u);
  EXPECT_NE(console.shown().find("Got quit signal, finishing up..."), std::string::npos) << console.shown();
  EXPECT_NE(console.shown().find("0 done, 1 failed, 0 cancelled, 1 not processed"), std::string::npos)
      << console.shown();
  EXPECT_TRUE(exists("in/The.Harbour.Lights.S01E02.mkv"));
}

}  // namespace
}  // namespace quorvel::testing
