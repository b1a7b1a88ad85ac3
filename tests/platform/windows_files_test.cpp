#include <gtest/gtest.h>

#include "file_tools.h"
#include "platform/disk_files.h"
#include "platform/paths.h"
#include "platform/windows/handle.h"
#include "platform/windows/shell_file_operation.h"
#include "platform/windows/wide.h"
#include "temporary_folder.h"

namespace quorvel::testing {
namespace {

using Request = FileOperationRequest;
using Texts = std::vector<std::string>;

struct WindowsFiles : ::testing::Test {
  TemporaryFolder folder;
  DiskFiles files;
  ShellFileOperation shell{false};
  const std::string a = folder / "a.mkv", b = folder / "Café 日本.mkv", sub = folder / "sub";

  WindowsFiles() { EXPECT_TRUE(files.create_folder(sub) && files.replace(a, "A")); }
  Texts names() const {
    Texts found;
    EXPECT_TRUE(files.list(folder.path(), [&](const FolderEntry& entry) { found.push_back(entry.name); }));
    return found;
  }
  int perform(int operation, const std::string& from, const std::string& to = "", std::uint16_t flags = 64) {
    return shell.perform({operation, from, to, flags});
  }
  /// What the test itself cannot take away by the system's classic calls.
  void remove_deep(std::string deep) {
    for (; deep != folder.path(); deep.resize(deep.rfind('\\'))) {
      EXPECT_TRUE(RemoveDirectoryW(system_path(deep)->c_str()));
    }
  }
};

TEST(WindowsTexts, EveryNameSurvivesAndBytesThatAreNoTextNameNothing) {
  for (const std::wstring name : {L"a", L"caf\u00E9 \u65E5", L"\U0001F4FA", L"\xD800x", L"x\xDC41", L"\xDC41\xD800"}) {
    EXPECT_EQ(to_utf16(to_utf8(name)), name);
  }
  EXPECT_EQ(to_utf8(L"\xDC80"), "\xED\xB2\x80");  // not the byte that the core writes so
  for (const char* bytes : {"caf\xE9", "\xED\xA0", "\xC0\x80"}) EXPECT_FALSE(to_utf16(bytes)) << bytes;
  EXPECT_EQ(to_utf16_or_marks("caf\xE9"), L"caf?");
}

TEST_F(WindowsFiles, AreFoundListedReadAndReplaced) {
  EXPECT_EQ(files.kind(a), Files::Kind::File);
  EXPECT_EQ(files.kind(sub), Files::Kind::Folder);
  EXPECT_EQ(files.kind("NUL"), Files::Kind::Other);
  for (const std::string& none : {b, std::string(), a + "x", folder / "caf\xE9"}) {
    EXPECT_EQ(files.kind(none), Files::Kind::Missing);
    EXPECT_FALSE(files.read(none) || files.stamp(none));
  }
  const auto before = files.stamp(a);
  EXPECT_TRUE(files.replace(b, std::string("B\0b", 3)) && files.replace(a, "AA"));
  EXPECT_EQ(files.read(b), std::string("B\0b", 3));
  EXPECT_NE(files.stamp(a), before);
  EXPECT_EQ(files.stamp(a)->size, 2u);
  EXPECT_LT(std::abs(files.stamp(a)->modified_ns / 1'000'000'000 - std::time(nullptr)), 3600);
  EXPECT_EQ(names().size(), 3u);
  EXPECT_FALSE(files.list(folder / "none", [](auto) {}) || files.list(folder / "s*", [](auto) {}));
  EXPECT_TRUE(files.remove(b) && files.remove(b));
  EXPECT_FALSE(files.remove(sub) || files.replace(sub, "x") || files.replace(folder / "none\\x", "x"));
  EXPECT_EQ(absolute_path(folder / "sub/.//../a.mkv"), a);
}

TEST_F(WindowsFiles, ProtectedAndOpenFilesStayAndNothingIsLeftBeside) {
  const std::wstring wide = *to_utf16(a);
  SetFileAttributesW(wide.c_str(), FILE_ATTRIBUTE_READONLY);
  EXPECT_FALSE(files.replace(a, "new"));
  SetFileAttributesW(wide.c_str(), FILE_ATTRIBUTE_HIDDEN);
  EXPECT_TRUE(files.replace(a, "new"));
  EXPECT_TRUE(GetFileAttributesW(wide.c_str()) & FILE_ATTRIBUTE_HIDDEN);
  {
    const Handle held(CreateFileW(wide.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    EXPECT_FALSE(files.replace(a, "newer"));
    EXPECT_FALSE(files.remove(a));
    EXPECT_EQ(files.read(a), "new");
  }
  EXPECT_EQ(names().size(), 2u);
}

TEST_F(WindowsFiles, LongPathsWorkAndTheShellLeavesThemAlone) {
  std::string deep = folder.path();
  while (deep.size() < 300) EXPECT_TRUE(files.create_folder(deep += "\\" + std::string(50, 'd')));
  const std::string file = deep + "\\x.mkv";
  EXPECT_TRUE(files.replace(file, "deep"));
  EXPECT_EQ(files.read(file), "deep");
  EXPECT_EQ(absolute_path(deep + "\\.\\x.mkv"), file);
  EXPECT_EQ(perform(Request::Move, file, folder / "x.mkv"), ShellFileOperation::path_too_deep);
  EXPECT_EQ(perform(Request::Copy, a, deep + "\\a.mkv"), ShellFileOperation::path_too_deep);
  EXPECT_EQ(files.read(file), "deep");
  EXPECT_EQ(files.read(a), "A");
  EXPECT_TRUE(files.remove(file));
  remove_deep(deep);
}

TEST_F(WindowsFiles, TheShellRenamesMovesCopiesAndTrashes) {
  EXPECT_EQ(perform(Request::Rename, a, b), 0);
  EXPECT_EQ(files.read(b), "A");
  const std::string moved = sub + "\\m.mkv", copied = sub + "\\c.mkv";
  EXPECT_EQ(perform(Request::Move, b, moved), 0);
  EXPECT_EQ(perform(Request::Copy, moved, copied), 0);
  EXPECT_FALSE(files.exists(b));
  EXPECT_EQ(files.read(moved), "A");
  EXPECT_EQ(files.read(copied), "A");
  EXPECT_EQ(perform(Request::Delete, copied, "", Request::AllowUndo | Request::NoConfirmation), 0);
  EXPECT_FALSE(files.exists(copied));
  const std::uint16_t silent = Request::Silent | Request::NoConfirmation | Request::SimpleProgress;
  EXPECT_EQ(perform(Request::Delete, sub, "", silent), 0);
  EXPECT_FALSE(files.exists(sub));
}

TEST_F(WindowsFiles, TheShellIsNotAskedForWhatCouldHitAnotherFile) {
  ASSERT_TRUE(files.replace(b, "B"));
  const auto before = everything_in(folder.path());
  const std::string nul(1, '\0');
  for (const int operation : {Request::Rename, Request::Move, Request::Copy}) {
    EXPECT_EQ(perform(operation, a, b), ShellFileOperation::name_taken);
    EXPECT_EQ(perform(operation, a, sub), ShellFileOperation::destination_is_folder);
    for (const std::string& none : {std::string(), nul, b + nul + a, folder / "*.mkv", folder / "?.mkv",
                                    std::string("a.mkv"), folder / "caf\xE9", std::string("C:\\")}) {
      EXPECT_EQ(perform(operation, none, folder / "new"), ShellFileOperation::invalid_path) << none;
      EXPECT_EQ(perform(operation, a, none), ShellFileOperation::invalid_path) << none;
      EXPECT_EQ(perform(Request::Delete, none), ShellFileOperation::invalid_path) << none;
    }
    EXPECT_NE(perform(operation, folder / "none.mkv", folder / "new"), 0);
  }
  EXPECT_NE(perform(99, a, folder / "new"), 0);
  EXPECT_EQ(everything_in(folder.path()), before);
}

}  // namespace
}  // namespace quorvel::testing
