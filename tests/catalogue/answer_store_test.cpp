#include "catalogue/answer_store.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include "child_process.h"
#include "fake_ports.h"
#include "platform/disk_files.h"
#include "system_facts.h"
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
  const std::string work = here / "日 %41&#/", file = work + "quorvel.db";
  DiskFiles files;
  DryFiles dry;
  Lines log;

  Stores() { fs::create_directory(path_of(work)); }
  std::unique_ptr<AnswerStore> open() { return std::make_unique<AnswerStore>(files, log, work); }
};

void keep(AnswerStore& store, const std::string& request) {
  store.keep_answer(request, {request + std::string(50'000, '\0'), std::chrono::sys_seconds(std::chrono::seconds(9))});
}

bool holds(AnswerStore& store, const std::string& request) {
  const auto found = store.answer(request);
  return found && found->text == request + std::string(50'000, '\0') && found->fetched.time_since_epoch().count() == 9;
}

/// Keeps twenty answers of this name's, or without end.
const SecondProcess writer("store-writer", [](const std::string& given) {
  const std::string name = given.substr(0, given.find(' ')), work = given.substr(given.find(' ') + 1);
  DiskFiles files;
  Lines log;
  AnswerStore store(files, log, work);
  for (int i = 1; i <= 20 || name == "endless"; ++i) keep(store, name + std::to_string(i));
  return static_cast<int>(log.list.size());
});

TEST(AnswerStore, IsSharedByProcessesOfWhichOneIsKilled) {
  Stores stores;
  std::vector<ChildProcess> writers;
  for (const char* const name : {"a ", "b ", "c "}) writers.emplace_back(writer.start(name + stores.work));
  for (const ChildProcess& each : writers) EXPECT_EQ(each.status(), 0);
  const auto store = stores.open();
  const ChildProcess endless(writer.start("endless " + stores.work));
  while (!store->answer("endless50")) std::this_thread::yield();
  endless.kill();
  endless.status();
  for (int i = 1; i <= 50; ++i) EXPECT_TRUE(holds(*store, (i <= 20 ? "b" : "endless") + std::to_string(i))) << i;
  store->keep_choice("Ä", 5);
  store->keep_choice("Ä", 6);
  EXPECT_EQ(stores.open()->choice("Ä"), 6);
  stores.open()->forget_choice("Ä");
  EXPECT_EQ(store->choice("Ä"), std::nullopt);
  EXPECT_TRUE(stores.log.list.empty());
}

TEST(AnswerStore, ADamagedFileIsPutAsideAndBegunAnew) {
  for (const std::size_t from : {0, 100, 4096}) {
    Stores stores;
    keep(*stores.open(), "/a");
    std::string damaged = contents(stores.file);
    damaged.replace(from, damaged.size() - from, damaged.size() - from, '#');
    write_file(stores.file, damaged);
    EXPECT_FALSE(stores.open()->answer("/a")) << from;
    keep(*stores.open(), "/b");
    EXPECT_TRUE(holds(*stores.open(), "/b") && contents(stores.file + ".bak") == damaged) << from;
    EXPECT_EQ(stores.log.list.size(), 1U);
  }
}

TEST(AnswerStore, WhatMayNotBeWrittenIsReadAndStaysAsItIs) {
  for (const std::string why : {"dry", "dry beside another", "not writable", "newer", "link", "no folder"}) {
    if (why == "link" && facts::windows) continue;  // whose library cannot make any
    Stores stores;
    auto other = stores.open();
    other->keep_choice("a", 1);
    if (why != "dry beside another") other.reset();
    if (why == "not writable") fs::create_directory(path_of(stores.file + "-shm"));
    if (why == "no folder") fs::remove_all(path_of(stores.work));
    if (why == "newer") {
      sqlite3* file = nullptr;
      sqlite3_open(stores.file.c_str(), &file);
      sqlite3_exec(file, "PRAGMA user_version = 2", nullptr, nullptr, nullptr);
      sqlite3_close(file);
    } else if (why == "link") {
      fs::rename(path_of(stores.file), path_of(stores.here / "elsewhere"));
      fs::create_symlink(path_of(stores.here / "elsewhere"), path_of(stores.file));
    }
    const auto before = everything_in(stores.here.path());
    const bool is_dry = why.starts_with("dry");
    {
      AnswerStore store(is_dry ? stores.dry : stores.files, stores.log, stores.work);
      EXPECT_EQ(store.choice("a").value_or(0), why == "newer" || why == "no folder" ? 0 : 1) << why;
      store.keep_choice("a", 2);
      EXPECT_EQ(store.choice("a"), 2) << why;
    }
    auto after = everything_in(stores.here.path());
    if (why == "not writable") after.erase(stores.file + "-wal");              // empty
    if (other) after[stores.file + "-shm"] = before.at(stores.file + "-shm");  // who reads, within one process
    EXPECT_TRUE(after == before) << why;
    EXPECT_EQ(stores.log.list.size(), is_dry ? 0U : 1U) << why;
  }
}

}  // namespace
}  // namespace quorvel::testing
