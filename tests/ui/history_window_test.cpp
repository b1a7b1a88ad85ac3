// What is done with several rows of the queue.
#include <wx/uiaction.h>

#include "naming/file_names.h"
#include "test_window.h"

namespace quorvel::testing {

class HistoryWindow : public TestWindow {
 protected:
  /// Two passes, of two files and of one.
  void start_with_passes() {
    start();
    drop({file("harbour.lights.s01e01.avi"), file("night.train.s01e02.avi")});
    run_pass();
    drop({file("harbour.lights.s01e02.mkv")});
    run_pass();
    ASSERT_TRUE(is_done(1) && is_done(2) && is_done(3)) << rows(1);
  }
};

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
  EXPECT_EQ(queue.selection(), (std::vector{1, 3}));
}

}  // namespace quorvel::testing
