// What may happen while a pass runs or a dialog is open, and what real keys do.
#include <wx/uiaction.h>

#include "naming/file_names.h"
#include "system_facts.h"
#include "test_window.h"
#include "ui/text.h"

namespace quorvel::testing {

using ui::from_wx;

class Running : public TestWindow {
 protected:
  const std::string name = "harbour.lights.s01e01.avi", new_name = "The Harbour Lights - 1x01 - Slack Water.avi";
  /// Done to a dialog: the message of the updater.
  const std::function<void(wxDialog&)> end_the_program = [this](wxDialog&) { desktop.handle("QV|UD|"); };

  void start_with(const std::string& bytes, int action = Rename, const std::string& to = "") {
    start();
    session->filters.at(1).action = action;
    session->filters.at(1).path = with_separator(to);
    drop({file(name, bytes)});
  }
};

TEST_F(Running, ThePassAndItsDialogsEndWithTheProgramAndNothingElseIsTouched) {
  for (const int opened : {ui::mnuExit, ui::mnuPrefs, ui::mnuRetry}) {
    start_with("x");
    drop({file("harbour.lights.s01e02.avi")});
    if (opened == ui::mnuPrefs) {
      on_dialog([this](wxDialog& dialog) {
        on_dialog(end_the_program);
        set_text(dialog, "txtTypes", "a");
        press(dialog, "OK");  // and a message over the dialog
      });
    }
    if (opened == ui::mnuRetry) {
      session->settings.confirm = true;
      session->queue.at(1).confirmed = true;  // as after an earlier try
      on_dialog(end_the_program);
    } else {
      wxTheApp->CallAfter([this, opened] {
        EXPECT_TRUE(session->processor.queue_busy());
        command(opened);
      });
    }
    run_pass();
    wait_for_the_end();
    EXPECT_TRUE(exists("in/" + name) && exists("in/harbour.lights.s01e02.avi"));
    EXPECT_EQ(session->queue.at(2).state, QueueState::Inactive);
  }
}

TEST_F(Running, CloseWhenDoneWaitsForAnOpenDialog) {
  key_values.numbers["autoclose"] = 1;
  start_with("x");
  on_dialog([this](wxDialog& dialog) {
    wait_until([this] { return is_done(1) && !session->processor.queue_busy(); });
    ASSERT_TRUE(dialog.IsModal());
    set_text(dialog, "txtTypes", "avi;mov");
    press(dialog, "OK");
  });
  command(ui::mnuPrefs);
  wait_for_the_end();
  EXPECT_EQ(key_values.texts["types"], "avi;mov");
}

TEST_F(Running, FilesHandedOverMeanwhileJoinThePassAndTheTimerStartsNoSecondOne) {
  key_values.numbers["confirm"] = 1;
  start_with("x");
  bool ticked = false;
  frame->Bind(wxEVT_TIMER, [&](wxTimerEvent& event) { ticked = true, event.Skip(); });
  on_dialog([&](wxDialog& dialog) {
    desktop.handle("QV|PI|C=" + file("harbour.lights.s01e03.avi"));
    wait_until([&] { return ticked; });
    command(ui::mnuRetry);
    press(dialog, "OK");
  });
  on_dialog("Confirm File Rename", "OK");
  run_pass();
  EXPECT_TRUE(is_done(1) && is_done(2) && logged("All items processed") == 1);
}

TEST_F(Running, ACopyIsFinishedBeforeTheWindowClosesAndAbandonedWhenThatIsNotWaitedFor) {
  const std::string large(1 << 22, 'x');
  enum { CloseOnce, CloseTwice, Stop, SessionEnds };
  for (const int user : {CloseOnce, CloseTwice, Stop, SessionEnds}) {
    start_with(large, CopyAndRename, folder / "out");
    int reports = 0;
    on_progress = [&] {
      if (++reports > 1) return;
      wxCloseEvent query(wxEVT_QUERY_END_SESSION), end(wxEVT_END_SESSION);
      query.SetCanVeto(true);
      frame->copy_progress(42, 100);
      EXPECT_EQ(rows(1), "harbour.lights.s01e01|The Harbour Lights - 1x01 - Slack Water|Copying 42%;");
      if (user == Stop) return command(ui::mnuStop);
      frame->Close();
      if (user == CloseTwice) frame->Close();
      if (user != SessionEnds) return;
      wxTheApp->ProcessEvent(query);
      EXPECT_TRUE(query.GetVeto());
      wxTheApp->ProcessEvent(end);
    };
    EXPECT_FALSE(frame->GetMenuBar()->IsEnabled(ui::mnuStop));
    run_pass();
    if (user == Stop) {
      EXPECT_EQ(rows(1), "harbour.lights.s01e01||Cancelled;");
      frame->Close();
    }
    wait_for_the_end();
    EXPECT_GT(reports, 0);
    EXPECT_TRUE(read("in/" + name) == large);
    EXPECT_TRUE(user != CloseOnce ? everything_in(folder / "out").empty() : read("out/" + new_name) == large);
    std::filesystem::remove(path_of(folder / ("out/" + new_name)));
  }
}

TEST_F(Running, AnExistingFileIsReplacedOnlyOnTheUsersWord) {
  start_with("new", MoveAndRename, folder / "out");
  write("out/" + new_name, "old");
  on_dialog("Confirm File Replace", "&Keep");
  run_pass();
  EXPECT_EQ(session->queue.at(1).state, QueueState::Failed);
  on_dialog(end_the_program);
  run_pass();
  wait_for_the_end();
  EXPECT_EQ(read("in/" + name) + read("out/" + new_name), "newold");
}

TEST_F(Running, AFileIsNotUndoneTwiceAtOnce) {
  if (!std::filesystem::is_directory(path_of(facts::other_device))) GTEST_SKIP() << "no second file system";
  const TemporaryFolder there(facts::other_device);
  start_with(std::string(1 << 22, 'x'), MoveAndRename, there.path());
  run_pass();
  menu_over(1, -1);
  on_progress = [this] { command(ui::mnuUndo); };
  command(ui::mnuUndo);
  EXPECT_EQ(rows(1), "harbour.lights.s01e01||Cancelled;");
  EXPECT_EQ(everything_in(folder / "in").size(), 1U);
}

TEST_F(Running, TheWindowLivesInTheTrayOnlyWhileThereIsOne) {
  start();
  bool tray = true;
  frame->life().lives_in_tray = [&] { return tray; };
  frame->add_tray_icon("Quorvel");
  std::string seen;
  const auto look = [&] {
    const std::unique_ptr<wxMenu> menu(frame->life().open_tray_menu());
    seen += (menu ? captions(*menu) : "none") + (frame->IsShown() ? " shown, " : " hidden, ");
  };
  look();
  command(ui::mnuShow), look();
  wait_until([&] { return !frame->IsActive(); });
  frame->life().toggle_from_tray();
  wait_until([&] { return frame->IsActive(); });  // the toolkit loses count of a window that goes before it has come
  on_dialog([&](wxDialog& dialog) {
    frame->life().toggle_from_tray(), look();
    press(dialog, "OK");
  });
  command(ui::mnuAbout);
  frame->minimise(), look();
  EXPECT_EQ(seen, "Hide|-|Exit shown, Show|-|Exit hidden, none shown, Show|-|Exit hidden, ");
  tray = false;
  wait_until([&] { return frame->IsShown() && frame->IsIconized(); });
  desktop.handle("QV|PI|C=");
  wait_until([&] { return frame->IsActive() && !frame->IsIconized(); });
}

TEST_F(Running, ASearchForShowsEndsWithItsDialogAndNoPassBeginsMeanwhile) {
  key_values.numbers["exact"] = 1;
  start();
  drop({file("no.such.show.s01e01.avi")});
  run_pass();
  bool ticked = false;
  frame->Bind(wxEVT_TIMER, [&](wxTimerEvent& event) { ticked = true, event.Skip(); });
  menu_over(1, 1);
  on_dialog([&](wxDialog& dialog) {
    wait_until([&] { return find(dialog, "&Search").IsEnabled(); });
    web.before_answer = [&] {
      EXPECT_EQ(from_wx(find(dialog, "result").GetLabel()), "Searching\u2026");
      drop({file("harbour.lights.s01e01.avi")});
      wait_until([&] { return ticked; });
      EXPECT_FALSE(is_done(2));
      EXPECT_TRUE(dialog.IsModal() && web.on_wait());
      dialog.Close();
      if (!web.on_wait()) throw Failure("cancelled");
      ADD_FAILURE() << "the search goes on";
    };
    set_text(dialog, "name", "xyz"), press(dialog, "&Search");
  });
  command(ui::mnuChoose);
  wait_until([&] { return is_done(2); });
}

TEST_F(Running, EscapeClosesTheBarAndStopsNoPass) {
  start();
  drop({file("cafe.noir.s01e01.avi")});
  run_pass();
  auto& bar = find(*frame, "message_bar");
  session->filters.at(1).action = CopyAndRename;
  session->filters.at(1).path = with_separator(folder / "out");
  drop({file(name, std::string(1 << 22, 'x'))});
  on_progress = [&] {
    if (!bar.IsShown()) return;
    wxUIActionSimulator keyboard;
    find(*frame, "ListView1").SetFocus();
    keyboard.Char(WXK_TAB);
    wait_until([&] { return find(*frame, "&Use Exact Names").HasFocus(); });
    keyboard.Char(WXK_ESCAPE);
    wait_until([&] { return !bar.IsShown(); });
  };
  wait_until([&] { return is_done(2); });
  EXPECT_FALSE(bar.IsShown());
}

TEST_F(TestWindow, ListsAnswerRealKeys) {
  wxUIActionSimulator keyboard;
  start();
  const auto focus = [](wxWindow& window) {
    window.SetFocus();
    wait_until([&] { return wxWindow::FindFocus() != nullptr && window.IsDescendant(wxWindow::FindFocus()); });
  };
  session->filters.store(0, session->filters.at(1));
  list(2).select(1);
  for (const int code : {static_cast<int>(WXK_F2), static_cast<int>(WXK_RETURN)}) {
    focus(list(2));
    on_dialog([&](wxDialog& wizard) {
      EXPECT_EQ(wizard.GetTitle(), "Edit Filter Wizard");
      wait_until([&] { return wizard.IsActive(); });
      keyboard.Char(WXK_ESCAPE);
    });
    keyboard.Char(code);
    wait_until([&] { return all_dialogs_came() && !frame->stack().has_dialog() && frame->IsActive(); });
  }
  focus(list(2));
  keyboard.Char(WXK_DELETE);
  wait_until([&] { return session->filters.count() == 1; });
  focus(list(1));
  keyboard.Char(WXK_TAB);
  wait_until([&] { return find(*frame, "exact_names").HasFocus(); });
  keyboard.Char(WXK_SPACE);
  wait_until([&] { return session->settings.exact && key_values.numbers["exact"] == 1; });
}

}  // namespace quorvel::testing
