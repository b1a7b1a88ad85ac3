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

  FilesTest() {
    for (const char* const name : {"a", "b"}) write_file(here / name, name);
    EXPECT_TRUE(files->create_folder(here / "folder"));
  }
  State state() const {
    State all = everything_in(here.path());
    all.merge(everything_in(there.path()));
    return all;
  }
  static int perform(int operation, const std::string& from, const std::string& to = "") {
    const std::uint16_t for_good = Request::Silent | Request::NoConfirmation;
    const auto flags = operation == Request::Delete ? for_good : std::uint16_t{Request::AllowUndo};
    return system_file_operation({}, {})->perform({operation, from, to, flags, to + ".new"});
  }
};

TEST_F(FilesTest, AreLookedAtListedAndRead) {
  const std::string &odd = facts::odd_names.front(), cut = here / "a" + std::string(1, '\0');
  EXPECT_TRUE(files->replace(here / odd, std::string("\0b", 2)));
  for (const auto& [path, kind, bytes] : {std::tuple(here / odd, Kind::File, std::string("\0b", 2)),
                                          {here / "folder", Kind::Folder, ""},
                                          {facts::device, Kind::Other, ""},
                                          {here / "gone", Kind::Missing, ""},
                                          {cut, Kind::Missing, ""}}) {
    EXPECT_EQ(files->kind(path), kind) << path;
    EXPECT_EQ(files->read(path), kind == Kind::File ? std::optional(bytes) : std::nullopt) << path;
  }
  const FileStamp a = *files->stamp(here / "a"), b = *files->stamp(here / "b");
  EXPECT_TRUE(a.size == 1 && a == *files->stamp(here / "a") && !a.same_file(b));
  EXPECT_LT(std::abs(a.modified_ns / 1'000'000'000 - std::time(nullptr)), 3600);
  EXPECT_FALSE(files->stamp(cut) || files->stamp(here / "gone"));
  State listed;
  const auto note = [&](const FolderEntry& entry) { listed[entry.name] = entry.is_folder ? "folder" : "file"; };
  EXPECT_TRUE(files->list(here.path(), note));
  EXPECT_EQ(listed, (State{{"a", "file"}, {"b", "file"}, {"folder", "folder"}, {odd, "file"}}));
  for (const std::string& none : {here / "a", here / "f*", cut}) EXPECT_FALSE(files->list(none, note));
  {
    std::ofstream writer(path_of(here / "a"), std::ios::app);
    EXPECT_TRUE(files->is_being_written(here / "a"));
  }
  EXPECT_FALSE(files->is_being_written(here / "a") || files->is_being_written(here / "gone"));
  EXPECT_EQ(absolute_path(here / "folder/.//../a"), here / "a");
  EXPECT_EQ(absolute_path("a") + absolute_path(""), absolute_path(".") + native::separator + "a");
}

TEST_F(FilesTest, AreReplacedWholeOrNotAtAll) {
  const FileStamp old = *files->stamp(here / "a");
  const std::string big(3'000'000, 'n');
  EXPECT_TRUE(files->replace(here / "a", "new") && files->replace(here / "new", big));
  EXPECT_NE(files->stamp(here / "a"), old);
  EXPECT_TRUE(files->read(here / "new") == big);
  const State before = state();
  for (const std::string& none : {here / "folder", here / "gone/x", here / "a" + std::string(1, '\0'), std::string()}) {
    EXPECT_FALSE(files->replace(none, "x") || files->create_folder(none)) << none;
  }
  EXPECT_FALSE(files->remove(here / "folder") || files->remove(here / "a" + std::string(1, '\0')));
  EXPECT_TRUE(state() == before);
  EXPECT_TRUE(files->remove(here / "a") && files->remove(here / "a") && !files->exists(here / "a"));
}

const SecondProcess replace_without_end("replace", [](const std::string& path) -> int {
  for (char letter = 'a';; letter = letter == 'a' ? 'b' : 'a')
    system_files()->replace(path, std::string(200'000 + letter, letter));
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
    ASSERT_TRUE(!left.empty() && left == std::string(200'000 + left[0], left[0])) << left.size();
    ASSERT_TRUE(files->remove(here / "file"));
  }
}

TEST_F(FilesTest, OperationsKeepTheFileAsItIs) {
  const auto time = last_write_time(path_of(here / "a"));
  const State before = state();
  for (const std::string& name : facts::odd_names) {
    for (const int operation : {Request::Copy, Request::Move, Request::Rename}) {
      const std::string to = (operation == Request::Rename ? here : there) / name;
      EXPECT_EQ(perform(operation, here / "a", to), 0) << operation << name;
      EXPECT_EQ(files->exists(here / "a"), operation == Request::Copy);
      EXPECT_EQ(files->read(to), "a");
      EXPECT_LT(std::chrono::abs(last_write_time(path_of(to)) - time), std::chrono::microseconds(1));
      EXPECT_EQ(operation == Request::Copy ? perform(Request::Delete, to) : perform(operation, to, here / "a"), 0);
      EXPECT_EQ(state(), before);
    }
  }
  write_file(here / "folder/x", "x");
  EXPECT_EQ(perform(Request::Delete, here / "folder"), 0);
  EXPECT_EQ(state(), (State{{here / "a", "a"}, {here / "b", "b"}}));
}

TEST_F(FilesTest, OperationsThatFailChangeNothing) {
  const State before = state();
  const std::string a = here / "a", x = here / "x", nul(1, '\0');
  const std::tuple<std::string, std::string, int> rows[] = {
      {a, here / "b", facts::taken}, {a, here / "folder", facts::taken_by_folder},
      {a, "", facts::no_path},       {a, here / std::string(260, 'x'), facts::too_long},
      {a + nul, x, facts::no_path},  {a, x + nul, facts::no_path}};
  for (const int operation : {Request::Rename, Request::Move, Request::Copy}) {
    for (const auto& [from, to, code] : rows) EXPECT_EQ(perform(operation, from, to), code) << operation << from << to;
    EXPECT_NE(perform(operation, here / "gone", x), 0);
  }
  for (const std::string& none : {std::string(), a + nul, here / ".", here / ".."}) {
    EXPECT_EQ(perform(Request::Delete, none), facts::no_path) << none;
  }
  EXPECT_NE(perform(99, a, x), 0);
  EXPECT_EQ(state(), before);
}

}  // namespace
}  // namespace quorvel::testing
