#include "catalogue/answer_store.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include "child_process.h"
#include "fake_ports.h"
#include "platform/disk_files.h"
#include "temporary_folder.h"

namespace quorvel::testing {
namespace {

namespace fs = std::filesystem;

struct DryFiles : DiskFiles {
  bool are_real() const override { return false; }
};

/// A work folder and what stores in it say.
struct Stores {
  const TemporaryFolder here;
  const std::string work = here / "日 %41?#/", file = work + "quorvel.db";
  const std::unique_ptr<Files> files = system_files();
  Lines log;

  Stores() { fs::create_directory(path_of(work)); }
  std::unique_ptr<AnswerStore> open() { return std::make_unique<AnswerStore>(*files, log, work); }
  void damage(std::size_t at) const {
    std::string bytes = contents(file);
    write_file(file, bytes.replace(at, bytes.size() - at, bytes.size() - at, '#'));
  }
};

StoredAnswer answer_of(int number) {
  return {std::string(50'000, static_cast<char>(number)) + '\0',
          std::chrono::sys_seconds(std::chrono::seconds(number))};
}

bool holds(AnswerStore& store, const std::string& request, int number) {
  const std::optional<StoredAnswer> found = store.answer(request);
  return found && found->text == answer_of(number).text && found->fetched == answer_of(number).fetched;
}

/// Keeps answers 1, 2, 3 ... of its own: twenty, or without end in a folder "endless" of which it is told so.
const SecondProcess writer("store-writer", [](const std::string& given) {
  const std::size_t blank = given.find(' ');
  const std::string name = given.substr(0, blank), work = given.substr(blank + 1);
  const auto files = system_files();
  Lines log;
  AnswerStore store(*files, log, work);
  for (int i = 1; i <= 20 || name == "endless"; ++i) store.keep_answer(name + std::to_string(i), answer_of(i % 100));
  return static_cast<int>(log.list.size());
});

TEST(AnswerStore, SeveralStoresShareWhatIsKept) {
  Stores stores;
  const auto first = stores.open(), second = stores.open();
  EXPECT_FALSE(first->answer("/a") || second->choice("Ä"));
  first->keep_answer("/a", answer_of(1));
  second->keep_choice("Ä", 5);
  EXPECT_TRUE(holds(*second, "/a", 1));
  second->keep_answer("/a", answer_of(2));
  EXPECT_TRUE(holds(*first, "/a", 2));
  EXPECT_EQ(first->choice("Ä"), 5);
  first->keep_choice("Ä", 6);
  EXPECT_EQ(second->choice("Ä"), 6);
  first->forget_choice("Ä");
  EXPECT_EQ(stores.open()->choice("Ä"), std::nullopt);
  EXPECT_THAT(stores.log.list, ::testing::IsEmpty());
}

TEST(AnswerStore, ProcessesWriteAtOnceAndOneThatIsKilledLeavesWhatItHasKept) {
  Stores stores;
  std::vector<ChildProcess> writers;
  for (const char* const name : {"a", "b", "c"})
    writers.emplace_back(writer.start(std::string(name) + " " + stores.work));
  for (const ChildProcess& each : writers) EXPECT_EQ(each.status(), 0);
  const ChildProcess endless(writer.start("endless " + stores.work));
  while (!stores.open()->answer("endless50")) std::this_thread::yield();
  endless.kill();
  endless.status();
  const auto store = stores.open();
  for (int i = 1; i <= 50; ++i) EXPECT_TRUE(holds(*store, "endless" + std::to_string(i), i));
  for (int i = 1; i <= 20; ++i) EXPECT_TRUE(holds(*store, "b" + std::to_string(i), i));
  store->keep_answer("after", answer_of(7));
  EXPECT_TRUE(holds(*stores.open(), "after", 7));
  EXPECT_THAT(stores.log.list, ::testing::IsEmpty());
}

TEST(AnswerStore, ADamagedFileIsPutAsideAndBegunAnew) {
  for (const std::size_t damaged_from : {0, 100, 4096}) {
    Stores stores;
    stores.open()->keep_answer("/a", answer_of(1));
    stores.damage(damaged_from);
    const std::string damaged = contents(stores.file);
    const auto store = stores.open();
    EXPECT_FALSE(store->answer("/a")) << damaged_from;
    store->keep_answer("/b", answer_of(2));
    EXPECT_TRUE(holds(*stores.open(), "/b", 2));
    EXPECT_EQ(contents(stores.file + ".bak"), damaged);
    EXPECT_EQ(stores.log.list.size(), 1U) << ::testing::PrintToString(stores.log.list);
  }
}

TEST(AnswerStore, WhatMayNotBeWrittenIsReadAndStaysAsItIsWhileTheRunGoesOn) {
  const auto make_newer = [](const Stores& stores) {
    sqlite3* file = nullptr;
    EXPECT_EQ(sqlite3_open(stores.file.c_str(), &file), SQLITE_OK);
    sqlite3_exec(file, "PRAGMA user_version = 2", nullptr, nullptr, nullptr);
    sqlite3_close(file);
  };
  for (const std::string why : {"dry run", "dry run beside another", "not writable", "newer", "link", "no folder"}) {
    Stores stores;
    auto other = stores.open();
    other->keep_choice("a", 1);
    if (why != "dry run beside another") other.reset();
    if (why == "newer") make_newer(stores);
    if (why == "not writable") fs::create_directory(path_of(stores.file + "-shm"));
    if (why == "no folder") fs::remove_all(path_of(stores.work));
    if (why == "link") {
      fs::rename(path_of(stores.file), path_of(stores.here / "elsewhere"));
      fs::create_symlink(path_of(stores.here / "elsewhere"), path_of(stores.file));
    }
    const auto before = everything_in(stores.here.path());
    DryFiles dry;
    const bool is_dry = why.starts_with("dry");
    {
      AnswerStore store(is_dry ? dry : *stores.files, stores.log, stores.work);
      EXPECT_EQ(store.choice("a"), why == "newer" || why == "no folder" ? std::nullopt : std::optional(1)) << why;
      store.keep_choice("a", 2);
      EXPECT_EQ(store.choice("a"), 2) << why;
    }
    auto after = everything_in(stores.here.path());
    if (why == "not writable") after.erase(stores.file + "-wal");              // empty
    if (other) after[stores.file + "-shm"] = before.at(stores.file + "-shm");  // who reads, within one process
    EXPECT_TRUE(after == before) << why;
    EXPECT_EQ(stores.log.list.size(), is_dry ? 0U : 1U) << why << ::testing::PrintToString(stores.log.list);
  }
}

}  // namespace
}  // namespace quorvel::testing
