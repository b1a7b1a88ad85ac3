#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <list>

#include "listings_service.h"
#include "platform/system.h"
#include "platform/windows/registry.h"
#include "temporary_folder.h"
#include "windows_process.h"

namespace quorvel::testing {
namespace {

struct WindowsProgram : ::testing::Test {
  const std::string programs = QUORVEL_PROGRAMS;
  TemporaryFolder folder;
  ListingsService service;
  const Variable base{"QUORVEL_API_BASE", service.base()}, data{"APPDATA", folder / "data"};
  const std::unique_ptr<Files> files = system_files();

  WindowsProgram() { files->create_folder(folder / "data"), files->create_folder(folder / "in"); }
  std::string file(const std::string& name) {
    EXPECT_TRUE(files->replace(folder / ("in/" + name), name));
    return folder / ("in/" + name);
  }
};

TEST_F(WindowsProgram, TheTerminalProgramRenamesWhatItIsGivenAndKeepsASecondFileOfTheSameName) {
  const std::string first = file("café lights é.s01e02.mkv"), taken = file("harbour.lights.s01e02.mkv");
  const std::string other = file("sub harbour.lights.1x02.mkv"), none = folder / "in/n*.mkv";
  const std::string good = folder / "in/The Harbour Lights - 1x02 - The Pilot Boat.mkv";
  const std::string program = programs + "/quorvel-cli.exe", work = " --work-dir \"" + (folder / "data") + "\" ";
  EXPECT_EQ(Process(program, work + "--dry-run \"" + taken + "\"").status(), 0u);
  EXPECT_TRUE(files->exists(taken));
  EXPECT_EQ(Process(program, work + "\"" + taken + "\"").status(), 0u);
  EXPECT_EQ(files->read(good), "harbour.lights.s01e02.mkv");
  file("harbour.lights.s01e02.mkv");
  EXPECT_EQ(Process(program, work + "\"" + taken + "\" \"" + none + "\"").status(), 1u);  // no question, no harm
  EXPECT_EQ(files->read(good), "harbour.lights.s01e02.mkv");
  EXPECT_TRUE(files->exists(taken) && files->exists(first) && files->exists(other));
  EXPECT_TRUE(files->exists(folder / "data/cache"));
  EXPECT_EQ(Process(program, "--nonsense").status(), 2u);
}

void wait_until(const std::function<bool()>& done) {
  for (int i = 0; i < 12'000 && !done(); ++i) Sleep(10);
  EXPECT_TRUE(done());
}

HWND window_of(const Process& program, const wchar_t* type, const wchar_t* caption) {
  DWORD owner = 0;
  for (HWND window = nullptr; (window = FindWindowExW(nullptr, window, type, caption)) != nullptr;) {
    if (GetWindowThreadProcessId(window, &owner) != 0 && owner == program.id()) return window;
  }
  return nullptr;
}

/// The one that is seen now, of this class of controls.
HWND visible_child(HWND window, std::wstring_view type) {
  struct Search {
    std::wstring_view type;
    HWND found;
  } search{type, nullptr};
  const auto look = [](HWND child, LPARAM data) -> BOOL {
    auto& wanted = *reinterpret_cast<Search*>(data);
    wchar_t name[32];
    GetClassNameW(child, name, 32);
    if (wanted.type == name && IsWindowVisible(child)) wanted.found = child;
    return wanted.found == nullptr;
  };
  EnumChildWindows(window, look, reinterpret_cast<LPARAM>(&search));
  return search.found;
}

TEST_F(WindowsProgram, FiftyCopiesStartedAtOnceHandOverTheirFilesAndOneIsUndoneAndUninstallLeavesNothing) {
  const std::string program = programs + "/quorvel.exe", name = "harbour.lights.s01e02.mkv";
  const std::string good = "The Harbour Lights - 1x02 - The Pilot Boat.mkv", command = "\\shell\\Quorvel\\command";
  const auto key_is_there = [] {
    return registry::read_string(HKEY_CURRENT_USER, "SOFTWARE\\Quorvel", "").has_value();
  };
  RegDeleteTreeW(HKEY_CURRENT_USER, L"SOFTWARE\\Quorvel");
  std::vector<std::string> folders;
  for (int i = 0; i < 51; ++i) {
    folders.push_back(folder / ("in/a b " + std::to_string(i)));
    ASSERT_TRUE(files->create_folder(folders.back()) && files->replace(folders.back() + "\\" + name, name));
  }
  const Process first(program, folders[50] + "\\" + name);  // without quotes, as the file manager gives it
  wait_until([&] { return files->exists(folders[50] + "\\" + good); });
  std::list<Process> others;
  for (int i = 0; i < 50; ++i) others.emplace_back(program, folders[static_cast<std::size_t>(i)] + "\\" + name);
  for (const Process& other : others) EXPECT_EQ(other.status(), 0u);
  for (const std::string& each : folders) wait_until([&] { return files->exists(each + "\\" + good); });

  const HWND window = window_of(first, nullptr, L"Quorvel 3.4"), list = visible_child(window, L"SysListView32");
  const HWND log = visible_child(window, L"ListBox");
  wait_until([&] { return SendMessageW(log, LB_GETCOUNT, 0, 0) >= 4; });  // both passes have ended
  POINT row{20, 28};                                                      // the first that is seen below the header
  ClientToScreen(list, &row);
  PostMessageW(list, WM_CONTEXTMENU, reinterpret_cast<WPARAM>(list), MAKELPARAM(row.x, row.y));
  wait_until([&] { return window_of(first, L"#32768", nullptr) != nullptr; });
  PostMessageW(list, WM_CHAR, 'u', 0);  // "Undo Rename"
  const auto count = [&](const std::string& called) {
    return std::count_if(folders.begin(), folders.end(),
                         [&](const std::string& each) { return files->exists(each + "\\" + called); });
  };
  wait_until([&] { return count(name) == 1; });
  EXPECT_EQ(count(good), 50);

  EXPECT_TRUE(key_is_there());
  const auto verb = [&](const std::string& of) { return registry::read_string(HKEY_CLASSES_ROOT, of + command, ""); };
  EXPECT_TRUE(verb("Directory").value_or("").ends_with("quorvel.exe\" %1"));
  EXPECT_TRUE(verb("SystemFileAssociations\\.mkv"));
  const auto channel = system_instance_channel();
  EXPECT_TRUE(channel->other_is_running());
  channel->send("QV|UD|");
  EXPECT_EQ(first.status(), 0u);
  EXPECT_TRUE(files->exists(folder / "data/Quorvel"));
  EXPECT_EQ(Process(program, "/uninstall").status(), 0u);
  EXPECT_FALSE(key_is_there() || files->exists(folder / "data/Quorvel"));
  EXPECT_FALSE(verb("Directory") || verb("SystemFileAssociations\\.mkv"));
}

}  // namespace
}  // namespace quorvel::testing
