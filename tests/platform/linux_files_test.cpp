#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

#include "child_process.h"
#include "file_tools.h"
#include "platform/console.h"
#include "platform/linux/exclusive_rename.h"
#include "support/linux/unprivileged.h"
#include "temporary_folder.h"

namespace quorvel::testing {
namespace {

namespace fs = std::filesystem;
using Request = FileOperationRequest;

/// No file grows beyond a size, as on a full disk.
struct FullDisk {
  rlimit old{};
  explicit FullDisk(rlim_t bytes) {
    (void)std::signal(SIGXFSZ, SIG_IGN);
    getrlimit(RLIMIT_FSIZE, &old);
    const rlimit low{bytes, old.rlim_max};
    setrlimit(RLIMIT_FSIZE, &low);
  }
  ~FullDisk() { setrlimit(RLIMIT_FSIZE, &old); }
};

int perform(int operation, const std::string& from, const std::string& to, CopyProgress progress = {}) {
  return system_file_operation(std::move(progress), {})
      ->perform({operation, from, to, Request::AllowUndo, to + ".new"});
}

/// Two folders on two devices, each with files, links, a pipe and a write-protected folder.
struct LinuxFiles : ::testing::Test {
  const Unprivileged user;
  const TemporaryFolder here, there{"/dev/shm"};
  const std::unique_ptr<Files> files = system_files();

  LinuxFiles() {
    for (const TemporaryFolder* in : {&here, &there}) {
      fs::create_directory(*in / "locked");
      for (const char* const name : {"a", "b", "locked/a"}) write_file(*in / name, name);
      for (const auto& [target, link] :
           {std::pair("a", "link"), {"nowhere", "dangling"}, {"circle", "circle"}, {"../a", "locked/link"}})
        fs::create_symlink(target, *in / link);
      mkfifo((*in / "pipe").c_str(), 0600);
      fs::permissions(*in / "locked", fs::perms(0555));
    }
  }
  std::map<std::string, std::string> state() const {
    auto all = everything_in(here.path());
    all.merge(everything_in(there.path()));
    return all;
  }
};

TEST_F(LinuxFiles, ReplacedFilesKeepTheirPermissionsOrStayAsTheyAre) {
  fs::permissions(here / "a", fs::perms(0640));
  fs::permissions(here / "b", fs::perms(0444));
  EXPECT_TRUE(files->replace(here / "a", "new") && contents(here / "a") == "new");
  EXPECT_EQ(fs::status(here / "a").permissions(), fs::perms(0640));
  EXPECT_FALSE(files->read(here / "pipe"));
  const auto before = state();
  const FullDisk full(1000);
  for (const char* const name : {"b", "locked/a", "locked/new", "link", "dangling", "circle", "a/", "pipe"}) {
    EXPECT_FALSE(files->replace(here / name, "x")) << name;
  }
  EXPECT_FALSE(files->replace(here / "a", std::string(2000, 'x')));
  EXPECT_EQ(state(), before);
}

TEST_F(LinuxFiles, NoWayOfRenamingOverwrites) {
  using namespace exclusive_rename;
  const std::tuple<const char*, const char*, int> steps[] = {
      {"a", "b", EEXIST}, {"a", "dangling", EEXIST}, {"a", "locked", EEXIST}, {"locked/a", "x", EACCES},
      {"a", "x", 0},      {"a", "y", ENOENT},        {"dangling", "a", 0},    {"a", "dangling", 0},
      {"x", "a", 0}};
  const auto before = state();
  for (const auto way : {by_flag, by_link, by_placeholder, exclusive_rename::rename}) {
    for (const auto& [from, to, error] : steps) EXPECT_EQ(way(here / from, here / to), error) << from << " " << to;
    EXPECT_EQ(state(), before);
  }
}

TEST_F(LinuxFiles, OperationsTakeFilesAndLinksFromWhereTheUserMay) {
  const std::tuple<const char*, const char*, int> refused[] = {{"a", "dangling", EEXIST}, {"a", "gone/x", ENOENT},
                                                               {"a", "b/x", ENOTDIR},     {"a", "locked/x", EACCES},
                                                               {"locked", "x", EISDIR},   {"pipe", "x", EINVAL}};
  const auto before = state();
  for (const auto& [from, name, error] : refused) {
    for (const TemporaryFolder* to : {&here, &there}) {
      EXPECT_EQ(perform(Request::Move, here / from, *to / name), error) << from << " " << name;
      EXPECT_EQ(perform(Request::Copy, here / from, *to / name), error) << from << " " << name;
    }
    EXPECT_EQ(perform(Request::Rename, here / from, here / name), error);
  }
  for (const char* const each : {"locked/a", "locked/link"}) {
    EXPECT_EQ(perform(Request::Move, here / each, there / "x"), EACCES) << each;
  }
  EXPECT_EQ(state(), before);

  fs::create_symlink(here / "a", here / "absolute");
  fs::create_directory(here / "folder");
  for (const auto& [link, folder] : {std::pair("link", here / "folder"), {"absolute", there.path()}}) {
    const std::string moved = folder + "/moved", copy = folder + "/copy";
    const fs::path target = fs::read_symlink(here / link);
    EXPECT_EQ(perform(Request::Rename, here / link, here / "renamed"), 0);
    EXPECT_EQ(fs::read_symlink(here / "renamed"), target);
    EXPECT_EQ(perform(Request::Copy, here / "renamed", copy), 0);
    EXPECT_EQ(perform(Request::Move, here / "renamed", moved), 0);
    EXPECT_TRUE(fs::is_symlink(moved) && !fs::is_symlink(copy) && !fs::is_symlink(here / "renamed"));
    EXPECT_EQ(contents(moved) + contents(copy), "aa");
  }
  fs::create_directory_symlink(there.path(), here / "to there");
  EXPECT_EQ(system_file_operation({}, {})->perform({Request::Delete, here / "to there/", "", 0}), 0);
  EXPECT_TRUE(!fs::is_symlink(here / "to there") && contents(there / "a") == "a");
}

TEST_F(LinuxFiles, AnInterruptedCopyLeavesNothingBehind) {
  if (files->stamp(here.path())->device == files->stamp(there.path())->device) GTEST_SKIP() << "only one device here";
  const std::string big = there / "big";
  write_file(big, std::string(8'000'000, 'A'));
  const auto before = state();
  for (const int operation : {Request::Move, Request::Copy}) {
    const auto attempt = [&](const CopyProgress& progress) { return perform(operation, big, here / "x", progress); };
    std::uint64_t reached = 0;
    EXPECT_EQ(attempt([&](auto done, auto total) { return (reached = done) == 0 || total != 8'000'000; }), ECANCELED);
    EXPECT_TRUE(reached > 0 && reached < 8'000'000) << reached;
    EXPECT_THROW(attempt([](auto, auto) -> bool { throw std::runtime_error("no"); }), std::runtime_error);
    EXPECT_EQ((FullDisk(1'000'000), attempt({})), EFBIG);
    {
      const std::ofstream writer(big, std::ios::app);
      EXPECT_EQ(attempt({}), native::being_written_code);
    }
    EXPECT_EQ(attempt([&](auto, auto) { return std::ofstream(big, std::ios::in) << 'B', true; }), EBUSY);
    std::ofstream(big, std::ios::in) << 'A';
    EXPECT_TRUE(state() == before);
  }
  const auto spoil = [&](auto, auto) { return std::ofstream(here / "x.new", std::ios::in) << 'B', true; };
  const std::uint16_t flags = Request::AllowUndo | Request::Verify;
  EXPECT_EQ(system_file_operation(spoil, {})->perform({Request::Move, big, here / "x", flags, here / "x.new"}),
            native::copy_differs_code);
  EXPECT_TRUE(state() == before);
  EXPECT_EQ(system_file_operation({}, {})->perform({Request::Move, big, here / "x", flags, here / "x.new"}), 0);
}

const SecondProcess without_streams("streams", [](const std::string&) {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO}) close(stream);
  console::open_missing_streams();
  return open("/dev/null", O_RDONLY) > STDERR_FILENO ? 0 : 1;
});

