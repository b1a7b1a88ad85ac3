#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <list>
#include <source_location>

#include "listings_service.h"
#include "platform/system.h"
#include "platform/windows/registry.h"
#include "shell/version.h"
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

void wait_until(const std::function<bool()>& done,
                const std::source_location& where = std::source_location::current()) {
  const ULONGLONG until = GetTickCount64() + 120'000;
  while (!done() && GetTickCount64() < until) Sleep(10);
  if (!done()) ADD_FAILURE_AT(where.file_name(), static_cast<int>(where.line())) << "waited in vain";
}

HWND window_of(const Process& program, const wchar_t* type, const wchar_t* caption) {
  DWORD owner = 0;
  for (HWND window = nullptr; (window = FindWindowExW(nullptr, window, type, caption)) != nullptr;) {
    if (GetWindowThreadProcessId(window, &owner) != 0 && owner == program.id()) return window;
  }
  return nullptr;
}

std::wstring text_of(HWND window) {
  wchar_t text[128];
  return {text, static_cast<std::size_t>(GetWindowTextW(window, text, 128))};
}

/// The one that is seen now, of this class of controls, with this text unless that is empty.
HWND visible_child(HWND window, std::wstring_view type, std::wstring_view text = {}) {
  struct Search {
    std::wstring_view type, text;
    HWND found;
  } search{type, text, nullptr};
  const auto look = [](HWND child, LPARAM data) -> BOOL {
    auto& wanted = *reinterpret_cast<Search*>(data);
    wchar_t name[32];
    GetClassNameW(child, name, 32);
    const bool fits = wanted.type == name && (wanted.text.empty() || wanted.text == text_of(child));
    if (fits && IsWindowVisible(child)) wanted.found = child;
    return wanted.found == nullptr;
  };
  EnumChildWindows(window, look, reinterpret_cast<LPARAM>(&search));
  return search.found;
}

