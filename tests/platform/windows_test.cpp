#include <windows.h>

#include <gtest/gtest.h>

#include <thread>

#include "child_process.h"
#include "file_tools.h"
#include "listings_service.h"
#include "platform/windows/handle.h"
#include "platform/windows/proxy.h"
#include "platform/windows/registry.h"
#include "platform/windows/wide.h"
#include "temporary_folder.h"

namespace quorvel::testing {
namespace {

using Request = FileOperationRequest;

struct WindowsFiles : ::testing::Test {
  const TemporaryFolder folder;
  const std::unique_ptr<Files> files = system_files();
  const std::string a = folder / "a.mkv";

  WindowsFiles() { write_file(a, "A"); }
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

TEST_F(WindowsFiles, LongPathsWorkAndTheShellIsNotCalledForWhatCouldHitAnotherFile) {
  std::string deep = folder.path();
  while (deep.size() < 300) EXPECT_TRUE(files->create_folder(deep += "\\" + std::string(50, 'd')));
  const std::string file = deep + "\\x.mkv";
  EXPECT_TRUE(files->replace(file, "deep"));
  EXPECT_EQ(absolute_path(deep + "\\.\\x.mkv"), file);
  const auto perform = [](int operation, const std::string& from, const std::string& to) {
    return system_file_operation({}, {})->perform({operation, from, to, 0});
  };
  EXPECT_EQ(perform(Request::Move, file, folder / "x.mkv"), 0x79);
  for (const std::string& none : {folder / "*.mkv", folder / "?.mkv", std::string("a.mkv"), std::string("C:\\")}) {
    EXPECT_EQ(perform(Request::Copy, none, folder / "new"), 0x7C) << none;
    EXPECT_EQ(perform(Request::Copy, a, none), 0x7C) << none;
    EXPECT_EQ(perform(Request::Delete, none, ""), 0x7C) << none;
  }
  EXPECT_EQ(files->read(file).value_or("") + files->read(a).value_or(""), "deepA");
  EXPECT_TRUE(files->remove(file));
  for (; deep != folder.path(); deep.resize(deep.rfind('\\'))) RemoveDirectoryW(system_path(deep)->c_str());
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
