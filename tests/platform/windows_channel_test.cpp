#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "platform/windows/copy_data_channel.h"
#include "platform/windows/shell_launcher.h"
#include "platform/windows/wide.h"
#include "temporary_folder.h"
#include "text/failure.h"

namespace quorvel::testing {
namespace {

using Texts = std::vector<std::string>;

struct WindowsChannel : ::testing::Test {
  const std::string caption = "Quorvel test " + std::to_string(GetCurrentProcessId());
  const HWND window = CreateWindowExW(0, L"STATIC", to_utf16(caption)->c_str(), WS_OVERLAPPED, 0, 0, 9, 9, nullptr,
                                      nullptr, nullptr, nullptr);
  CopyDataChannel running{caption, caption};
  Texts taken;
  WindowsChannel() { EXPECT_NE(window, nullptr) << error_text(GetLastError()); }
  ~WindowsChannel() override { DestroyWindow(window); }

  /// On a thread of its own, as another copy would; this one answers meanwhile.
  void meanwhile(const std::function<void()>& act) {
    std::atomic<bool> done = false;
    std::thread other([&] {
      act();
      done = true;
      PostMessageW(window, WM_NULL, 0, 0);
    });
    MSG message;
    while (!done && GetMessageW(&message, nullptr, 0, 0) > 0) DispatchMessageW(&message);
    other.join();
  }
  LRESULT deliver(ULONG_PTR number, const void* bytes, std::size_t size) const {
    COPYDATASTRUCT record{number, static_cast<DWORD>(size), const_cast<void*>(bytes)};
    return SendMessageW(window, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&record));
  }
};

TEST_F(WindowsChannel, TextsOfEveryKindArriveWholeAndInOrder) {
  EXPECT_FALSE(running.other_is_running());
  running.receive([&](const std::string& text) { taken.push_back(text); });
  const Texts texts = {"QV|PI|C=",
                       "QV|PI|C=C:\\caf\u00E9.mkv",
                       std::string(254, 'x'),
                       std::string(255, 'y'),
                       "QV|PI|C=日本 \xED\xA0\x80",
                       std::string(70'000, 'z')};
  meanwhile([&] {
    CopyDataChannel second(caption, caption);
    EXPECT_TRUE(second.other_is_running());
    for (const std::string& text : texts) second.send(text);
    EXPECT_THROW(second.send(std::string("a\0b", 3)), Failure);
  });
  EXPECT_EQ(taken, texts);
}

TEST_F(WindowsChannel, TheRecordOfOtherProgramsIsTakenAndForeignOnesDoNoHarm) {
  running.receive([&](const std::string& text) { taken.push_back(text); });
  const std::string full(255, 'x');
  EXPECT_TRUE(deliver(3, "QV|UD|", 7) && deliver(3, "QV|PI|C=caf\xE9\0\0\0", 15));
  EXPECT_EQ(taken, (Texts{"QV|UD|", "QV|PI|C=caf\u00E9"}));
  for (const ULONG_PTR number : {ULONG_PTR{0}, ULONG_PTR{2}, CopyDataChannel::own_record + 1}) {
    EXPECT_FALSE(deliver(number, "QV|UD|", 7));
  }
  EXPECT_FALSE(deliver(3, full.data(), 255) || deliver(3, std::string(256, '\0').data(), 256) || deliver(3, "", 0));
  EXPECT_FALSE(deliver(3, nullptr, 7) || deliver(CopyDataChannel::own_record, "QV|UD|", 6) ||
               deliver(CopyDataChannel::own_record, "a\0b", 4) || SendMessageW(window, WM_COPYDATA, 0, 0));
  EXPECT_EQ(taken.size(), 2u);
}

TEST_F(WindowsChannel, ASenderWaitsForABusyCopyAndGivesUpOnOneThatHangs) {
  running.receive([&](const std::string& text) { taken.push_back(text); });
  EXPECT_FALSE(running.other_is_running());
  std::atomic<bool> sending = false;
  std::thread patient([&] {
    sending = true;
    EXPECT_NO_THROW(CopyDataChannel(caption, caption).send("kept"));
    PostMessageW(window, WM_NULL, 0, 0);
  });
  while (!sending) std::this_thread::yield();
  std::thread impatient(
      [&] { EXPECT_THROW(CopyDataChannel(caption, caption, std::chrono::milliseconds(500)).send("lost"), Failure); });
  impatient.join();  // no events have run meanwhile
  EXPECT_TRUE(taken.empty());
  MSG message;
  GetMessageW(&message, nullptr, 0, 0);
  patient.join();
  EXPECT_EQ(taken, Texts{"kept"});
}

TEST_F(WindowsChannel, ASenderLearnsThatNobodyTookItsText) {
  CopyDataChannel second(caption, caption);
  EXPECT_THROW(second.send("x"), Failure);  // nobody is there, and it is this copy that runs from now on
  EXPECT_TRUE(running.other_is_running());
  int calls = 0;
  second.receive([&](const std::string&) {
    second.stop();  // as the updater's message does
    if (++calls == 1) throw Failure("no");
  });
  EXPECT_FALSE(deliver(3, "x", 2));
  EXPECT_FALSE(deliver(3, "x", 2));
  EXPECT_EQ(calls, 1);
  EXPECT_THROW(CopyDataChannel("no such window", caption).receive([](auto&) {}), Failure);
}

TEST(WindowsLauncher, OpensNothingThatWouldRun) {
  TemporaryFolder folder;
  ShellLauncher launcher;
  for (const std::string& target :
       {std::string("C:\\windows\\system32\\cmd.exe"), std::string("cmd"), std::string("file:///C:/windows"),
        std::string("javascript:1"), std::string("http:///x"), std::string("http://a\nb"), folder / "none.html",
        std::string("\"C:\\windows\\system32\\cmd.exe\""), std::string("windows")}) {
    EXPECT_FALSE(launcher.open(target)) << target;
  }
  EXPECT_FALSE(launcher.start("cmd.exe", "") || launcher.start(folder.path(), "") ||
               launcher.start(folder / "none.exe", "") || launcher.start("C:\\windows\\win.ini", ""));
  const std::string made = folder / "made here";
  EXPECT_TRUE(launcher.start("C:\\windows\\system32\\cmd.exe", "/c mkdir \"" + made + "\""));
  int waits = 0;
  while (!RemoveDirectoryW(to_utf16(made)->c_str()) && ++waits < 3000) Sleep(10);  // made, and let go of
  EXPECT_LT(waits, 3000);
}

}  // namespace
}  // namespace quorvel::testing
