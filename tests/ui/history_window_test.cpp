// Undoing from the history, and what is done with several rows of the queue.
#include <wx/uiaction.h>

#include "naming/file_names.h"
#include "platform/system.h"
#include "test_window.h"
#include "ui/text.h"

namespace quorvel::testing {

using ui::from_wx;

/// The real one, which tells once that something is about to happen.
struct ToldOperation : FileOperation {
  const std::unique_ptr<FileOperation> real = system_file_operation({}, {});
  std::function<void()> on_perform = [] {};
  int perform(const FileOperationRequest& request) override {
    std::exchange(on_perform, [] {})();
    return real->perform(request);
  }
};

class HistoryWindow : public TestWindow {
 protected:
  ToldOperation* told = nullptr;

  /// Two passes, of two files and of one.
  void start_with_passes() {
    shell.reset(told = new ToldOperation);
    start();
    drop({file("harbour.lights.s01e01.avi"), file("night.train.s01e02.avi")});
    run_pass();
    drop({file("harbour.lights.s01e02.mkv")});
    run_pass();
    ASSERT_TRUE(is_done(1) && is_done(2) && is_done(3)) << rows(1);
  }
  /// The files, each by what was done and what came of it, after "passes: ".
  static std::string look(const wxDialog& dialog) {
    std::string all;
    for (const char* const name : {"passes", "files"}) {
      const auto& list = find<ui::PlainList>(dialog, name);
      for (int row = 1; row <= list.count(); ++row) all += from_wx(list.cell(row, *name == 'p' ? 1 : 3)) + ";";
      all += " ";
    }
    return all + from_wx(find(dialog, "result").GetLabel());
  }
  static ui::PlainList& choose(const wxDialog& dialog, const std::vector<int>& passes, int files) {
    auto& list = find<ui::PlainList>(dialog, "files");
    find<ui::PlainList>(dialog, "passes").select_all(passes);
    wait_until([&] { return list.count() == files; });
    return list;
  }
};

TEST_F(HistoryWindow, FilesAndPassesAreUndoneAndTheQueueAndTheListsSayWhatCameOfIt) {
  start_with_passes();
  const std::string in_the_way = folder / "in/night.train.s01e02.avi";
  on_dialog([&](wxDialog& dialog) {
    wait_until([&] { return find<ui::PlainList>(dialog, "passes").selected() == 1; });
    choose(dialog, {}, 0);
    EXPECT_TRUE(shown(dialog).ends_with("[]|-Open Folder|-Undo Selected|-Undo Pass|Close|")) << shown(dialog);
    ui::PlainList& files = choose(dialog, {1, 2}, 3);
    EXPECT_EQ(look(dialog), "1 renamed;2 renamed; Done;Done;Done; ");
    make(in_the_way, "another one");
    files.select_all({1, 3});
    wait_until([&] { return find(dialog, "Undo &Selected").IsEnabled(); });
    press(dialog, "Undo &Selected");
    const std::string refused = "Not undone: " + in_the_way + " is there already;";
    EXPECT_EQ(look(dialog), "Undoing: 1 renamed;1 renamed, all undone;2 renamed; Undone;Done;" + refused +
                                " 1 of 2 undone, 1 left alone");
    EXPECT_EQ(files.selection(), (std::vector{1, 3}));
    this->files->remove(in_the_way);
    // What was chosen stays so; the user stops the rest before it begins.
    told->on_perform = [&] { press(dialog, "Stop"); };
    press(dialog, "&Undo Pass");
    EXPECT_TRUE(look(dialog).ends_with("Undone;Done;Undone; 1 of 2 undone")) << look(dialog);
    press(dialog, "&Undo Pass");
    EXPECT_TRUE(look(dialog).ends_with("Undone;Undone;Undone; 1 undone")) << look(dialog);
    EXPECT_FALSE(find(dialog, "&Undo Pass").IsEnabled());
    press(dialog, "Close");
  });
  command(ui::mnuHistory);
  EXPECT_EQ(rows(1),
            "harbour.lights.s01e01||Cancelled;night.train.s01e02||Cancelled;harbour.lights.s01e02||Cancelled;");
  EXPECT_EQ(session->queue.at(1).error_text, "The file operation has been undone");
  EXPECT_TRUE(exists("in/harbour.lights.s01e01.avi") && exists("in/night.train.s01e02.avi"));
}

TEST_F(HistoryWindow, TheLastPassIsUndoneAfterAQuestionButNotWhileQuorvelIsAtWork) {
  start_with_passes();
  auto& bar = find(*frame, "message_bar");
  command(ui::mnuUndoPass);  // of one file
  EXPECT_EQ(shown(bar), "1 undone.|History\u2026|Close|");
  for (const char* const answer : {"&Cancel", "&Undo"}) {
    on_dialog([&](wxDialog& dialog) {
      const std::string question = shown(dialog);
      EXPECT_TRUE(question.starts_with("Undo Last Pass: Undo 2 renamings of ")) << question;
      press(dialog, answer);
    });
    command(ui::mnuUndoPass);
    EXPECT_EQ(is_done(1), *(answer + 1) == 'C');
  }
  EXPECT_EQ(shown(bar), "2 undone.|History\u2026|Close|");
  command(ui::mnuUndoPass);
  EXPECT_EQ(shown(bar), "There is nothing to undo.|Close|");
  on_dialog("Unable to undo", "OK");
  told->on_perform = [this] { command(ui::mnuUndoPass); };
  run_pass();
  EXPECT_TRUE(is_done(1) && is_done(2)) << rows(1);
}

TEST_F(HistoryWindow, CommandsAreForAllSelectedRowsAndAPassLeavesThemSelected) {
  start_with_passes();
  ui::RowList& queue = list(1);
  const auto menu_of = [&](const std::vector<int>& rows, int over) {
    queue.select_all(rows);
    return menu_over(1, over);
  };
  queue.SetFocus();
  wxUIActionSimulator().Char('A', wxMOD_CONTROL);
  wait_until([&] { return queue.selection().size() == 3; });
  menu_of({1, 3}, 2);
  EXPECT_EQ(queue.selection(), std::vector{2});
  EXPECT_EQ(menu_of({1, 3}, 3),
            "Item Info|Undo 2 Files|Add Exception|Choose Show\u2026|Look Up Again|Retry These Files|Open "
            "Folder|-|Retry Failed");
  command(ui::mnuUndo), command(ui::mnuFolder);
  EXPECT_TRUE(!is_done(1) && is_done(2) && !is_done(3)) << rows(1);
  EXPECT_EQ(session->history.passes(1)[0].operations.size(), 2U);
  EXPECT_EQ(happened(), std::vector{"open " + with_separator(folder / "in")});
  command(ui::mnuRetryThis);
  EXPECT_TRUE(is_done(1) && is_done(3)) << rows(1);
  wxTheApp->ProcessPendingEvents();
  EXPECT_EQ(queue.selection(), (std::vector{1, 3}));
}

}  // namespace quorvel::testing
