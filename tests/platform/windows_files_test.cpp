#include <gtest/gtest.h>

#include "child_process.h"
#include "file_tools.h"
#include "platform/windows/handle.h"
#include "platform/windows/registry.h"
#include "platform/windows/wide.h"
#include "temporary_folder.h"

namespace quorvel::testing {
namespace {

using Request = FileOperationRequest;

TEST(WindowsTexts, EveryNameSurvivesAndBytesThatAreNoTextNameNothing) {
  for (const std::wstring name : {L"a", L"caf\u00E9 \u65E5", L"\U0001F4FA", L"\xD800x", L"x\xDC41", L"\xDC41\xD800"}) {
    EXPECT_EQ(to_utf16(to_utf8(name)), name);
  }
  EXPECT_EQ(to_utf8(L"\xDC80"), "\xED\xB2\x80");  // not the byte that the core writes so
  for (const char* bytes : {"caf\xE9", "\xED\xA0", "\xC0\x80"}) EXPECT_FALSE(to_utf16(bytes)) << bytes;
  EXPECT_EQ(to_utf16_or_marks("caf\xE9"), L"caf?");
}

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
  EXPECT_TRUE(files->replace(a, "new"));
  EXPECT_TRUE(GetFileAttributesW(wide.c_str()) & FILE_ATTRIBUTE_HIDDEN);
  {
    const Handle held(CreateFileW(wide.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    EXPECT_FALSE(files->replace(a, "newer") || files->remove(a));
    EXPECT_EQ(files->read(a), "new");
  }
  EXPECT_EQ(everything_in(folder.path()).size(), 1u);
}

TEST_F(WindowsFiles, LongPathsWorkAndTheShellIsNotCalledForWhatCouldHitAnotherFile) {
  std::string deep = folder.path();
  while (deep.size() < 300) EXPECT_TRUE(files->create_folder(deep += "\\" + std::string(50, 'd')));
  const std::string file = deep + "\\x.mkv";
  EXPECT_TRUE(files->replace(file, "deep"));
  EXPECT_EQ(absolute_path(deep + "\\.\\x.mkv"), file);
  const std::unique_ptr<FileOperation> shell = system_file_operation({}, {});
  EXPECT_EQ(shell->perform({Request::Move, file, folder / "x.mkv", 0}), 0x79);
  for (const std::string& none :
       {folder / "*.mkv", folder / "?.mkv", std::string("a.mkv"), folder / "caf\xE9", std::string("C:\\")}) {
    EXPECT_EQ(shell->perform({Request::Copy, none, folder / "new", 0}), 0x7C) << none;
    EXPECT_EQ(shell->perform({Request::Copy, a, none, 0}), 0x7C) << none;
    EXPECT_EQ(shell->perform({Request::Delete, none, "", 0}), 0x7C) << none;
  }
  EXPECT_EQ(files->read(file).value_or("") + files->read(a).value_or(""), "deepA");
  EXPECT_TRUE(files->remove(file));
  for (; deep != folder.path(); deep.resize(deep.rfind('\\'))) RemoveDirectoryW(system_path(deep)->c_str());
}

TEST(WindowsSettings, AreReadAsOthersHaveWrittenThem) {
  const std::string name = "Quorvel test " + std::to_string(GetCurrentProcessId());
  const std::wstring key = *to_utf16("SOFTWARE\\" + name);
  const std::unique_ptr<Files> files = system_files();
  const std::unique_ptr<KeyValueStore> store = system_key_values(*files, name);
  const std::tuple<const wchar_t*, DWORD, std::wstring, std::optional<std::string>> rows[] = {
      {L"terminated", REG_SZ, {L"mp4\0", 4}, "mp4"},
      {L"inner", REG_SZ, {L"a\0b", 3}, "a"},
      {L"bare", REG_SZ, L"abc", "abc"},
      {L"expandable", REG_EXPAND_SZ, {L"%PATH%\0", 7}, {}},
      {L"short", REG_DWORD, L"a", {}}};
  for (const auto& [value, type, text, read] : rows) {
    RegSetKeyValueW(HKEY_CURRENT_USER, key.c_str(), value, type, text.data(), static_cast<DWORD>(text.size() * 2));
    EXPECT_EQ(store->read_string(to_utf8(value)), read);
    EXPECT_EQ(store->read_number(to_utf8(value)), std::nullopt);
  }
  store->write_string("types", "avi");
  store->write_number("context", 2);
  DWORD type = 0, size = 0;
  RegGetValueW(HKEY_CURRENT_USER, key.c_str(), L"types", RRF_RT_ANY, &type, nullptr, &size);
  EXPECT_EQ(type, DWORD{REG_SZ});
  RegGetValueW(HKEY_CURRENT_USER, key.c_str(), L"context", RRF_RT_ANY, &type, nullptr, &size);
  EXPECT_EQ(type * 10 + size, REG_DWORD * 10 + sizeof(DWORD));
  store->erase_all();
}

TEST(WindowsChannel, TheRecordOfOtherProgramsIsTakenAndForeignOnesDoNoHarm) {
  const std::string caption = "Quorvel test " + std::to_string(GetCurrentProcessId());
  const EventLoop events(caption);
  const HWND window = FindWindowW(nullptr, to_utf16(caption)->c_str());
  const auto channel = system_instance_channel(caption, caption);
  std::vector<std::string> taken;
  channel->receive([&](const std::string& text) { taken.push_back(text); });
  const auto deliver = [&](ULONG_PTR number, const void* bytes, std::size_t size) {
    COPYDATASTRUCT record{number, static_cast<DWORD>(size), const_cast<void*>(bytes)};
    return SendMessageW(window, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&record)) == TRUE;
  };
  constexpr ULONG_PTR own = 0x51560001;
  EXPECT_TRUE(deliver(3, "QV|UD|", 7) && deliver(3, "caf\xE9\0\0\0", 7) && deliver(own, "caf\xC3\xA9", 6));
  EXPECT_EQ(taken, (std::vector<std::string>{"QV|UD|", "café", "café"}));
  const std::string full(255, 'x'), nuls(256, '\0');
  const std::tuple<ULONG_PTR, const char*, std::size_t> foreign[] = {
      {0, "QV|UD|", 7}, {2, "QV|UD|", 7}, {own + 1, "QV|UD|", 7}, {3, full.data(), 255}, {3, nuls.data(), 256},
      {3, "", 0},       {3, nullptr, 7},  {own, "QV|UD|", 6},     {own, "a\0b", 4}};
  for (const auto& [number, bytes, size] : foreign) EXPECT_FALSE(deliver(number, bytes, size)) << number << " " << size;
  EXPECT_EQ(taken.size(), 3u);
}

TEST(ExplorerVerbs, AreWrittenAndRemovedWithTheirAsymmetries) {
  const std::string number = std::to_string(GetCurrentProcessId()), type = "QZ" + number, lower = "qz" + number;
  const std::string verb = "\\shell\\Quorvel\\command", text = "\"C:\\Q r\\quorvel.exe\" %1";
  const std::unique_ptr<Files> files = system_files();
  const std::unique_ptr<ContextMenu> verbs = system_context_menu(*files, "C:\\Q r\\quorvel.exe");
  const auto at = [](const std::string& key) { return registry::read_string(HKEY_CLASSES_ROOT, key, ""); };

  verbs->remove(type);  // no class, nothing to do
  verbs->install(type);
  EXPECT_EQ(at("." + type), lower + "file");
  EXPECT_EQ(at(lower + "file" + verb), text);
  EXPECT_EQ(at("SystemFileAssociations\\." + lower + verb), text);
  registry::write_string(HKEY_CLASSES_ROOT, lower + "file\\shell\\Quorvel\\ddeexec\\Topic", "", "old");
  verbs->remove(type);
  EXPECT_EQ(at("." + type), lower + "file");
  EXPECT_FALSE(at(lower + "file\\shell\\Quorvel") || at(lower + "file" + verb) ||
               at("SystemFileAssociations\\." + lower + verb));

  registry::write_string(HKEY_CLASSES_ROOT, "." + type, "", "");
  registry::write_string(HKEY_CLASSES_ROOT, "SystemFileAssociations\\." + lower + verb, "", "kept");
  verbs->remove(type);
  EXPECT_EQ(at("SystemFileAssociations\\." + lower + verb), "kept");

  verbs->install("DIR");
  EXPECT_EQ(at("Directory" + verb), text);
  EXPECT_EQ(at("SystemFileAssociations\\video" + verb), text);
  verbs->remove("DIR");
  EXPECT_FALSE(at("Directory" + verb) || at("Directory\\shell\\Quorvel"));
  EXPECT_EQ(at("SystemFileAssociations\\video" + verb), text);  // stays

  for (const std::string& key : {"." + type, lower + "file", "SystemFileAssociations\\." + lower,
                                 std::string("SystemFileAssociations\\video\\shell\\Quorvel")}) {
    RegDeleteTreeW(HKEY_CLASSES_ROOT, to_utf16(key)->c_str());
  }
}

}  // namespace
}  // namespace quorvel::testing
