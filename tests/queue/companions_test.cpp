#include "queue/companions.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "rules/action.h"
#include "session_fixture.h"
#include "shell/past_text.h"
#include "shell/past_undoing.h"
#include "text/cut.h"

namespace quorvel::testing {
namespace {

struct CompanionsTest : ::testing::Test, TestPorts {
  FailingShell failing;
  FakeUi ui{events};
  Session session{{key_values, failing, *files, service, web, ui, clock, &desktop}, places()};
  const std::string video = "harbour.lights.1x02.mkv", stem = "harbour.lights.1x02",
                    done = "The Harbour Lights - 1x02 - The Pilot Boat";

  CompanionsTest() {
    session.start();
    session.settings.companions = "srt;.ASS; nfo;jpg;idx;sub";
    write("out/kept", "");
  }
  void move_to_out() {
    session.filters.append(
        {"out", MoveAndRename, true, folder / "out", std::string(default_mask), "*", Equals, "", 0, false});
    session.filters.exchange(1, 2);
  }
  /// Makes these files, each of which holds its name, queues the videos and runs a pass.
  void run(const std::vector<std::string>& names) {
    for (const std::string& name : names) write("in/" + name, name);
    session.intake.add_to_queue(folder / "in", false);
    session.processor.process_queue();
  }
  /// The files below, by their paths; one that does not hold its first name has that behind it.
  std::string all() const {
    std::string text;
    for (const auto& [path, bytes] : everything_in(folder.path())) {
      std::string below = path.substr((folder / "").size());
      replace_all(below, "\\", "/");
      if (files->kind(path) != Files::Kind::File || !(below.starts_with("in") || below.starts_with("out"))) continue;
      if (!below.ends_with("kept")) text += below + (below == "in/" + bytes ? "" : "=" + bytes) + "|";
    }
    return text;
  }
  const QueueItem& item(int index) { return session.queue.at(index); }
};

TEST_F(CompanionsTest, WhatBelongsToAnEpisodeGetsItsNameAndNothingElseDoes) {
  // Beside harbour.lights.1x02.mkv: the file, and what it becomes behind the new name; empty where it stays.
  const std::pair<std::string, std::string> rows[] = {{stem + ".en.srt", ".en.srt"},
                                                      {stem + ".Forced.ASS", ".Forced.ASS"},
                                                      {"Harbour.Lights.1x02-thumb.jpg", "-thumb.jpg"},
                                                      {stem + ".nfo", ".nfo"},
                                                      {stem + ".2.srt", ".2.srt"},
                                                      {stem + " (old).srt", " (old).srt"},
                                                      {stem + ".txt", ""},
                                                      {stem + "5.srt", ""},        // the beginning of another number
                                                      {stem + "-03.srt", ""},      // two episodes, perhaps
                                                      {stem + ".S01E03.srt", ""},  // another episode
                                                      {stem + ".extra.srt", ""},   // that of the video that follows
                                                      {stem + ".extra.mp4", ""},
                                                      {"other.srt", ""},
                                                      {"Subs/" + stem + ".de.srt", ".de.srt"},
                                                      {"subtitles/" + stem + "/2_English.idx", ".en.2.idx"},
                                                      {"subtitles/" + stem + "/2_English.sub", ".en.2.sub"},
                                                      {"subtitles/" + stem + "/3_English.sub", ".en.3.sub"},
                                                      {"subtitles/" + stem + "/German (SDH).srt", ".de.SDH.srt"},
                                                      {"subtitles/other/4_French.srt", ""}};
  std::vector<std::string> names{video};
  std::set<std::string> expected{"in/" + done + ".mkv=" + video};
  for (const auto& [name, addition] : rows) {
    names.push_back(name);
    expected.insert(addition.empty() ? "in/" + name : "in/" + done + addition + "=" + name);
  }
  for (const std::string& name : names) write("in/" + name, name);
  session.intake.add_to_queue(folder / ("in/" + video), false);
  session.processor.process_queue();
  const std::string now = all();
  std::set<std::string> found;
  for (const std::string_view each : split(now, "|")) found.emplace(each);
  found.erase("");
  EXPECT_EQ(found, expected) << item(1).error_text;
  session.undo.run(1);
  for (const std::string& name : names) EXPECT_EQ(read("in/" + name), name);
  EXPECT_EQ(session.history.passes(1)[0].operations.size(), 12u);

  session.settings.companions.clear();
  session.processor.retry_failed();
  EXPECT_TRUE(exists("in/" + done + ".mkv") && exists("in/" + stem + ".en.srt")) << "off when empty";
}

TEST_F(CompanionsTest, AllGoOrNone) {
  move_to_out();
  const std::vector<std::string> names{video, stem + ".en.srt", stem + ".nfo"};
  write("out/" + done + ".nfo", "in the way");
  run(names);
  const std::string untouched = "in/" + stem + ".en.srt|in/" + video + "|in/" + stem + ".nfo|";
  EXPECT_EQ(all(), untouched + "out/" + done + ".nfo=in the way|");
  EXPECT_EQ(item(1).error_text, folder / ("in/" + stem + ".nfo") +
                                    " cannot go along: " + (folder / ("out/" + done + ".nfo")) + " is there already");
  EXPECT_EQ(failing.calls, 0);
  files->remove(folder / ("out/" + done + ".nfo"));
  for (int at = 1; at <= 3; ++at) {
    failing.calls = 0, failing.fails_at = at;
    session.processor.retry_failed();
    EXPECT_EQ(all(), untouched) << at << item(1).error_text;
    EXPECT_EQ(session.history.last_undoable_pass(), 0) << "nothing has come of it";
  }
  write("in/Subs/" + stem + ".EN.srt", "");
  session.processor.retry_failed();
  EXPECT_EQ(item(1).error_text, folder / ("in/Subs/" + stem + ".EN.srt") + " cannot go along: two files would be " +
                                    (folder / ("out/" + done + ".EN.srt")));
  files->remove(folder / ("in/Subs/" + stem + ".EN.srt"));
  const std::string nfo = "out/" + done + ".nfo";
  failing.calls = 0;
  failing.meanwhile = [&] { write(nfo, "edited"); };
  session.processor.retry_failed();
  const std::string changed = folder / nfo + " has been changed or replaced since";
  EXPECT_TRUE(item(1).error_text.ends_with("\r\n" + (folder / ("in/" + stem + ".nfo")) + " is " + (folder / nfo) +
                                           " now: " + changed))
      << item(1).error_text;
  EXPECT_EQ(all(), "in/" + stem + ".en.srt|in/" + video + "|" + nfo + "=edited|");
  std::filesystem::remove(path_of(folder / nfo));
  write("in/" + stem + ".nfo", stem + ".nfo");
  failing.fails_at = 0;
  session.processor.retry_failed();
  const std::string moved = "out/" + done + ".en.srt=" + stem + ".en.srt|out/" + done + ".mkv=" + video + "|out/" +
                            done + ".nfo=" + stem + ".nfo|";
  EXPECT_EQ(all(), moved);

  // Undone together, whichever is asked for, and done again.
  PastUndoing undoing(session);
  const auto undo = [&](std::size_t operation) {
    return text_of(
        undoing.undo({session.history.passes(1)[0].operations.at(operation)}, [](int, int) { return true; }));
  };
  write("out/" + done + ".nfo", "edited");
  EXPECT_EQ(undo(2), "0 of 3 undone, 3 left alone");
  session.undo.run(1);
  EXPECT_EQ(all(), "out/" + done + ".en.srt=" + stem + ".en.srt|out/" + done + ".mkv=" + video + "|out/" + done +
                       ".nfo=edited|");
  files->remove(folder / ("out/" + done + ".nfo"));
  EXPECT_EQ(undo(0), "2 of 3 undone, 1 left alone") << "what is gone holds nothing up";
  EXPECT_EQ(all(), "in/" + stem + ".en.srt|in/" + video + "|");
  EXPECT_EQ(undo(1), "2 undone") << "the undoing";
  EXPECT_EQ(item(1).state, QueueState::Done);
  session.undo.run(1);
  EXPECT_EQ(all(), "in/" + stem + ".en.srt|in/" + video + "|");
}

TEST_F(CompanionsTest, AFolderThatIsNotNeededAnyMoreGoesAndComesBack) {
  move_to_out();
  const std::string inner = "in/a/b/Subs/" + stem + "/2_English.srt";
  write("in/c/kept.doc", ""), write("in/a/b/Thumbs.DB", "t"), write(inner, "s");
  write("in/c/the.harbour.lights.1x01.mkv", "1"), write("in/a/b/" + video, "2"),
      write("in/the.harbour.lights.1x03.mkv", "3");
  const auto move = [&](bool tidy) {
    session.settings.tidy = tidy;
    session.intake.add_to_queue(folder / "in", false);
    session.processor.retry_failed();
    EXPECT_EQ(read("out/" + done + ".en.srt") + read("out/" + done + ".mkv"), "s2");
    return std::string(exists("in") ? "in " : "") + (exists("in/a") ? "a " : "") + (exists("in/a/b") ? "b " : "") +
           (exists("in/c") ? "c" : "");
  };
  PastUndoing undoing(session);
  const auto undo = [&] {
    return text_of(undoing.undo(undoing.last_pass()->operations, [](int, int) { return true; }));
  };
  EXPECT_EQ(move(false), "in a b c");
  EXPECT_EQ(undo(), "4 undone");
  EXPECT_EQ(move(true), "in c");
  EXPECT_EQ(counts_text(session.history.passes(1)[0]), "4 moved, 4 tidied away");
  EXPECT_EQ(undo(), "8 undone");
  const std::string trashed = "What was in " + folder / "in/a/b" + " stays in the ";
  EXPECT_TRUE(std::ranges::any_of(session.log.lines(),
                                  [&](const std::string& line) { return line.find(trashed) != line.npos; }));
  EXPECT_EQ(read(inner) + read("in/a/b/" + video) + read("in/a/b/Thumbs.DB"), "s2(missing)");
  const auto undo_undoing = [&] {
    return text_of(undoing.undo(session.history.passes(1)[0].operations, [](int, int) { return true; }));
  };
  EXPECT_EQ(undo_undoing(), "8 undone");
  EXPECT_TRUE(exists("in/c") && !exists("in/a"));
  EXPECT_EQ(undo_undoing(), "8 undone");
  write("in/a/b/Subs/new.txt", "somebody's");
  EXPECT_EQ(undo_undoing(), "5 of 8 undone, 3 left alone");
  EXPECT_EQ(read("in/a/b/Subs/new.txt"), "somebody's");
  EXPECT_EQ(undo_undoing(), "5 undone");
  session.filters.exchange(1, 2);
  session.processor.retry_failed();
  EXPECT_TRUE(exists("in/a/b/Subs/" + stem)) << "nothing is tidied after a renaming";
}

TEST_F(CompanionsTest, WhatWasCutOffInTheMiddleIsBackAtTheNextStart) {
  write("in/a.srt", "a.srt"), write("in/a.mkv", "a.mkv");
  {
    const History::Pass pass(session.history);
    History::Group group(session.history);
    for (const char* const name : {"srt", "mkv"}) {
      PastOperation past;
      past.old_path = folder / (std::string("in/a.") + name), past.new_path = folder / (std::string("in/b.") + name);
      past.stamp = files->stamp(past.old_path);
      group.leads(name == std::string("mkv"));
      session.history.begin(past, "pending-dead");
      if (past.leads) break;
      std::filesystem::rename(path_of(past.old_path), path_of(past.new_path));
      past.outcome = PastOperation::Done;
      session.history.end(past);
    }
  }
  session.past_undo.settle(session.settings.work_dir);
  EXPECT_EQ(all(), "in/a.mkv|in/a.srt|");
}

}  // namespace
}  // namespace quorvel::testing
