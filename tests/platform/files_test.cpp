#include <gtest/gtest.h>

#include <cmath>
#include <ctime>
#include <random>
#include <thread>

#include "child_process.h"
#include "file_tools.h"
#include "system_facts.h"
#include "temporary_folder.h"

namespace quorvel::testing {
namespace {

using Kind = Files::Kind;
using Request = FileOperationRequest;
using State = std::map<std::string, std::string>;

struct FilesTest : ::testing::Test {
  const TemporaryFolder here, there{facts::other_device};
  const std::unique_ptr<Files> files = system_files();
  const std::unique_ptr<FileOperation> shell = system_file_operation({}, {});

  FilesTest() {
    for (const char* const name : {"a", "b"}) write_file(here / name, name);
    EXPECT_TRUE(files->create_folder(here / "folder"));
  }
  State state() const {
    State all = everything_in(here.path());
    all.merge(everything_in(there.path()));
    return all;
  }
  int perform(int operation, const std::string& from, const std::string& to = "",
              std::uint16_t flags = Request::AllowUndo) const {
    return shell->perform({operation, from, to, flags});
  }
};

TEST_F(FilesTest, AreLookedAtListedAndRead) {
  const std::string odd = here / facts::odd_names.front(), cut = here / "a" + std::string(1, '\0');
  EXPECT_TRUE(files->replace(odd, std::string("\0b", 2)));
  for (const auto& [path, kind, bytes] : {std::tuple(odd, Kind::File, std::string("\0b", 2)),
                                          {here / "a", Kind::File, "a"},
                                          {here / "folder", Kind::Folder, ""},
                                          {facts::device, Kind::Other, ""},
                                          {here / "gone", Kind::Missing, ""},
                                          {cut, Kind::Missing, ""},
                                          {cut + "b", Kind::Missing, ""},
                                          {std::string(), Kind::Missing, ""}}) {
    EXPECT_EQ(files->kind(path), kind) << path;
    EXPECT_EQ(files->read(path), kind == Kind::File ? std::optional(bytes) : std::nullopt) << path;
    EXPECT_EQ(files->stamp(path).has_value(), kind == Kind::File || kind == Kind::Folder || path == "/dev/null");
  }
  const FileStamp a = *files->stamp(here / "a"), b = *files->stamp(here / "b");
  EXPECT_EQ(a.size, 1u);
  EXPECT_LT(std::abs(a.modified_ns / 1'000'000'000 - std::time(nullptr)), 3600);
  EXPECT_TRUE(a == *files->stamp(here / "a") && a.same_file(a) && !a.same_file(b));
  State listed;
  const auto note = [&](const FolderEntry& entry) { listed[entry.name] = entry.is_folder ? "folder" : "file"; };
  EXPECT_TRUE(files->list(here.path(), note));
  EXPECT_EQ(listed, (State{{"a", "file"}, {"b", "file"}, {"folder", "folder"}, {facts::odd_names.front(), "file"}}));
  for (const std::string& none : {here / "a", here / "gone", here / "f*", cut}) EXPECT_FALSE(files->list(none, note));
  const std::string full = absolute_path(".");
  EXPECT_EQ(absolute_path(here / "folder/.//../a"), here / "a");
  EXPECT_EQ(absolute_path("a") + absolute_path(""), full + native::separator + "a");
}

TEST_F(FilesTest, AreReplacedWholeOrNotAtAll) {
  const auto before = files->stamp(here / "a");
  EXPECT_TRUE(files->replace(here / "a", "new") && files->replace(here / "new", std::string(3'000'000, 'n')));
  EXPECT_NE(files->stamp(here / "a"), before);
  EXPECT_TRUE(files->read(here / "new") == std::string(3'000'000, 'n'));
  const State state_before = state();
  for (const std::string& name : {std::string("folder"), std::string("gone/x"), std::string("a\0", 2)}) {
    EXPECT_FALSE(files->replace(here / name, "x")) << name;
  }
  EXPECT_FALSE(files->replace("", "x") || files->remove(here / "folder") || files->create_folder(here / "a") ||
               files->remove(here / std::string("a\0", 2)) || files->create_folder(here / std::string("n\0", 2)));
  EXPECT_EQ(state(), state_before);
  EXPECT_TRUE(files->remove(here / "a") && files->remove(here / "a") && !files->exists(here / "a"));
}

const SecondProcess replace_without_end("replace", [](const std::string& path) -> int {
  const std::unique_ptr<Files> files = system_files();
  for (char letter = 'a';; letter = letter == 'a' ? 'b' : 'a')
    files->replace(path, std::string(200'000 + letter, letter));
});

TEST_F(FilesTest, AKilledReplacementLeavesOneWholeVersion) {
  std::minstd_rand random(std::random_device{}());
  for (int round = 0; round < 10; ++round) {
    ChildProcess writer(replace_without_end.start(here / "file"));
    while (!files->exists(here / "file")) std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 20'000));  // any instant will do
    writer.kill();
    writer.status();
    const std::string left = files->read(here / "file").value_or("");
    ASSERT_FALSE(left.empty());
    ASSERT_TRUE(left == std::string(200'000 + left[0], left[0])) << left.size();
    ASSERT_TRUE(files->remove(here / "file"));
  }
}

TEST_F(FilesTest, OperationsKeepTheFileAsItIs) {
  const auto time = last_write_time(path_of(here / "a"));
  for (const std::string& name : facts::odd_names) {
    for (const TemporaryFolder* to : {&here, &there}) {
      const State before = state();
      EXPECT_EQ(perform(Request::Copy, here / "a", *to / name), 0) << name;
      EXPECT_EQ(files->read(here / "a").value_or("") + files->read(*to / name).value_or(""), "aa");
      EXPECT_EQ(perform(Request::Delete, *to / name, "", Request::Silent | Request::NoConfirmation), 0);
      EXPECT_EQ(perform(Request::Move, here / "a", *to / name), 0) << name;
      EXPECT_EQ(files->read(*to / name), "a");
      EXPECT_LT(std::chrono::abs(last_write_time(path_of(*to / name)) - time), std::chrono::microseconds(1));
      EXPECT_EQ(perform(Request::Move, *to / name, here / "a"), 0);
      EXPECT_EQ(state(), before);
    }
    EXPECT_EQ(perform(Request::Rename, here / "a", here / name) + perform(Request::Rename, here / name, here / "a"), 0);
  }
  write_file(here / "folder/x", "x");
  EXPECT_EQ(perform(Request::Delete, here / "folder", "", Request::Silent | Request::NoConfirmation), 0);
  EXPECT_EQ(state(), (State{{here / "a", "a"}, {here / "b", "b"}}));
}

TEST_F(FilesTest, OperationsThatFailChangeNothing) {
  const State before = state();
  const std::string nul(1, '\0'), long_name(260, 'x');
  const std::tuple<std::string, std::string, int> rows[] = {{here / "a", here / "b", facts::taken},
                                                            {here / "a", here / "folder", facts::taken_by_folder},
                                                            {here / "a", here / long_name, facts::too_long},
                                                            {here / "a", "", facts::no_path},
                                                            {"", here / "x", facts::no_path},
                                                            {here / ("a" + nul + "b"), here / "x", facts::no_path},
                                                            {here / "a", here / ("x" + nul), facts::no_path}};
  for (const int operation : {Request::Rename, Request::Move, Request::Copy}) {
    for (const auto& [from, to, code] : rows) EXPECT_EQ(perform(operation, from, to), code) << operation << from << to;
    EXPECT_NE(perform(operation, here / "gone", here / "x"), 0);
  }
  for (const std::string& none : {std::string(), here / ("a" + nul), here / ".", here / ".."}) {
    EXPECT_EQ(perform(Request::Delete, none, "", 0), facts::no_path) << none;
  }
  EXPECT_NE(perform(99, here / "a", here / "x"), 0);
  EXPECT_EQ(state(), before);
}

}  // namespace
}  // namespace quorvel::testing