/// As the log tells.
int passes_ended(HWND log) {
  int ended = 0;
  for (LRESULT line = SendMessageW(log, LB_GETCOUNT, 0, 0) - 1; line >= 0; --line) {
    wchar_t text[512] = L"";
    const auto index = static_cast<WPARAM>(line);
    if (SendMessageW(log, LB_GETTEXTLEN, index, 0) < 512)
      SendMessageW(log, LB_GETTEXT, index, reinterpret_cast<LPARAM>(text));
    ended += std::wstring_view(text).ends_with(L"All items processed") ? 1 : 0;
  }
  return ended;
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
  wait_until([&] { return passes_ended(visible_child(window, L"ListBox")) >= 2; });
  POINT row{20, 28};  // the first that is seen below the header
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

HWND wait_for_window(const Process& program, const wchar_t* caption,
                     const std::source_location& where = std::source_location::current()) {
  wait_until([&] { return window_of(program, nullptr, caption) != nullptr; }, where);
  return window_of(program, nullptr, caption);
}

void click(HWND dialog, const wchar_t* caption) {
  PostMessageW(visible_child(dialog, L"Button", caption), BM_CLICK, 0, 0);
}

/// As with Alt+O and P: other programs' menus cannot be read.
HWND open_preferences(const Process& program, HWND window) {
  PostMessageW(window, WM_SYSCOMMAND, SC_KEYMENU, 'o');
  wait_until([&] { return window_of(program, L"#32768", nullptr) != nullptr; });
  PostMessageW(window, WM_CHAR, 'p', 0);
  return wait_for_window(program, L"Preferences");
}

TEST_F(WindowsProgram, PreferencesGoFromTheDialogToTheRegistryAndTheEndOfTheSessionIsNoAnswerToAQuestion) {
  const std::string key = "SOFTWARE\\Quorvel", early = file("harbour.lights.s01e02.mkv");
  RegDeleteTreeW(HKEY_CURRENT_USER, L"SOFTWARE\\Quorvel");
  const auto verb = [](const std::string& of) {
    return registry::read_string(HKEY_CLASSES_ROOT, of + "\\shell\\Quorvel\\command", "").has_value();
  };
  const auto number = [&](const char* name) { return registry::read_number(HKEY_CURRENT_USER, key, name); };
  const Process program(programs + "/quorvel.exe", "");
  const HWND window = wait_for_window(program, L"Quorvel 3.4");
  wait_until([&] { return verb("avifile") && !verb("movfile"); });
  const HWND dialog = open_preferences(program, window);
  wait_until([&] { return visible_child(dialog, L"Button", L"OK") != nullptr; });
  SendMessageW(visible_child(dialog, L"Edit"), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(L".MKV;mov;"));
  for (const wchar_t* const box : {L"Confirm &File Operations", L"&Verbose Logging"}) click(dialog, box);
  click(dialog, L"OK");
  wait_until([&] { return number("autoclose").has_value(); });  // the last to be written
  EXPECT_EQ(registry::read_string(HKEY_CURRENT_USER, key, "types"), "mkv;mov");
  EXPECT_EQ(*number("confirm") * 100 + *number("logging") * 10 + *number("context"), 122u);
  EXPECT_EQ(*number("nocache") + *number("noutf8") + *number("autoclose"), 0u);
  EXPECT_TRUE(verb("mkvfile") && verb("movfile") && verb("SystemFileAssociations\\.mov") && verb("Directory"));
  EXPECT_FALSE(verb("avifile") || verb("SystemFileAssociations\\.avi"));

  system_instance_channel()->send("QV|PI|C=" + early);
  wait_for_window(program, L"Confirm File Rename");
  EXPECT_EQ(SendMessageW(window, WM_QUERYENDSESSION, 0, 0), FALSE);  // a pass is running
  SendMessageW(window, WM_ENDSESSION, TRUE, 0);
  EXPECT_EQ(program.status(), 0u);
  EXPECT_TRUE(files->exists(early));
  EXPECT_EQ(Process(programs + "/quorvel.exe", "/uninstall").status(), 0u);
}

TEST_F(WindowsProgram, StartedWithTheSystemItWaitsInTheTrayAndEndsWithTheSession) {
  const Process program(programs + "/quorvel.exe", "/startup");
  const HWND window = wait_for_window(program, L"Quorvel 3.4");
  RECT area, screen;
  SystemParametersInfoW(SPI_GETWORKAREA, 0, &screen, 0);
  wait_until([&] {
    GetWindowRect(window, &area);
    return std::abs(area.left + area.right - screen.left - screen.right) <= 2 &&
           std::abs(area.top + area.bottom - screen.top - screen.bottom) <= 2;
  });
  EXPECT_FALSE(IsWindowVisible(window));
  SendMessageW(window, WM_MOUSEMOVE, 1, WM_LBUTTONDBLCLK);  // as the tray tells it
  EXPECT_TRUE(IsWindowVisible(window));
  EXPECT_EQ(SendMessageW(window, WM_QUERYENDSESSION, 0, 0), TRUE);
  SendMessageW(window, WM_ENDSESSION, TRUE, 0);
  EXPECT_EQ(program.status(), 0u);
}

std::string resource(HMODULE program, const wchar_t* name, const wchar_t* type) {
  const HRSRC place = FindResourceW(program, name, type);
  if (place == nullptr) return {};
  return {static_cast<const char*>(LockResource(LoadResource(program, place))), SizeofResource(program, place)};
}

/// Of the version's texts, empty when there is none of that name.
std::string version_text(std::string& version, const std::wstring& name) {
  wchar_t* text = nullptr;
  UINT length = 0;
  const std::wstring path = L"\\StringFileInfo\\040904B0\\" + name;
  if (!VerQueryValueW(version.data(), path.c_str(), reinterpret_cast<void**>(&text), &length)) return {};
  return to_utf8(text);
}

TEST(WindowsResources, ProgramsBringTheirIconVersionAndWishesToTheSystem) {
  for (const std::string name : {"quorvel", "quorvel-cli"}) {
    const std::wstring path = to_utf16_or_marks(std::string(QUORVEL_PROGRAMS) + "/" + name + ".exe");
    const HMODULE program = LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    ASSERT_NE(program, nullptr) << name;
    const std::string manifest = resource(program, MAKEINTRESOURCEW(1), MAKEINTRESOURCEW(24));
    for (const char* const wish :
         {"Microsoft.Windows.Common-Controls\" version=\"6.0.0.0\"", ">true/pm</dpiAware>",
          ">PerMonitorV2, PerMonitor</dpiAwareness>", ">true</longPathAware>", "level=\"asInvoker\""}) {
      EXPECT_NE(manifest.find(wish), std::string::npos) << name << ": " << wish;
    }
    EXPECT_EQ(manifest.find("activeCodePage"), std::string::npos);
    const std::string icons = resource(program, L"APPLICATION", MAKEINTRESOURCEW(14));
    EXPECT_TRUE(icons.size() > 4 && icons[4] == 6) << name;  // as many sizes
    std::string version = resource(program, MAKEINTRESOURCEW(1), MAKEINTRESOURCEW(16));
    EXPECT_EQ(version_text(version, L"LegalCopyright"), copyright);
    EXPECT_EQ(version_text(version, L"ProductName") + " " + version_text(version, L"ProductVersion"), "Quorvel 3.4.0");
    EXPECT_EQ(version_text(version, L"OriginalFilename"), name + ".exe");
    FreeLibrary(program);
  }
}

}  // namespace
}  // namespace quorvel::testing
