#include <windows.h>

#include <gtest/gtest.h>

#include <functional>
#include <list>
#include <thread>

#include "child_process.h"
#include "file_tools.h"
#include "listings_service.h"
#include "platform/windows/registry.h"
#include "platform/windows/wide.h"
#include "temporary_folder.h"

namespace quorvel::testing {
namespace {

void wait_until(const std::function<bool()>& done) {
  while (!done()) std::this_thread::yield();
}

TEST(WindowsProgram, CopiesStartedAtOnceHandOverTheirFilesAndUninstallLeavesNothing) {
  const TemporaryFolder folder;
  const ListingsService service;
  const std::unique_ptr<Files> files = system_files();
  const auto start = [&](std::string argument) {  // without quotes, as the file manager gives it
    Start start{.program = std::string(QUORVEL_PROGRAMS) + "/quorvel.exe",
                .environment = user_at(folder / "data", service.base())};
    for (std::size_t blank; (blank = argument.find(' ')) != std::string::npos; argument.erase(0, blank + 1)) {
      start.arguments.push_back(argument.substr(0, blank));
    }
    start.arguments.push_back(argument);
    return start;
  };
  for (const char* const name : {"data", "in"}) files->create_folder(folder / name);
  system_key_values(*files, application_title)->erase_all();
  const std::string good = "The Harbour Lights - 1x02 - The Pilot Boat.mkv";
  std::vector<std::string> folders;
  for (int i = 0; i < 12; ++i) {
    folders.push_back(folder / ("in/a b " + std::to_string(i) + "/"));
    ASSERT_TRUE(files->create_folder(folders.back()));
    write_file(folders.back() + "harbour.lights.s01e02.mkv", "x");
  }
  ChildProcess first(start(folders[0] + "harbour.lights.s01e02.mkv"));
  wait_until([&] { return files->exists(folders[0] + good); });
  std::list<ChildProcess> others;
  for (std::size_t i = 1; i < folders.size(); ++i) others.emplace_back(start(folders[i] + "harbour.lights.s01e02.mkv"));
  for (ChildProcess& other : others) EXPECT_EQ(other.status(), 0);
  for (const std::string& each : folders) wait_until([&] { return files->exists(each + good); });

  const auto left = [&] {
    const auto verb = [](const std::string& of) {
      return registry::read_string(HKEY_CLASSES_ROOT, of + "\\shell\\Quorvel\\command", "").value_or("");
    };
    return std::tuple(verb("Directory").ends_with("quorvel.exe\" %1"), verb("SystemFileAssociations\\.mkv").empty(),
                      system_key_values(*files, application_title)->read_string(""),
                      files->exists(folder / "data/Quorvel"));
  };
  EXPECT_EQ(left(), std::tuple(true, false, "3.4", true));
  const auto channel = system_instance_channel(application_title, "Quorvel 3.4");
  EXPECT_FALSE(channel->become_running_copy());
  channel->send("QV|UD|");
  EXPECT_EQ(first.status(), 0);
  {
    ChildProcess with_the_system(start("/startup"));
    HWND window = nullptr;
    wait_until([&] { return (window = FindWindowW(nullptr, L"Quorvel 3.4")) != nullptr; });
    // A message that the window answers only when it has been set up.
    wait_until([&] { return SendMessageW(window, WM_MOUSEMOVE, 1, WM_LBUTTONDBLCLK), IsWindowVisible(window); });
    EXPECT_EQ(SendMessageW(window, WM_QUERYENDSESSION, 0, 0), TRUE);
    SendMessageW(window, WM_ENDSESSION, TRUE, 0);
    EXPECT_EQ(with_the_system.status(), 0);
  }
  EXPECT_EQ(ChildProcess(start("/uninstall")).status(), 0);
  EXPECT_EQ(left(), std::tuple(false, true, std::nullopt, false));
}

std::string resource(HMODULE program, const wchar_t* name, const wchar_t* type) {
  const HRSRC place = FindResourceW(program, name, type);
  if (place == nullptr) return {};
  return {static_cast<const char*>(LockResource(LoadResource(program, place))), SizeofResource(program, place)};
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
    for (const auto& [field, text] : {std::pair(L"LegalCopyright", std::string(copyright)),
                                      {L"ProductName", "Quorvel"},
                                      {L"ProductVersion", "3.4.0"},
                                      {L"OriginalFilename", name + ".exe"}}) {
      wchar_t* found = nullptr;
      UINT length = 0;
      const std::wstring at = std::wstring(L"\\StringFileInfo\\040904B0\\") + field;
      ASSERT_TRUE(VerQueryValueW(version.data(), at.c_str(), reinterpret_cast<void**>(&found), &length));
      EXPECT_EQ(to_utf8(found), text);
    }
    FreeLibrary(program);
  }
}

}  // namespace
}  // namespace quorvel::testing
