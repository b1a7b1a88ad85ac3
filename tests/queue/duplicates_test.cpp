#include "queue/duplicates.h"

#include <gtest/gtest.h>

#include "naming/file_names.h"
#include "rules/action.h"
#include "rules/presets.h"
#include "session_fixture.h"
#include "shell/item_help.h"
#include "shell/past_text.h"
#include "system_facts.h"
#include "text/cut.h"

namespace quorvel::testing {
namespace {

/// Real files, and a trash that is a folder, where there is one.
struct TrashingShell : FileOperation {
  const std::unique_ptr<FileOperation> real = system_file_operation({}, {});
  std::string trash;
  bool has_trash = true;

  int perform(const FileOperationRequest& request) override {
    const auto throw_away = [this](const std::string& path) {
      if (!has_trash) return native::no_trash_code;
      std::filesystem::rename(path_of(path), path_of(trash) / path_of(path).filename());
      return 0;
    };
    const bool undoable = (request.flags & FileOperationRequest::AllowUndo) != 0;
    if (request.operation == FileOperationRequest::Delete && undoable) return throw_away(request.source);
    FileOperationRequest plain = request;
    plain.flags &= static_cast<std::uint16_t>(~FileOperationRequest::Replace);
    if (plain.flags != request.flags && has_trash) throw_away(request.destination);
    return real->perform(plain);
  }
};

struct DuplicatesTest : ::testing::Test, TestPorts {
  TrashingShell trashing;
  FakeUi ui{events};
  Session session{{key_values, trashing, *files, service, web, ui, clock, &desktop}, places()};
  const std::string name = "The Harbour Lights - 1x02 - The Pilot Boat";

