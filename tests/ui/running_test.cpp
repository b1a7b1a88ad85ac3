// What may happen while a pass runs or a dialog is open.
#include <wx/listctrl.h>
#include <wx/uiaction.h>

#include "shell/commands.h"
#include "test_window.h"
#include "ui/text.h"

namespace quorvel::testing {
class Running : public TestWindow {
 protected:
  void start_with_files() {
    start();
    drop({file("harbour.lights.s01e01.avi"), file("harbour.lights.s01e02.avi")});
  }
  void start_a_long_copy() {
    start();
    rule(CopyAndRename, path("out"));
    drop({file("harbour.lights.s01e01.avi", std::string(1 << 22, 'x'))});
  }
};

TEST_F(Running, ClosingWaitsForTheStageAndLeavesTheRestAlone) {
  start_with_files();
  in_the_pass([this] {
    frame->Close();
    EXPECT_NE(log().find("Got quit signal, finishing up..."), std::string::npos);
  });
  run_pass();
  wait_for_the_end();
  EXPECT_TRUE(exists("in/harbour.lights.s01e01.avi") && exists("in/harbour.lights.s01e02.avi"));
  EXPECT_EQ(session->queue.at(2).state, QueueState::Inactive);
}

TEST_F(Running, CloseWhenDoneWaitsForAnOpenDialog) {
  store.numbers["autoclose"] = 1;
  start_with_files();
  on_dialog([this](wxDialog& dialog) {
    wait_until([this] { return is_done(2) && idle(); });
    ASSERT_TRUE(dialog.IsModal());
    set_text(dialog, "txtTypes", "avi;mov");
    press(dialog, "OK");
  });
  command(ui::mnuPrefs);
  wait_for_the_end();
  EXPECT_EQ(store.texts["types"], "avi;mov");
}

TEST_F(Running, TheUpdatersMessageEndsAPassThatADialogHoldsUp) {
  start_with_files();
  on_dialog([this](wxDialog& dialog) {
    on_dialog([this](wxDialog&) { recorder.handle("QV|UD|"); });
    set_text(dialog, "txtTypes", "a");
    press(dialog, "OK");  // and a message over the dialog
  });
  in_the_pass([this] { command(ui::mnuPrefs); });
  run_pass();
  wait_for_the_end();
  EXPECT_EQ(files_in("in"), 2U);
  EXPECT_EQ(session->queue.at(2).state, QueueState::Inactive);
}

TEST_F(Running, AQuestionThatTheProgramsEndClosesIsNoConsent) {
  store.numbers["confirm"] = 1;
  start_with_files();
  session->queue.at(1).confirmed = true;  // as after an earlier try
  on_dialog([this](wxDialog&) { recorder.handle("QV|UD|"); });
  run_pass();
  wait_for_the_end();
  EXPECT_TRUE(exists("in/harbour.lights.s01e01.avi") && exists("in/harbour.lights.s01e02.avi"));
}

TEST_F(Running, FilesHandedOverMeanwhileJoinThePassAndTheTimerStartsNoSecondOne) {
  store.numbers["confirm"] = 1;
  start_with_files();
  const std::string late = file("harbour.lights.s01e03.avi");
  bool ticked = false;
  frame->Bind(wxEVT_TIMER, [&](wxTimerEvent& event) { ticked = true, event.Skip(); });
  on_dialog([&](wxDialog& dialog) {
    recorder.handle("QV|PI|C=" + late);
    wait_until([&] { return ticked; });
    command(ui::mnuRetry);
    press(dialog, "OK");
  });
  for (int i = 0; i < 2; ++i) on_dialog("Confirm File Rename", "OK");
  run_pass();
  EXPECT_TRUE(is_done(1) && is_done(2) && is_done(3));
  EXPECT_EQ(count(log(), "All items processed"), 1);
}

TEST_F(Running, AnItemKeepsToTheRuleItWasMatchedWith) {
  store.numbers["confirm"] = 1;
  start();
  drop({file("harbour.lights.s01e01.avi")});
  on_dialog([&](wxDialog& dialog) {
    rule(CopyAndRename, path("out"));
    session->filters.at(1).mask = "[title]";
    press(dialog, "OK");
  });
  run_pass();
  EXPECT_FALSE(exists("in/harbour.lights.s01e01.avi") || exists("out"));
  EXPECT_TRUE(exists("in/" + session->queue.at(1).new_name) && session->queue.at(1).new_name.starts_with("The "));
  choose_selected_item();
  command(ui::mnuUndo);
  EXPECT_TRUE(exists("in/harbour.lights.s01e01.avi"));
}

TEST_F(Running, ACopyTellsHowFarItIsAndIsFinishedBeforeTheWindowCloses) {
  start_a_long_copy();
  on_progress = [this] {
    if (progress_reports > 1) return;
    frame->copy_progress(42, 100);
    EXPECT_EQ(cell("ListView1", 1, 2), "Copying 42%");
    frame->Close();
  };
  run_pass();
  wait_for_the_end();
  ASSERT_GT(progress_reports, 0);
  EXPECT_EQ(files_in("in") + files_in("out"), 2U);
  EXPECT_EQ(std::filesystem::file_size(path_of(session->queue.at(1).dest_path + session->queue.at(1).new_name)),
            1U << 22);
}

TEST_F(Running, TheSessionsEndIsHeldUpAndThenGivesACopyUp) {
  start_a_long_copy();
  on_progress = [this] {
    wxCloseEvent query(wxEVT_QUERY_END_SESSION);
    query.SetCanVeto(true);
    wxTheApp->ProcessEvent(query);
    EXPECT_TRUE(query.GetVeto());
    wxCloseEvent end(wxEVT_END_SESSION);
    wxTheApp->ProcessEvent(end);
  };
  run_pass();
  wait_for_the_end();
  ASSERT_GT(progress_reports, 0);
  EXPECT_EQ(std::to_string(files_in("in")) + std::to_string(files_in("out")), "10");
}

TEST_F(Running, AnExistingFileIsReplacedOnlyOnTheUsersWord) {
  start();
  rule(MoveAndRename, path("out"));
  file("../out/The Harbour Lights - 1x01 - Slack Water.avi", "old");
  drop({file("harbour.lights.s01e01.avi", "new")});
  on_dialog("Confirm File Replace", "Keep");
  run_pass();
  EXPECT_EQ(cell("ListView1", 1, 2), "Failed");
  on_dialog([this](wxDialog&) { recorder.handle("QV|UD|"); });
  run_pass();
  wait_for_the_end();
  EXPECT_EQ(files_in("in") + files_in("out"), 2U);
}

TEST_F(Running, AFileIsNotUndoneTwiceAtOnce) {
  if (!std::filesystem::is_directory("/dev/shm")) GTEST_SKIP() << "no second file system";
  start();
  const TemporaryFolder there("/dev/shm");
  rule(MoveAndRename, there.path());
  drop({file("harbour.lights.s01e01.avi", std::string(1 << 22, 'x'))});
  run_pass();
  EXPECT_TRUE(is_done(1)) << log();
  choose_selected_item();
  on_progress = [this] { command(ui::mnuUndo); };
  command(ui::mnuUndo);
  EXPECT_EQ(cell("ListView1", 1, 2), "Cancelled") << log();
  EXPECT_EQ(files_in("in"), 1U);
}

TEST_F(Running, TheWindowLivesInTheTrayOnlyWhileThereIsOne) {
  start();
  bool tray = true;
  frame->life().tray_is_available = [&] { return tray; };
  frame->add_tray_icon("Quorvel");
  const auto first_entry = [&] {
    const std::unique_ptr<wxMenu> menu(frame->life().open_tray_menu());
    return menu ? ui::from_wx(menu->FindItemByPosition(0)->GetItemLabelText()) : "";
  };
  EXPECT_EQ(first_entry(), "Hide");
  command(ui::mnuShow);
  EXPECT_FALSE(frame->IsShown());
  EXPECT_EQ(first_entry(), "Show");
  frame->life().toggle_from_tray();
  EXPECT_TRUE(frame->IsShown());
  on_dialog([&](wxDialog& dialog) {
    EXPECT_EQ(first_entry(), "");
    frame->life().toggle_from_tray();
    EXPECT_TRUE(frame->IsShown());
    press(dialog, "OK");
  });
  command(ui::mnuAbout);
  frame->minimise();
  EXPECT_FALSE(frame->IsShown());
  tray = false;
  wait_until([&] { return frame->IsShown() && frame->IsIconized(); });
}

// With real keys.

static void key(int code, int modifiers = 0) {
  wxUIActionSimulator().Char(code, modifiers);
}

TEST_F(TestWindow, RulesAreEditedAndRemoved) {
  start();
  session->filters.append(session->filters.at(1));
  ASSERT_TRUE(session->filters.savefilters());
  session->filters.refresh_lv2();
  auto& list = rules(2);
  list.select(1);
  focus("ListView2");
  for (const int code : {static_cast<int>(WXK_F2), static_cast<int>(WXK_RETURN)}) {
    bool came = false;
    on_dialog([&](wxDialog& wizard) {
      EXPECT_EQ(wizard.GetTitle(), "Edit Filter Wizard");
      came = true;
      wait_until([&] { return wizard.IsActive(); });
      key(WXK_ESCAPE);
    });
    key(code);
    wait_until([&] { return came && frame->IsActive(); });
    focus("ListView2");
  }
  key(WXK_DELETE);
  wait_until([&] { return list.GetItemCount() == 1; });
}

TEST_F(TestWindow, MenusOpenByKeyAndByTheRightButton) {
  start();
  drop({file("nothing.avi"), file("harbour.lights.s01e01.avi")});
  run_pass();
  int shown = 0;
  frame->stack().show_menu = [&](wxWindow&, wxMenu& menu, const wxPoint&) { shown = menu.IsEnabled(ui::mnuUndo) ? 2 : 1; };
  focus("ListView1");
  key(menu_key.code, menu_key.modifiers);
  wait_until([&] { return shown == 2; });
  auto& list = find<wxListCtrl>(*frame, "ListView1");
  wxRect area;
  list.GetItemRect(0, area);
  wxUIActionSimulator mouse;
  mouse.MouseMove(list.ClientToScreen(wxPoint(40, area.y + area.height / 2)));
  mouse.MouseClick(wxMOUSE_BTN_RIGHT);
  wait_until([&] { return shown == 1; });
  bool came = false;
  on_dialog([&](wxDialog& dialog) { came = true, cancel(dialog); });
  key('O', wxMOD_CONTROL);
  wait_until([&] { return came; });
}

TEST_F(TestWindow, TheHelpOpensByItsKeyFromTheWindowAndFromADialog) {
  const std::string help = help_file({path("data"), path("program"), {}, {}});
  std::filesystem::create_directories(path_of(help).parent_path());
  write_file(help, "x");
  start();
  key(WXK_F1);
  wait_until([&] { return recorder.calls.size() == 1; });
  on_dialog([&](wxDialog& dialog) {
    wait_until([&] { return dialog.IsActive() && wxWindow::FindFocus() != nullptr; });
    key(WXK_F1);
    wait_until([&] { return recorder.calls.size() == 2; });
    key(WXK_ESCAPE);
  });
  command(ui::mnuPrefs);
  EXPECT_EQ(recorder.calls, std::vector<std::string>(2, "open " + help));
}

TEST_F(TestWindow, TabAndTheUnderlinedLettersGoThroughThePreferences) {
  start();
  std::string order;
  on_dialog([&](wxDialog& dialog) {
    wait_until([&] { return dialog.IsActive() && wxWindow::FindFocus() != nullptr; });
    for (int i = 0; i < 9; ++i) {
      wxWindow* const focused = wxWindow::FindFocus();
      order += ui::from_wx(wxControl::RemoveMnemonics(focused->GetLabel())).substr(0, 9) + "|";
      key(WXK_TAB);
      wait_until([&] { return wxWindow::FindFocus() != focused; });
    }
    key('U', wxMOD_ALT);
    wait_until([&] { return find<wxCheckBox>(dialog, "Check4").GetValue(); });
    key(WXK_ESCAPE);
  });
  command(ui::mnuPrefs);
  EXPECT_EQ(order, "Close whe|Verbose L|Confirm F|Disable C|Disable U|Add To Co||OK|Cancel|");
}

}  // namespace quorvel::testing
