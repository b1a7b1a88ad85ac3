#include <gtest/gtest.h>

#include "naming/file_names.h"
#include "session_fixture.h"
#include "shell/preferences.h"
#include "shell/watching.h"
#include "watch/watcher.h"

namespace quorvel::testing {
namespace {

using namespace std::chrono_literals;
using Names = std::vector<std::string>;

struct FakeNotices : FolderWatch {
  Changes changes;
  std::optional<std::string> blind;
  std::set<std::string> folders;
  std::optional<std::string> watch(const std::string& folder) override { return folders.insert(folder), blind; }
  void forget_others() override {}
  Changes take() override { return std::exchange(changes, {}); }
  void wait(std::chrono::milliseconds) override {}
};

struct WatcherTest : ::testing::Test, TestPorts {
  Settings settings;
  FakeNotices notices;
  Lines log;
  Watcher watcher{{settings, *files, clock, notices, log}, {folder / "in", folder / "later"}};

  std::string path(const std::string& name) const { return with_native_separators(folder / name); }
  /// What is ready when that much time has gone by, with every look around that is due until then.
  Names after(std::chrono::milliseconds time) {
    Names names;
    for (const auto until = clock.now + time;;) {
      for (const ReadyFile& each : watcher.ready()) {
        names.push_back(each.path.substr(folder.path().size() + 1));
        std::ranges::replace(names.back(), '\\', '/');
      }
      const auto step = std::min<std::chrono::steady_clock::duration>(until - clock.now, watcher.pause());
      if (step <= step.zero()) return names;
      clock.now += step;
    }
  }
  /// The same, when nobody looks around meanwhile.
  Names at_once_after(std::chrono::milliseconds time) {
    clock.now += time;
    return after(std::chrono::milliseconds(0));
  }
  void ended(const std::string& name, QueueState state, QueueState at = {}, bool no_answer = false) {
    QueueItem item;
    item.path = path(name);
    item.state = state;
    item.failed_at = at;
    item.no_answer = no_answer;
    watcher.ended(item);
  }
  void notice(const std::string& name) { notices.changes.paths.push_back(path(name)); }
};

TEST_F(WatcherTest, AFileIsReadyOnceItIsWholeAndHasStayedAsItIs) {
  write("in/b 10.mkv", "there at the start");
  write("in/b 9.mkv", "there at the start");
  for (const char* const none :
       {"in/notes.txt", "in/a sample.mkv", "in/.c.mkv", "in/.Trash-1000/d.mkv", "in/_UNPACK_x/e.mkv", "in/empty.mkv"}) {
    write(none, none == std::string("in/empty.mkv") ? "" : "x");
  }
  for (const char* const ending : {".part", ".aria2", ".!qB"}) {
    write(std::string("in/f") + ending + ".mkv", "x");
    write(std::string("in/f") + ending + ".mkv" + ending, "x");
  }
  EXPECT_EQ(after(29s), Names());
  write("in/b 10.mkv", "there at the start, and growing");
  EXPECT_EQ(after(1s), (Names{"in/b 9.mkv"}));
  {
    std::ofstream writer(path_of(folder / "in/b 10.mkv"), std::ios::app);
    EXPECT_EQ(after(10min), Names()) << "it is still open";
  }
  files->remove(folder / "in/f.aria2.mkv.aria2");
  EXPECT_EQ(after(1min), (Names{"in/b 10.mkv", "in/f.aria2.mkv"}));
  files->create_folder(folder / "later");
  EXPECT_EQ(at_once_after(24h), Names()) << "each is told once";
  write("in/gone.mkv", "x"), notice("in/gone.mkv");
  EXPECT_EQ(after(1s), Names());
  const std::size_t known = watcher.known();
  files->remove(folder / "in/gone.mkv");
  EXPECT_TRUE(after(30s).empty() && watcher.known() == known - 1);
  EXPECT_EQ(notices.folders, (std::set{with_separator(folder / "in"), with_separator(folder / "later")}));
}

TEST_F(WatcherTest, NoticesBringFilesEarlyAndALookAroundTheRest) {
  EXPECT_EQ(after(1s), Names());
  write("in/new/a.mkv", "x");
  notice("in/new");
  write("in/without notice.mkv", "x");
  EXPECT_EQ(after(30s), (Names{"in/new/a.mkv"}));
  EXPECT_EQ(after(60s), (Names{"in/without notice.mkv"}));
  write("in/lost.mkv", "x");
  notices.changes.are_all = false;
  EXPECT_EQ(after(30s), (Names{"in/lost.mkv"}));

  write("later/b.mkv", "x");
  EXPECT_EQ(after(45s), (Names{"later/b.mkv"})) << "a folder that is missing is looked for more often";
  notices.blind = "reasons";
  EXPECT_EQ(after(60s), Names());
  write("in/unseen.mkv", "x");
  EXPECT_EQ(after(40s), (Names{"in/unseen.mkv"}));
  const std::string in = "The folder " + with_separator(folder / "in"),
                    later = "The folder " + with_separator(folder / "later");
  const std::string blind = " is looked through every few seconds, for reasons";
  EXPECT_EQ(log.list, (Names{later + " is not there now", later + " is watched again", later + blind, in + blind}));
}

TEST_F(WatcherTest, WhatHasFailedIsTriedAgainOnlyWhereThatMayHelp) {
  write("in/a.mkv", "x");
  EXPECT_EQ(after(30s), (Names{"in/a.mkv"}));
  ended("in/a.mkv", QueueState::Failed, QueueState::Searching, true);
  std::vector<std::chrono::minutes> pauses;
  for (auto last = clock.now; pauses.size() < 9; last = clock.now) {
    while (after(1min).empty()) continue;
    pauses.push_back(std::chrono::round<std::chrono::minutes>(clock.now - last));
    ended("in/a.mkv", QueueState::Failed, QueueState::Processing, pauses.size() % 2 == 0);
  }
  EXPECT_EQ(pauses, (std::vector{1min, 2min, 4min, 8min, 16min, 32min, 60min, 60min, 60min}));
  ended("in/a.mkv", QueueState::Failed, QueueState::Scanning);
  at_once_after(2h);
  ended("in/a.mkv", QueueState::Failed, QueueState::Scanning);
  EXPECT_EQ(at_once_after(30h), Names()) << "its name stays what it is";
  write("in/a.mkv", "another file");
  EXPECT_EQ(after(2min), (Names{"in/a.mkv"}));
  for (const auto pause : {1h, 2h, 4h, 8h, 16h, 24h, 24h, 24h, 24h, 24h, 24h}) {
    ended("in/a.mkv", QueueState::Failed, QueueState::FetchingListings);
    EXPECT_EQ(at_once_after(pause - 1s), Names());
    EXPECT_EQ(after(1s), (Names{"in/a.mkv"})) << "the service may know it by now";
  }
  ended("in/a.mkv", QueueState::Failed, QueueState::FetchingListings);
  EXPECT_EQ(at_once_after(30h), Names());
  files->remove(folder / "in/a.mkv");
  after(2min);
  EXPECT_EQ(watcher.known(), 0u) << "it has gone, and with it what is remembered of it";
  write("in/a.mkv", "x");
  EXPECT_EQ(after(2min), (Names{"in/a.mkv"}));
  watcher.put_off(path("in/a.mkv"));
  watcher.put_off(path("in/nobody knows.mkv"));
  EXPECT_EQ(at_once_after(2min), (Names{"in/a.mkv"})) << "the queue was not free for it";
  watcher.put_off(path("in/a.mkv"));
  files->remove(folder / "in/a.mkv");
  EXPECT_EQ(at_once_after(2min), Names());
}

TEST_F(WatcherTest, WhatTheProgramHasPutThereIsNotTakenAgain) {
  write("in/a.mkv", "x");
  EXPECT_EQ(after(30s), (Names{"in/a.mkv"}));
  std::filesystem::rename(path_of(folder / "in/a.mkv"), path_of(folder / "in/b.mkv"));
  QueueItem item;
  item.state = QueueState::Done;
  item.path = path("in/a.mkv");
  // By a path that leads there by another way, as through a link.
  item.dest_path = path("elsewhere/");
  item.new_name = "b.mkv";
  item.done_stamp = files->stamp(folder / "in/b.mkv");
  watcher.ended(item);
  write("in/b.en.mkv", "what went along");
  FileJob& companion = item.companions.emplace_back();
  companion.new_name = "b.en.mkv", companion.dest_path = path("in/");
  companion.done_stamp = files->stamp(folder / "in/b.en.mkv");
  notice("in/b.en.mkv");
  EXPECT_EQ(after(1s), Names());  // so that it is known, but not whose it is
  watcher.ended(item);
  for (const char* const each : {"in/b.mkv", "in/b.en.mkv"}) notice(each);
  EXPECT_EQ(after(1h), Names());
  EXPECT_EQ(watcher.known(), 2u);
  write("in/a.mkv", "the next one");
  EXPECT_EQ(after(2min), (Names{"in/a.mkv"}));
}

TEST(Watching, QueuesWhatIsReadyTriesAgainAndLeavesWhatIsTheUsers) {
  TestSession test;
  FakeNotices notices;
  Ports ports = test.with(test.ui);
  ports.folder_watch = &notices;
  Session session(ports, test.places());
  session.start();
  Watching watching(session);
  const auto minutes = [&](int count) {
    std::vector<int> all;
    for (int i = 0; i < count; ++i, test.clock.now += 1min) {
      const std::vector<int> again = watching.tick(1h);
      all.insert(all.end(), again.begin(), again.end());
      session.processor.take_again(again, false);
      session.processor.process_queue();
    }
    return all;
  };
  const auto state = [&](int index) { return session.queue.at(index).state; };
  test.write("in/The.Harbour.Lights.S01E02.mkv", "x");
  EXPECT_TRUE(minutes(3).empty() && !watching.is_on() && session.queue.count() == 0);
  set_watched(session, {test.folder / "in"}, true);
  test.service.works = [](const std::string& call) { return !call.starts_with("connect"); };
  EXPECT_TRUE(minutes(3).empty() && watching.is_on());
  EXPECT_EQ(state(1), QueueState::Failed);
  test.service.works = [](const std::string&) { return true; };
  EXPECT_EQ(minutes(3), std::vector{1}) << "the service is back";
  EXPECT_EQ(state(1), QueueState::Done);
  test.write("in/The.Harbour.Lights.S01E02.mkv", "another file of that name");
  EXPECT_TRUE(minutes(3).empty());
  EXPECT_EQ(session.queue.count(), 2);
  session.undo.run(1);
  EXPECT_TRUE(minutes(3).empty());
  EXPECT_EQ(session.queue.count(), 2);
  set_watched(session, {}, true);
  EXPECT_TRUE(minutes(3).empty() && !watching.is_on() && !session.settings.watching);
}

}  // namespace
}  // namespace quorvel::testing
