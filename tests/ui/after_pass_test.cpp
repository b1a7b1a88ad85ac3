// What is told of a pass and of a row, and what can be done about it from there.
#include <wx/uiaction.h>

#include "test_window.h"

namespace quorvel::testing {

class AfterPass : public TestWindow {
 protected:
  const std::string unknown = "no.such.show.s01e01.avi";
  wxWindow& strip() { return find(*frame, "item_strip"); }
  wxWindow& bar() { return find(*frame, "message_bar"); }
};

TEST_F(AfterPass, TheBarUndoesAndTheStripHelpsWithTheRowThatIsSelected) {
  start();
  drop({file("harbour.lights.s01e01.avi"), file("harbour.lights.s01e02.avi"), file(unknown)});
  run_pass();
  wait_until([&] { return strip().IsShown(); });
  EXPECT_EQ(shown(bar()), "2 renamed, 1 needs you.|Undo All 2|Retry Failed|Close|");
  EXPECT_EQ(shown(strip()),
            "Unable to find show on tvmaze.com. Searched for: no such show|Add Exception\u2026|Retry This File|Open "
            "Folder|Close|");
  EXPECT_EQ(list(1).tip(3) + list(1).tip(1), "Unable to find show on tvmaze.com\nSearched for: no such show");
  on_dialog("Undo Last Pass", "&Undo");
  press(bar(), "Undo &All 2");
  wait_until([&] { return !is_done(1) && !is_done(2); });
  EXPECT_EQ(shown(bar()), "2 undone.|History\u2026|Close|");
  EXPECT_TRUE(exists("in/harbour.lights.s01e01.avi") && exists("in/harbour.lights.s01e02.avi"));
  list(1).select(1);
  wait_until([&] { return !strip().IsShown(); });
  list(1).select(3);
  wait_until([&] { return strip().IsShown(); });

  wxUIActionSimulator keyboard;
  list(1).SetFocus();
  keyboard.Char(WXK_TAB);
  wait_until(
      [&] { return wxWindow::FindFocus() != nullptr && wxWindow::FindFocus()->GetLabel().StartsWith("Add &E"); });
  on_dialog([](wxDialog& dialog) {
    wait_until([&] { return find<wxTextCtrl>(dialog, "detected_name").GetValue() == "no such show"; });
    set_text(dialog, "new_name", "Harbour Lights"), press(dialog, "OK");
  });
  keyboard.Char(WXK_SPACE);
  wait_until([&] { return all_dialogs_came() && !frame->stack().has_dialog(); });
  press(strip(), "Re&try This File");
  wait_until([&] { return is_done(3) && !strip().IsShown(); });
}

TEST_F(AfterPass, NothingJumpsWhileAPassRunsAndNothingIsSaidOfASingleFileThatIsWell) {
  start();
  session->filters.at(1).action = CopyAndRename;
  session->filters.at(1).path = folder / "out/";
  drop({file(unknown), file("harbour.lights.s01e01.avi", std::string(1 << 22, 'x'))});
  std::string seen;
  on_progress = [&] {
    if (!seen.empty()) return;
    wxTheApp->ProcessPendingEvents();
    seen = frame->life().progress() + (strip().IsShown() ? " strip" : "");
    list(1).select(1);  // the user wants to know
    wait_until([&] { return strip().IsShown(); });
    list(1).select(2);
    wait_until([&] { return !strip().IsShown(); });
  };
  run_pass();
  EXPECT_EQ(seen, "1 of 2");
  EXPECT_EQ(frame->life().progress() + shown(bar()), "1 copied, 1 needs you.|Undo|Retry Failed|Close|");
  drop({file("harbour.lights.s01e02.avi")});
  wait_until([&] { return is_done(3) && !session->processor.queue_busy(); });
  wxTheApp->ProcessPendingEvents();
  EXPECT_FALSE(bar().IsShown()) << shown(bar());
  list(1).select(1);
  wait_until([&] { return strip().IsShown(); });
  press(strip(), "&Close");
  wxTheApp->ProcessPendingEvents();
  EXPECT_FALSE(strip().IsShown());
}

TEST_F(AfterPass, CloseWhenDoneLeavesTheWindowOpenOverWhatNeedsTheUser) {
  key_values.numbers["autoclose"] = 1;
  start();
  drop({file(unknown)});
  run_pass();
  wxTheApp->ProcessPendingEvents();
  EXPECT_TRUE(frame && !frame->is_unloading() && logged("The window stays open, for 1 file needs you") == 1);
  on_dialog([this](wxDialog& dialog) {  // which the second pass runs in
    session->queue.at(1).state = QueueState::Cancelled;
    drop({file("harbour.lights.s01e01.avi")});
    wait_until([&] { return is_done(2) && !session->processor.queue_busy(); });
    session->queue.at(1).state = QueueState::Failed;
    press(dialog, "OK");
  });
  command(ui::mnuAbout);
  wxTheApp->ProcessPendingEvents();
  EXPECT_FALSE(frame->is_unloading());
}

}  // namespace quorvel::testing