  DuplicatesTest() {
    trashing.trash = folder / "trash";
    for (const char* const each : {"out", "trash"}) files->create_folder(folder / each);
    session.start();
    rule(MoveAndRename, Existing::Ask);
  }
  void rule(int action, Existing existing) {
    session.filters.use_only(rule_for_all(action, folder / "out", std::string(default_mask), existing));
  }
  const QueueItem& run(const std::string& file) {
    if (!exists("in/" + file)) write("in/" + file, file);
    session.queue.append(folder / ("in/" + file), getfname(folder / ("in/" + file)));  // again, if need be
    session.processor.process_queue();
    return session.queue.at(session.queue.count());
  }
  /// What is in the three folders: the first letters of what each file holds, in the order of their names.
  std::string all() const {
    std::string text;
    for (const char* const below : {"in", "out", "trash"}) {
      text += std::string_view(below) == "in" ? "" : "|";
      for (const auto& [path, bytes] : everything_in(folder / below)) {
        if (files->kind(path) == Files::Kind::File) text += bytes.substr(0, bytes.find('.')) + " ";
      }
    }
    return text;
  }
};

TEST_F(DuplicatesTest, ARuleSaysWhatBecomesOfFilesThatWouldHaveOneName) {
  // First one file is put there, then another one comes: what is there then, and of the reason its end.
  const struct {
    Existing existing;
    int action;
    const char *first, *second, *then, *reason;
    bool right_already = true;
  } rows[] = {
      {Existing::Ask, MoveAndRename, "a.1x02.720p.mkv", "b.1x02.1080p.mkv", "b |a |", "", false},
      {Existing::KeepBoth, MoveAndRename, "a.1x02.mkv", "b.1x02.mkv", "|b a |", "", false},
      {Existing::KeepBoth, CopyAndRename, "a.1x02.mkv", "a.1x02.mkv", "a |a |", "is a copy of it already"},
      {Existing::KeepBoth, CopyAndRename, "a.1x02.mkv", "bb.1x02.mkv", "a bb |bb a |", "", false},
      {Existing::Skip, MoveAndRename, "a.1x02.mkv", "b.1x02.mkv", "b |a |", "so the file stays where it is"},
      {Existing::KeepBetter, MoveAndRename, "a.1x02.720p.mkv", "b.1x02.1080p.mkv", "|b |a ", "", false},
      {Existing::KeepBetter, HardLinkAndRename, "a.1x02.4K.mkv", "b.1x02.4320p.mkv", "a b |b |a ", "", false},
      {Existing::KeepBetter, MoveAndRename, "a.1x02.1080p.mkv", "b.1x02.720p.mkv", "|a |b ", "the file goes to the "},
      {Existing::KeepBetter, CopyAndRename, "a.1x02.1080p.mkv", "b.1x02.720p.mkv", "a b |a |", "and is better"},
      {Existing::KeepBetter, MoveAndRename, "a.1x02.dvdrip.1024x576.mkv", "b.1x02.576p.hdtv.mkv", "|b |a ", "", false},
      {Existing::KeepBetter, MoveAndRename, "a.1x02.720p.web-dl.mkv", "b.1x02.720p.AMZN.mkv", "b |a |", ", as good"},
      {Existing::KeepBetter, MoveAndRename, "a.1x02.720p.mkv", "b.1x02.hdtv.mkv", "b |a |",
       "the names do not tell which of the two is better", false},
  };
  for (const auto& row : rows) {
    for (const char* const below : {"in", "out", "trash"}) {
      std::filesystem::remove_all(path_of(folder / below));
      files->create_folder(folder / below);
    }
    rule(row.action, Existing::Ask);
    const auto bring = [&](const std::string& what) -> const QueueItem& {
      const std::size_t dot = what.find('.');
      const std::string file = what.substr(0, dot) + "/harbour.lights." + what.substr(dot + 1);
      if (!exists("in/" + file)) write("in/" + file, what);
      return run(file);
    };
    bring(row.first);
    rule(row.action, row.existing);
    const QueueItem& item = bring(row.second);
    EXPECT_EQ(all(), row.then) << row.first << " " << row.second;
    EXPECT_TRUE(item.error_text.find(row.reason) != std::string::npos) << item.error_text;
    EXPECT_EQ(item.is_right_already, row.right_already) << item.error_text;
    EXPECT_TRUE(!row.right_already || reason_of(item) == item.error_text) << "not that it has its place";
    EXPECT_TRUE(!row.right_already || std::ranges::any_of(session.log.lines(), [&](const auto& line) {
      return line.ends_with(item.error_text);
    }));
  }
}

TEST_F(DuplicatesTest, NothingIsGivenUpWithoutATrashOrWithoutTheUsersWord) {
  const std::string poor = "harbour.lights.1x02.480p.mkv", rich = "harbour.lights.1x02.2160p.mkv";
  run(poor);
  rule(MoveAndRename, Existing::KeepBetter);
  trashing.has_trash = false;
  EXPECT_EQ(run(rich).error_text, folder / ("out/" + name + ".mkv") + " is there already, and there is no " +
                                      std::string(native::trash_name) + " that it could go to");
  trashing.has_trash = true;
  session.processor.take_again({2}, false);
  EXPECT_EQ(read("out/" + name + ".mkv") + "|" + read("trash/" + name + ".mkv"), rich + "|" + poor);
  EXPECT_EQ(session.history.passes(1)[0].operations[0].reason,
            "What was " + (folder / ("out/" + name + ".mkv")) + " is in the " + std::string(native::trash_name));
  trashing.has_trash = false;
  EXPECT_NE(run(poor).error_text.find("cannot be put into the trash"), std::string::npos);
  trashing.has_trash = true;
  session.processor.take_again({3}, false);
  const auto undone = session.past_undo.undo(session.history.passes(1)[0].operations);
  EXPECT_TRUE(undone.size() == 1 && undone[0].trouble.ends_with(", to be taken out there")) << undone.size();
  session.settings.confirm = true;
  EXPECT_NE(run(poor).error_text.find("and is better"), std::string::npos);
  EXPECT_EQ(read("in/" + poor), poor) << "the question is about renaming";
  session.settings.confirm = false;
  EXPECT_NE(run("Harbour.Lights.S01E02E03.4320p.mkv").error_text.find("whether this is the same episode is uncertain"),
            std::string::npos);
}

TEST_F(DuplicatesTest, ALinkIsMadeAndTakenBackWithoutTheFile) {
  for (const int action : {HardLinkAndRename, SymbolicLinkAndRename}) {
    if (action == SymbolicLinkAndRename && facts::windows) continue;  // Wine makes none
    rule(action, Existing::Ask);
    const std::string file = "harbour.lights.1x02.mkv", link = folder / ("out/" + name + ".mkv");
    const QueueItem& item = run(file);
    const int index = session.queue.count();
    EXPECT_TRUE(files->stamp(item.path)->same_file(*files->stamp(link))) << item.error_text;
    EXPECT_EQ(files->is_link(link), action == SymbolicLinkAndRename);
    EXPECT_TRUE(run(file).is_right_already);
    EXPECT_EQ(session.undo.entry({index}).caption, "Undo Link");
    write("in/" + file, "another one");  // by a new file
    session.undo.run(index);
    EXPECT_EQ(files->exists(link), action == HardLinkAndRename) << "the last name of the first file";
    if (action == HardLinkAndRename) {
      EXPECT_NE(item.error_text.find("is the only name that the file still has"), std::string::npos);
      files->remove(link);
    }
    run(file);
    const auto pass = session.history.passes(1)[0];
    EXPECT_EQ(counts_text(pass), "1 linked");
    EXPECT_EQ(undone_line(session.past_undo.undo(pass.operations)[0]), link + ": the link is removed");
    EXPECT_FALSE(files->exists(link));
    session.past_undo.undo(session.history.passes(1)[0].operations);
    EXPECT_EQ(read("in/" + file) + "|" + files->read(link).value_or(""), "another one|another one");
    files->remove(link);
    files->replace(link, "somebody's");
    EXPECT_FALSE(session.past_undo.undo(session.history.passes(1)[0].operations)[0].trouble.empty());
    EXPECT_EQ(files->read(link), "somebody's");
    files->remove(link);
  }
  if (!facts::windows) {
    session.filters.use_only(rule_for_all(HardLinkAndRename, facts::other_device, std::string(default_mask)));
    if (files->stamp(facts::other_device)->device == files->stamp(folder.path())->device) GTEST_SKIP();
    EXPECT_EQ(run("harbour.lights.1x02.mkv").error_text, "A hard link cannot lead to another file system");
  }
}

}  // namespace
}  // namespace quorvel::testing