TEST_F(LinuxFiles, NoFileBecomesAStandardStream) {
  EXPECT_EQ(ChildProcess(without_streams.start("")).status(), 0);
}

/// In a process of its own, for GIO looks for the home folder only once.
const SecondProcess use_trash("trash", [](const std::string& there) {
  const std::string home = fs::current_path() / "";
  int asked = 0, row = 0;
  const auto shell = system_file_operation({}, [&](const std::string&) { return ++asked > 1; });
  for (const auto& [operation, from, to, code] :
       {std::tuple(Request::Delete, home + "a\xff", std::string(), 0),
        {Request::Delete, there + "c", "", native::no_trash_code},
        {Request::Move, home + "a", home + "b", EEXIST},    // the user says no
        {Request::Rename, home + "a", home + "b", EEXIST},  // never asked
        {Request::Copy, home + "a", home + "a", EEXIST},    // the file itself
        {Request::Move, home + "a", there + "c", EEXIST},   // no trash there: not asked
        {Request::Move, home + "a", home + "b", 0},
        {Request::Copy, there + "c", home + "c", 0}}) {
    ++row;
    if (shell->perform({operation, from, to, Request::AllowUndo, to + ".new"}) != code) return row;
  }
  const auto silent = system_file_operation({}, {});
  for (const int operation : {Request::HardLink, Request::SymbolicLink, Request::Move}) {
    const auto perform = [&](std::uint16_t flags) {
      return silent->perform({operation, home + "b", home + "d", flags, home + "d.new"});
    };
    if (perform(Request::AllowUndo) != EEXIST || perform(Request::AllowUndo | Request::Replace) != 0) return 90;
    if (operation != Request::Move && silent->perform({Request::Delete, home + "d", ""}) != 0) return 91;
    if (operation != Request::Move) std::ofstream(home + "d") << "given up";
  }
  return asked == 3 ? 0 : 99;
});

TEST_F(LinuxFiles, WhatIsDeletedOrGivenUpByTheUserGoesToTheTrash) {
  for (const char* const name : {"a\xff", "c"}) write_file(here / name, name);
  write_file(here / "d", "given up");
  write_file(there / "c", "other");
  Start start = use_trash.start(there / "");
  start.folder = here.path();
  start.environment = {{"HOME", here.path()}, {"XDG_DATA_HOME", here.path()}};
  EXPECT_EQ(ChildProcess(start).status(), 0);
  EXPECT_EQ(contents(here / "d") + contents(here / "c") + contents(there / "c"), "aotherother");
  for (const std::string name : {"a\xff", "b", "c"}) EXPECT_EQ(contents(here / ("Trash/files/" + name)), name);
  EXPECT_FALSE(files->exists(here / "a\xff") || files->exists(here / "a"));
}

}  // namespace
}  // namespace quorvel::testing
