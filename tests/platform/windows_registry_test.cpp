#include <gtest/gtest.h>

#include "platform/windows/explorer_verbs.h"
#include "platform/windows/registry.h"
#include "platform/windows/registry_store.h"
#include "platform/windows/wide.h"
#include "text/failure.h"

namespace quorvel::testing {
namespace {

std::string unique_name(const std::string& start) {
  return start + std::to_string(GetCurrentProcessId());
}

struct WindowsSettings : ::testing::Test {
  const std::string key = "SOFTWARE\\" + unique_name("Quorvel test ");
  RegistryStore store{key};
  ~WindowsSettings() override { RegDeleteTreeW(HKEY_CURRENT_USER, to_utf16(key)->c_str()); }

  /// The value's type and size as the system has them.
  std::pair<DWORD, DWORD> stored(const wchar_t* name) const {
    DWORD type = 0, size = 0;
    RegGetValueW(HKEY_CURRENT_USER, to_utf16(key)->c_str(), name, RRF_RT_ANY | RRF_NOEXPAND, &type, nullptr, &size);
    return {type, size};
  }
  void put(const wchar_t* name, DWORD type, const std::wstring& text) const {
    RegSetKeyValueW(HKEY_CURRENT_USER, to_utf16(key)->c_str(), name, type, text.data(),
                    static_cast<DWORD>(text.size() * 2));
  }
};

TEST_F(WindowsSettings, AreStringsAndNumbersOfTheUsersKey) {
  EXPECT_FALSE(store.read_string("") || store.read_number("context"));
  store.erase_all();  // nothing there is no failure
  store.write_string("", "3.4");
  store.write_string("types", "avi;é日");
  store.write_string("empty", "");
  store.write_number("context", 2);
  store.write_number("confirm", 0xFFFFFFFE);
  EXPECT_EQ(store.read_string(""), "3.4");
  EXPECT_EQ(store.read_string("types"), "avi;é日");
  EXPECT_EQ(store.read_string("empty"), "");
  EXPECT_EQ(store.read_number("context"), 2u);
  EXPECT_EQ(store.read_number("confirm"), 0xFFFFFFFEu);
  EXPECT_FALSE(store.read_string("context") || store.read_number("types"));
  EXPECT_EQ(stored(L"context"), (std::pair<DWORD, DWORD>(REG_DWORD, 4)));
  EXPECT_EQ(stored(L"types").first, DWORD{REG_SZ});
  store.erase_all();
  EXPECT_FALSE(store.read_string("types"));
}

TEST_F(WindowsSettings, ReadWhatOthersHaveWritten) {
  put(L"terminated", REG_SZ, std::wstring(L"mp4\0", 4));
  put(L"inner", REG_SZ, std::wstring(L"a\0b", 3));
  put(L"bare", REG_SZ, L"abc");
  put(L"expandable", REG_EXPAND_SZ, std::wstring(L"%PATH%\0", 7));
  put(L"short", REG_DWORD, L"a");
  EXPECT_EQ(store.read_string("terminated"), "mp4");
  EXPECT_EQ(store.read_string("inner"), "a");
  EXPECT_EQ(store.read_string("bare"), "abc");
  EXPECT_FALSE(store.read_string("expandable") || store.read_number("short"));
}

TEST(ExplorerVerbs, AreWrittenAndRemovedWithTheirAsymmetries) {
  const std::string type = unique_name("QZ"), lower = unique_name("qz");  // no type that anything else uses
  const std::string verb = "\\shell\\Quorvel\\command", text = "\"C:\\Q r\\quorvel.exe\" %1";
  ExplorerVerbs verbs("C:\\Q r\\quorvel.exe");
  const auto at = [](const std::string& key) { return registry::read_string(HKEY_CLASSES_ROOT, key, ""); };

  verbs.remove(type);  // no class, nothing to do
  verbs.install(type);
  EXPECT_EQ(at("." + type), lower + "file");
  EXPECT_EQ(at(lower + "file" + verb), text);
  EXPECT_EQ(at("SystemFileAssociations\\." + lower + verb), text);
  registry::write_string(HKEY_CLASSES_ROOT, lower + "file\\shell\\Quorvel\\ddeexec\\Topic", "", "old");
  verbs.remove(type);
  EXPECT_EQ(at("." + type), lower + "file");
  EXPECT_FALSE(at(lower + "file\\shell\\Quorvel") || at(lower + "file" + verb));
  EXPECT_FALSE(at("SystemFileAssociations\\." + lower + verb));

  registry::write_string(HKEY_CLASSES_ROOT, "." + type, "", "");
  registry::write_string(HKEY_CLASSES_ROOT, "SystemFileAssociations\\." + lower + verb, "", "kept");
  verbs.remove(type);
  EXPECT_EQ(at("SystemFileAssociations\\." + lower + verb), "kept");

  verbs.install("DIR");
  EXPECT_EQ(at("Directory" + verb), text);
  EXPECT_EQ(at("SystemFileAssociations\\video" + verb), text);
  verbs.remove("DIR");
  EXPECT_FALSE(at("Directory" + verb) || at("Directory\\shell\\Quorvel"));
  EXPECT_EQ(at("SystemFileAssociations\\video" + verb), text);  // stays

  for (const std::string& key : {"." + type, lower + "file", "SystemFileAssociations\\." + lower,
                                 std::string("SystemFileAssociations\\video\\shell\\Quorvel")}) {
    RegDeleteTreeW(HKEY_CLASSES_ROOT, to_utf16(key)->c_str());
  }
}

}  // namespace
}  // namespace quorvel::testing
