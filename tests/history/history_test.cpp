#include "history/history.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <set>

#include "session_fixture.h"
#include "shell/past_sheet.h"
#include "shell/past_text.h"
#include "shell/past_undoing.h"

namespace quorvel::testing {
namespace {

struct PastTest : ::testing::Test, TestSession {
  PastTest() { start(); }

  std::string in(const std::string& name) const { return folder / ("in/" + name); }
  /// Whatever stands in "in", as "name=contents".
  std::string files_in() const {
    std::set<std::string> names;
    files->list(folder / "in", [&](const FolderEntry& entry) { names.insert(entry.name); });
    std::string text;
    for (const std::string& name : names) text += name + "=" + read("in/" + name) + "|";
    return text;
  }
  /// The passes, the first one first: outcome words of the operations, and the counts.
  static std::string told(History& history) {
    std::string text;
    for (const PastPass& pass : history.passes(99)) {
      std::string words;
      for (const PastOperation& each : pass.operations) words += std::string(outcome_word(each)) + " ";
      text.insert(0, words + "(" + counts_text(pass) + ")|");
    }
    return text;
  }
  static std::string undo(Session& run, std::int64_t pass) {
    std::string text;
    for (const PastUndo::Outcome& each : run.past_undo.undo(run.history.pass(pass)->operations)) {
      text += (each.trouble.empty() ? "ok" : each.trouble) + "|";
    }
    return text;
  }
};

TEST_F(PastTest, WhatWasDoneCanBeUndoneAndDoneAgainInLaterRuns) {
  const std::string one = "the.harbour.lights.1x01.mkv", two = "the.harbour.lights.1x02.mkv", three = "nothing.mkv";
  for (const std::string& name : {one, two, three}) add(name);
  session.processor.process_queue();
  const std::string done = files_in();
  Session later(with(ui), places());
  later.start();
  EXPECT_EQ(told(later.history), "done done (2 renamed)|");
  const std::int64_t pass = later.history.last_undoable_pass();
  write("in/" + two, "somebody else's");
  EXPECT_EQ(undo(later, pass), in(two) + " is there already|ok|");
  EXPECT_EQ(told(later.history), "undone done (2 renamed, 1 undone)|done (1 renamed)|");
  EXPECT_TRUE(exists("in/" + one) && read("in/" + two) == "somebody else's");
  files->remove(in(two));
  EXPECT_EQ(undo(later, pass), "ok|");
  EXPECT_EQ(later.history.last_undoable_pass(), 0) << "undoings are not undone by themselves";
  const std::int64_t undoing = later.history.passes(2)[1].id;
  EXPECT_EQ(undo(later, undoing), "ok|");
  EXPECT_EQ(undo(later, undoing + 1), "ok|");
  EXPECT_EQ(files_in(), done);
  EXPECT_EQ(later.history.last_undoable_pass(), undoing + 3) << "what was done again";
  write("in/The Harbour Lights - 1x02 - The Pilot Boat.mkv", "another film");
  EXPECT_TRUE(undo(later, undoing + 3).ends_with("has been changed or replaced since|"));
  later.history.forget_before(std::chrono::sys_seconds::max() - std::chrono::hours(1));
  EXPECT_EQ(told(later.history), "");
}

TEST_F(PastTest, APassOfWhichAllWasRefusedDoesNotKeepTheOnesBeforeFromBeingUndone) {
  for (const std::string name : {"the.harbour.lights.1x01.mkv", "the.harbour.lights.1x02.mkv"}) {
    add(name);
    session.processor.process_queue();
  }
  PastUndoing undoing(session);
  const std::int64_t last = undoing.last_pass()->id;
  write("in/the.harbour.lights.1x02.mkv", "in the way");
  const auto undo_last = [&] { return undoing.undo(undoing.last_pass()->operations, [](int, int) { return true; }); };
  EXPECT_EQ(text_of(undo_last()), "0 of 1 undone, 1 left alone");
  EXPECT_EQ(undoing.last_pass()->id, last - 1);
  EXPECT_EQ(text_of(undo_last()), "1 undone");
  files->remove(in("the.harbour.lights.1x02.mkv"));
  EXPECT_EQ(text_of(undo_last()), "1 undone") << "what was refused is tried again at last";
  EXPECT_FALSE(undoing.last_pass());
  for (const QueueState state : {QueueState::Done, QueueState::Cancelled, QueueState::Done}) {
    undoing.undo(session.history.passes(1)[0].operations, [](int, int) { return true; });
    EXPECT_EQ(item(2).state, state) << "each time the last undoing is undone";
  }
}

TEST_F(PastTest, WhatCannotBeWrittenInOneGoIsNotWrittenAtAll) {
  add("the.harbour.lights.1x01.mkv");
  session.processor.process_queue();
  sqlite3* file = nullptr;
  sqlite3_open((work_dir() + "history.db").c_str(), &file);
  const auto run = [&](const char* sql) { return sqlite3_exec(file, sql, nullptr, nullptr, nullptr); };
  EXPECT_EQ(run("CREATE TRIGGER full BEFORE UPDATE OF undone ON operations BEGIN SELECT RAISE(ABORT, 'full'); END"), 0);
  EXPECT_EQ(undo(session, session.history.passes(1)[0].id), "ok|");
  EXPECT_TRUE(logged(work_dir() + "history.db cannot be used: full. What is done to files is kept for this run alone, "
                                  "and can be undone in it alone"))
      << log();
  EXPECT_EQ(run("DROP TRIGGER full"), 0) << "nothing holds the file";
  sqlite3_close(file);
  Session later(with(ui), places());
  later.start();
  EXPECT_EQ(told(later.history), "done (1 renamed)|under way (1 under way)|");
}

TEST_F(PastTest, TheSheetShowsTheFilesOfTheChosenPassesAndUndoesThoseThatAreSelected) {
  const std::string one = "the.harbour.lights.1x01.mkv", two = "the.harbour.lights.1x02.mkv",
                    three = "the.harbour.lights.1x03.mkv";
  for (const std::string& name : {one, two}) add(name);
  session.processor.process_queue();
  write("in/below/" + three, three);
  session.intake.add_to_queue(in("below/" + three), false);
  session.processor.process_queue();
  PastUndoing undoing(session);
  PastSheet sheet(session, undoing);
  const auto told = [](const std::vector<ListRow>& rows) {
    std::string text;
    for (const ListRow& row : rows) {
      for (std::size_t i = 1; i < row.cells.size(); ++i) text += row.cells[i] + "|";
    }
    return text;
  };
  EXPECT_EQ(told(sheet.passes()) + told(sheet.files()), "1 renamed|2 renamed|");
  const std::string new_one = "The Harbour Lights - 1x01 - Slack Water.mkv",
                    new_two = "The Harbour Lights - 1x02 - The Pilot Boat.mkv";
  sheet.choose({1, 2});
  EXPECT_EQ(sheet.details({}) + sheet.folder_of({1, 2, 3}) + sheet.folder_of({1}),
            "3 files, 3 can be undone" + in("below") + native::separator);
  sheet.choose({2});
  EXPECT_EQ(told(sheet.files()), one + "|" + new_one + "|Done|" + two + "|" + new_two + "|Done|");
  EXPECT_EQ(sheet.files()[0].cells[0], "Renamed");
  EXPECT_EQ(sheet.details({2}) + sheet.folder_of({1, 2}),
            "From: " + in(two) + "\nTo: " + in(new_two) + "\nDone" + folder / "in" + native::separator);
  write("in/" + two, "in the way");
  EXPECT_EQ(text_of(sheet.undo(std::vector{2}, [](int, int) { return true; })), "0 of 1 undone, 1 left alone");
  EXPECT_EQ(text_of(sheet.undo(std::vector{1}, [](int, int) { return true; })), "1 undone");
  EXPECT_EQ(told(sheet.passes()), "Undoing: 1 renamed|1 renamed|2 renamed, 1 undone|");
  EXPECT_EQ(sheet.chosen(), std::vector{3}) << "the same pass, further down";
  EXPECT_EQ(told(sheet.files()),
            one + "|" + new_one + "|Undone|" + two + "|" + new_two + "|Not undone: " + in(two) + " is there already|");
  EXPECT_EQ(sheet.details({1, 2}), "2 files, 1 can be undone");
}

/// Nothing goes to the trash, so that nothing is left there.
struct NoTrash : FileOperation {
  const std::unique_ptr<FileOperation> real = system_file_operation({}, {});
  int perform(const FileOperationRequest& request) override {
    const bool is_for_trash =
        request.operation == FileOperationRequest::Delete && (request.flags & FileOperationRequest::AllowUndo) != 0;
    return is_for_trash ? native::no_trash_code : real->perform(request);
  }
};

TEST_F(PastTest, CopiesGoAndComeBackAndTheQueuesUndoIsInTheHistory) {
  write("data/Quorvel/filters.dat", "3\tTrue\t\t*\t" + folder / "in/out/" + "\t[title]\tAny\t0\t1\r\n");
  write("in/the.harbour.lights.1x01.mkv", "a film");
  NoTrash no_trash;
  Session run({key_values, no_trash, *files, service, web, ui, clock, &desktop}, places());
  run.start();
  const std::string copy = folder / "in/out/Slack Water.mkv", source = in("the.harbour.lights.1x01.mkv");
  run.intake.add_to_queue(source, false);
  run.processor.process_queue();
  ASSERT_TRUE(files->exists(copy));
  run.undo.run(1);
  EXPECT_FALSE(files->exists(copy));
  EXPECT_EQ(told(run.history), "undone (1 copied, all undone)|done (1 removed)|");
  const std::int64_t undoing = run.history.passes(1)[0].id;
  EXPECT_EQ(undo(run, undoing), "ok|");
  EXPECT_EQ(files->read(copy), "a film");
  EXPECT_EQ(undo(run, undoing + 1), "ok|");
  make(source, "no longer what was copied");
  EXPECT_TRUE(undo(run, undoing + 2).ends_with("is not what was copied any more|"));
}

TEST_F(PastTest, WhatWasUnderWayWhenAProcessDiedIsSettledByWhatIsThere) {
  const struct {
    Deed deed;
    bool source, left;
    const char *outcome, *reason;
  } rows[] = {{Deed::Renamed, false, true, "done", ""},
              {Deed::Moved, true, false, "failed", "It was cut off; the file is where it was"},
              {Deed::Moved, true, true, "failed", "It was cut off; the file is there under both names"},
              {Deed::Renamed, false, false, "failed", "It was cut off; the file is at neither place"},
              {Deed::Copied, true, true, "done", ""},
              {Deed::Copied, true, false, "failed", "It was cut off; the file is where it was"},
              {Deed::SymbolicLinked, true, false, "failed", "It was cut off; the file is where it was"},
              {Deed::Trashed, true, false, "failed", "It was cut off; the file is where it was"},
              {Deed::Trashed, false, false, "done", ""},
              {Deed::Tidied, false, false, "done", ""},
              {Deed::Made, true, false, "done", ""},
              {Deed::Made, false, false, "failed", "It was cut off; the file is at neither place"}};
  int number = 0;
  for (const auto& row : rows) {
    PastOperation past;
    past.deed = row.deed;
    past.old_path = in(std::to_string(++number)), past.new_path = row.deed < Deed::Trashed ? past.old_path + "n" : "";
    make(past.old_path);
    past.stamp = files->stamp(past.old_path);
    session.history.begin(past, "pending-" + std::to_string(number));
    namespace fs = std::filesystem;
    if (row.left && !row.source) fs::rename(path_of(past.old_path), path_of(past.new_path));
    if (row.left && row.source) fs::copy_file(path_of(past.old_path), path_of(past.new_path));
    if (row.left && row.source) fs::last_write_time(path_of(past.new_path), last_write_time(path_of(past.old_path)));
    if (!row.source) files->remove(past.old_path);
  }
  // A circle of two that was cut off before its end: the second file has the first one's name already.
  {
    const History::Pass pass(session.history);
    for (const auto& [deed, from, to] :
         {std::tuple(Deed::SetAside, "one", "swapping"), {Deed::Renamed, "two", "one"}}) {
      PastOperation step;
      step.deed = deed, step.old_path = in(from), step.new_path = in(to);
      session.history.begin(step, "pending-circle");
      make(step.new_path, from);
      step.outcome = PastOperation::Done, step.stamp = files->stamp(step.new_path);
      session.history.end(step);
    }
  }
  PastOperation away;
  away.old_path = folder / "drive/a", away.new_path = folder / "drive/b";
  session.history.begin(away, "pending-away");
  PastOperation alive;
  alive.old_path = in("x"), alive.new_path = in("y");
  session.history.begin(alive, "pending-alive");
  const auto held = files->hold(work_dir() + "pending-alive");

  session.past_undo.settle(work_dir());
  const std::vector<PastPass> passes = session.history.passes(99);
  EXPECT_TRUE(logged("A run was cut off when " + in("1") + " was renamed to " + in("1n") + "; that was still done"));
  EXPECT_TRUE(logged("A run was cut off before " + in("3") + " was moved to " + in("3n") + ". " + rows[2].reason));
  EXPECT_TRUE(logged("A run was cut off when " + in("5") + " was copied to " + in("5n") + "; that was still done"));
  EXPECT_TRUE(logged("A run was cut off before " + in("7") + " was linked as " + in("7n") + ". " + rows[6].reason));
  EXPECT_TRUE(logged("A run was cut off when " + in("9") + " was put into the " + std::string(native::trash_name) +
                     "; that was still done"));
  EXPECT_TRUE(logged("A run was cut off when " + in("11") + " was made again; that was still done"));
  for (std::size_t i = 0; i < std::size(rows); ++i) {
    const PastOperation& settled = passes[passes.size() - 1 - i].operations.front();
    EXPECT_EQ(std::string(outcome_word(settled)) + settled.reason, std::string(rows[i].outcome) + rows[i].reason) << i;
  }
  EXPECT_EQ(read("in/one") + read("in/two") + read("in/swapping"), "onetwo(missing)");
  EXPECT_EQ(session.history.under_way().size(), 2u) << "a drive that is away, and a process that lives";
}

}  // namespace
}  // namespace quorvel::testing
