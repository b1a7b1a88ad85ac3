#include <windows.h>

#include <gtest/gtest.h>
#include <shellapi.h>

#include <thread>

#include "child_process.h"
#include "file_tools.h"
#include "listings_service.h"
#include "platform/windows/handle.h"
#include "platform/windows/proxy.h"
#include "platform/windows/registry.h"
#include "platform/windows/shell.h"
#include "platform/windows/wide.h"
#include "system_facts.h"
#include "temporary_folder.h"

namespace quorvel::testing {
namespace {

using Request = FileOperationRequest;

struct WindowsFiles : ::testing::Test {
  const TemporaryFolder folder;
  const std::unique_ptr<Files> files = system_files();
  const std::string a = folder / "a.mkv";

  WindowsFiles() { write_file(a, "A"); }
  /// In the window with a `user`, in the terminal without.
  static int perform(int operation, const std::string& from, const std::string& to = "", MayReplace user = {}) {
    const std::uint16_t flags = Request::AllowUndo | (operation == Request::Delete ? Request::NoConfirmation : 0);
    return system_file_operation({}, std::move(user))->perform({operation, from, to, flags, to + ".new"});
  }
};

TEST_F(WindowsFiles, ProtectedAndOpenFilesStayAndAttributesAreKept) {
  const std::wstring wide = *to_utf16(a);
  SetFileAttributesW(wide.c_str(), FILE_ATTRIBUTE_READONLY);
  EXPECT_FALSE(files->replace(a, "new"));
  SetFileAttributesW(wide.c_str(), FILE_ATTRIBUTE_HIDDEN);
  EXPECT_TRUE(files->replace(a, "new") && (GetFileAttributesW(wide.c_str()) & FILE_ATTRIBUTE_HIDDEN) != 0);
  const Handle held(CreateFileW(wide.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
  EXPECT_FALSE(files->replace(a, "newer") || files->remove(a));
  EXPECT_EQ(everything_in(folder.path()), (std::map<std::string, std::string>{{a, "new"}}));
}

TEST_F(WindowsFiles, OperationsTakeLongPathsAndNoPatterns) {
  std::string deep = folder.path();
  while (deep.size() < 300) EXPECT_TRUE(files->create_folder(deep += "\\" + std::string(50, 'd')));
  const std::string file = deep + "\\x.mkv";
  EXPECT_EQ(absolute_path(deep + "\\.\\x.mkv"), file);
  for (const MayReplace& user : {MayReplace(), MayReplace([](auto) { return true; })}) {
    EXPECT_EQ(perform(Request::Copy, a, file, user), 0);
    EXPECT_EQ(perform(Request::Move, a, file, user), shell::name_taken);
    EXPECT_EQ(perform(Request::Delete, file, "", user), native::no_trash_code);
    EXPECT_EQ(perform(Request::Rename, file, deep + "\\y.mkv", user), 0);
    EXPECT_EQ(perform(Request::Move, deep + "\\y.mkv", folder / "y.mkv", user), 0);
    EXPECT_EQ(contents(folder / "y.mkv"), "A");
    EXPECT_TRUE(files->remove(folder / "y.mkv"));
    for (const std::string& none : {folder / "*.mkv", folder / "?.mkv", std::string("a.mkv"), std::string("C:\\")}) {
      EXPECT_EQ(perform(Request::Copy, none, folder / "new", user), shell::invalid_path) << none;
      EXPECT_EQ(perform(Request::Copy, a, none, user), shell::invalid_path) << none;
      EXPECT_EQ(perform(Request::Delete, none, "", user), shell::invalid_path) << none;
    }
  }
  EXPECT_EQ(contents(a), "A");
  for (; deep != folder.path(); deep.resize(deep.rfind('\\'))) RemoveDirectoryW(system_path(deep)->c_str());
}

TEST_F(WindowsFiles, ACopyThatFailsLeavesNothingBehindAndAFileInUseStays) {
  const TemporaryFolder there(facts::other_device);
  const std::wstring wide = *to_utf16(a);
  const std::string to = there / "x", temporary = to + ".new";
  const auto attempt = [&](int operation, const CopyProgress& progress) {
    const std::uint16_t flags = Request::AllowUndo | Request::Verify;
    return system_file_operation(progress, {})->perform({operation, a, to, flags, temporary});
  };
  for (const int operation : {Request::Copy, Request::Move}) {
    EXPECT_EQ(attempt(operation, [](auto, auto) { return false; }), shell::aborted);
    EXPECT_EQ(attempt(operation, [](auto done, auto total) { return done < total; }), shell::aborted);
    EXPECT_THROW(attempt(operation, [](auto, auto) -> bool { throw std::runtime_error("no"); }), std::runtime_error);
    const auto spoil = [&](auto done, auto) { return done == 0 || (write_file(temporary, "B"), true); };
    EXPECT_EQ(attempt(operation, spoil), native::copy_differs_code);
    for (const auto& [access, shared, code] :
         {std::tuple(GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, native::being_written_code),
          {GENERIC_READ, 0, static_cast<int>(ERROR_SHARING_VIOLATION)}}) {
      const Handle held(CreateFileW(wide.c_str(), access, shared, nullptr, OPEN_EXISTING, 0, nullptr));
      EXPECT_EQ(attempt(operation, {}), code);
      // The shell has said that it had moved the file.
      EXPECT_EQ(perform(Request::Rename, a, folder / "y", [](auto) { return false; }) == 0, shared != 0);
      perform(Request::Rename, folder / "y", a);
    }
    EXPECT_EQ(everything_in(folder.path()).size() + everything_in(there.path()).size(), 1U);
    SetFileAttributesW(wide.c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(attempt(operation, {}), 0);
    EXPECT_TRUE(contents(to) == "A" && (GetFileAttributesW(to_utf16(to)->c_str()) & FILE_ATTRIBUTE_READONLY) != 0);
    EXPECT_EQ(files->exists(a), operation == Request::Copy);
    EXPECT_EQ(system_file_operation({}, {})->perform({Request::Delete, to, "", Request::NoConfirmation}), 0);
  }
}

/// How much has gone to the recycle bin.
std::int64_t in_bin() {
  SHQUERYRBINFO bin{};
  bin.cbSize = sizeof bin;
  return SHQueryRecycleBinW(L"C:\\", &bin) == S_OK ? bin.i64NumItems : -1;
}

TEST_F(WindowsFiles, WhatIsDeletedOrGivenUpByTheUserGoesToTheBinAndNothingIsReplacedUnasked) {
  const TemporaryFolder there(facts::other_device);  // without a bin
  const std::string b = folder / "b", c = there / "c";
  for (const std::string& file : {b, c}) write_file(file, "kept");
  int asked = 0;
  bool answer = false;
  const MayReplace user = [&](const std::string&) { return ++asked, answer; };
  for (const std::string& to : {a, b, c, folder.path()}) {
    for (const int operation : {Request::Rename, Request::Move, Request::Copy}) {
      EXPECT_NE(perform(operation, a, to, user), 0) << operation << to;
    }
  }
  EXPECT_EQ(contents(a) + contents(b) + contents(c) + std::to_string(asked), "Akeptkept2");
  answer = true;
  const std::int64_t before = in_bin();
  for (const int operation : {Request::Copy, Request::Move}) EXPECT_EQ(perform(operation, a, b, user), 0);
  EXPECT_EQ(contents(b) + std::to_string(asked), "A4");
  EXPECT_EQ(perform(Request::Delete, c, "", user), native::no_trash_code);

  // Turned off, and too small.
  wchar_t volume[MAX_PATH]{};
  GetVolumeNameForVolumeMountPointW(L"C:\\", volume, MAX_PATH);
  std::string key = to_utf8(volume);
  key = "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\BitBucket\\Volume\\" + key.substr(key.find('{'));
  key.pop_back();
  const std::string own = "Software\\Quorvel test " + folder.name();
  HKEY settings = nullptr;
  RegCreateKeyW(HKEY_CURRENT_USER, to_utf16(own)->c_str(), &settings);
  RegOverridePredefKey(HKEY_CURRENT_USER, settings);
  for (const auto& [name, off, on] : {std::tuple("NukeOnDelete", 1, 0), {"MaxCapacity", 0, 1}}) {
    registry::write_number(HKEY_CURRENT_USER, key, name, static_cast<std::uint32_t>(off));
    EXPECT_EQ(perform(Request::Delete, b, "", user), native::no_trash_code) << name;
    registry::write_number(HKEY_CURRENT_USER, key, name, static_cast<std::uint32_t>(on));
  }
  EXPECT_EQ(perform(Request::Delete, b, "", user), 0);
  RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
  RegCloseKey(settings);
  RegDeleteTreeW(HKEY_CURRENT_USER, to_utf16(own)->c_str());
  EXPECT_GE(in_bin(), before + 3);
}

TEST(WindowsSettings, AreWrittenAsOthersReadThem) {
  const std::string name = "Quorvel test " + std::to_string(GetCurrentProcessId());
  const std::wstring key = *to_utf16("SOFTWARE\\" + name);
  const std::unique_ptr<Files> files = system_files();
  const std::unique_ptr<KeyValueStore> store = system_key_values(*files, name);
  store->write_string("types", "avi");
  store->write_number("context", 2);
  for (const auto& [value, type] : {std::pair(L"types", RRF_RT_REG_SZ), {L"context", RRF_RT_REG_DWORD}}) {
    EXPECT_EQ(RegGetValueW(HKEY_CURRENT_USER, key.c_str(), value, type, nullptr, nullptr, nullptr), ERROR_SUCCESS);
  }
  store->erase_all();
}

TEST(WindowsChannel, TheRecordOfOtherProgramsIsTakenAndForeignOnesDoNoHarm) {
  const std::string caption = "Quorvel test " + std::to_string(GetCurrentProcessId());
  const EventLoop events(caption);
  const auto channel = system_instance_channel(caption, caption);
  std::string taken;
  channel->receive([&](const std::string& text) { taken += text + ";"; });
  constexpr ULONG_PTR own = 0x51560001;
  const std::string full(255, 'x'), nuls(256, '\0');
  const std::tuple<ULONG_PTR, const char*, DWORD, bool> records[] = {
      {3, "QV|UD|", 7, true},        {3, "caf\xE9\0\0\0", 7, true}, {own, "caf\xC3\xA9", 6, true},
      {own + 1, "QV|UD|", 7, false}, {3, full.data(), 255, false},  {3, nuls.data(), 256, false},
      {3, nullptr, 7, false},        {own, "QV|UD|", 6, false},     {own, "a\0b", 4, false}};
  for (const auto& [number, bytes, size, is_taken] : records) {
    COPYDATASTRUCT record{number, size, const_cast<char*>(bytes)};
    const HWND window = FindWindowW(nullptr, to_utf16(caption)->c_str());
    EXPECT_EQ(SendMessageW(window, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&record)), is_taken) << number << size;
  }
  EXPECT_EQ(taken, "QV|UD|;café;café;");
}

TEST(ExplorerVerbs, AreWrittenAndRemovedWithTheirAsymmetries) {
  const std::string type = "QZ" + std::to_string(GetCurrentProcessId()), lower = "qz" + type.substr(2);
  const std::string verb = "\\shell\\Quorvel\\command", text = "\"C:\\Q r\\quorvel.exe\" %1";
  const std::string keys[] = {"." + type, lower + "file" + verb, "SystemFileAssociations\\." + lower + verb};
  const std::unique_ptr<Files> files = system_files();
  const std::unique_ptr<ContextMenu> verbs = system_context_menu(*files, "C:\\Q r\\quorvel.exe");
  const auto values = [&] {
    std::string values;
    for (const auto& key : keys) values += registry::read_string(HKEY_CLASSES_ROOT, key, "").value_or("-") + "|";
    return values;
  };
  verbs->remove(type);  // no class, nothing to do
  verbs->install(type);
  EXPECT_EQ(values(), lower + "file|" + text + "|" + text + "|");
  verbs->remove(type);
  EXPECT_EQ(values(), lower + "file|-|-|");
  registry::write_string(HKEY_CLASSES_ROOT, keys[0], "", "");
  registry::write_string(HKEY_CLASSES_ROOT, keys[2], "", "kept");
  verbs->remove(type);
  EXPECT_EQ(values(), "|-|kept|");

  // Without an administrator's rights the user's own classes have to do.
  HKEY unwritable = nullptr;
  const std::string own = "Software\\Classes\\";
  RegCreateKeyW(HKEY_CURRENT_USER, to_utf16(own + type)->c_str(), &unwritable);
  RegDeleteKeyW(HKEY_CURRENT_USER, to_utf16(own + type)->c_str());
  RegOverridePredefKey(HKEY_CLASSES_ROOT, unwritable);
  verbs->install(type);
  RegOverridePredefKey(HKEY_CLASSES_ROOT, nullptr);
  RegCloseKey(unwritable);
  const auto own_verb = [&] { return registry::read_string(HKEY_CURRENT_USER, own + keys[2], "").value_or("-"); };
  EXPECT_EQ(own_verb(), text);
  registry::write_string(HKEY_CLASSES_ROOT, keys[0], "", lower + "file");
  verbs->remove(type);
  EXPECT_EQ(own_verb(), "-");
  for (const std::string& key : {keys[0], lower + "file", "SystemFileAssociations\\." + lower}) {
    RegDeleteTreeW(HKEY_CURRENT_USER, to_utf16(own + key)->c_str());
    RegDeleteTreeW(HKEY_CLASSES_ROOT, to_utf16(key)->c_str());
  }
}

TEST(WindowsProxy, IsTheFirstOfItsKindUnlessTheHostIsLeftOut) {
  const std::string all = "http=a:1;HTTPS=b:2 socks=c:3", out = "*.Example <local>;10.*";
  EXPECT_EQ(proxy_in(all, "", true, "far.org") + "|" + proxy_in(all, out, false, "far.org"), "http://b:2|http://a:1");
  EXPECT_EQ(proxy_in("ftp=d:4;socks=c:3", "", true, "far.org") + proxy_in("http://e:5;f:6", "", true, "far.org"),
            "socks4://c:3http://e:5");
  for (const char* const host : {"a.example", "nas", "10.0.0.1"}) EXPECT_EQ(proxy_in(all, out, true, host), "") << host;
  EXPECT_EQ(system_proxy(true, "127.0.0.1"), "");
}

void wait_until(const std::function<bool()>& done) {
  while (!done()) std::this_thread::yield();
}

TEST(WindowsProgram, TakesNamesWithoutQuotesEndsWithTheSessionAndUninstallLeavesNothing) {
  const TemporaryFolder folder;
  const ListingsService service;
  const std::unique_ptr<Files> files = system_files();
  const auto start = [&](const std::vector<std::string>& words) {
    return ChildProcess({.program = std::string(QUORVEL_PROGRAMS) + "/quorvel.exe",
                         .arguments = words,
                         .environment = user_at(folder / "data", service.base()),
                         .out = folder / "out"});
  };
  for (const char* const name : {"data", "a b"}) files->create_folder(folder / name);
  write_file(folder / "a b/harbour.lights.s01e02.mkv", "x");
  system_key_values(*files, application_title)->erase_all();
  const ChildProcess with_the_system = start({"/startup"});
  HWND window = nullptr;
  wait_until([&] { return (window = FindWindowW(nullptr, L"Quorvel 3.4")) != nullptr; });
  EXPECT_TRUE(start({"--version"}).status() == 0 && contents(folder / "out") == "quorvel 3.4.0\n");
  EXPECT_EQ(start({"/startup"}).status() + IsWindowVisible(window), 0);
  EXPECT_EQ(start({}).status(), 0);
  wait_until([&] { return IsWindowVisible(window); });
  SendMessageW(window, WM_MOUSEMOVE, 1, WM_LBUTTONDBLCLK);
  EXPECT_FALSE(IsWindowVisible(window));
  // Without quotes, as the file manager gives it.
  EXPECT_EQ(start({folder / "a", "b\\harbour.lights.s01e02.mkv"}).status(), 0);
  wait_until([&] { return files->exists(folder / "a b/The Harbour Lights - 1x02 - The Pilot Boat.mkv"); });

  const auto left = [&] {
    std::string text = system_key_values(*files, application_title)->read_string("").value_or("-");
    for (const std::string of : {"Directory", "SystemFileAssociations\\.mkv", "SystemFileAssociations\\video"}) {
      const auto verb = registry::read_string(HKEY_CLASSES_ROOT, of + "\\shell\\Quorvel\\command", "");
      text += verb.value_or("-").ends_with("quorvel.exe\" %1") ? "|verb" : "|" + verb.value_or("-");
    }
    return text + (files->exists(folder / "data/Quorvel") ? "|data" : "|-");
  };
  EXPECT_EQ(left(), "3.4|verb|verb|verb|data");
  // Asked in the middle of its pass, it says no and ends by itself.
  wait_until([&] { return SendMessageW(window, WM_QUERYENDSESSION, 0, 0) == TRUE || !IsWindow(window); });
  SendMessageW(window, WM_ENDSESSION, TRUE, 0);
  EXPECT_EQ(with_the_system.status(), 0);
  EXPECT_EQ(start({"/uninstall"}).status(), 0);
  EXPECT_EQ(left(), "-|-|-|verb|-");  // installations count on finding the one for videos
}

}  // namespace
}  // namespace quorvel::testing
