#include <wx/dnd.h>
#include <wx/filedlg.h>
#include <wx/listctrl.h>
#include <wx/notebook.h>

#include "test_window.h"
#include "ui/text.h"

namespace quorvel::testing {

using ui::from_wx;

TEST_F(TestWindow, EachMenuAndTabHoldsWhatBelongsThere) {
  start();
  EXPECT_EQ(frame->GetTitle(), "Quorvel 3.4");
  std::string bar;
  const wxMenuBar& menus = *frame->GetMenuBar();
  for (std::size_t i = 0; i < menus.GetMenuCount(); ++i) {
    bar += from_wx(menus.GetMenuLabelText(i)) + ":" + captions(*menus.GetMenu(i)) + ";";
  }
  EXPECT_EQ(bar,
            "File:Add File|-|Exit;Options:Preferences;"
            "Help:Quorvel Help|Check For Updates|Quorvel Website|-|About Quorvel;");
  const std::vector<const char*> of_tab[] = {{"ListView1"},
                                             {"ListView2", "Command1", "Command2", "Command3"},
                                             {"ListView3", "Command4", "Command5", "Command6"}};
  auto& tabs = find<wxNotebook>(*frame, "TabStrip1");
  EXPECT_EQ(tabs.GetPageText(0) + tabs.GetPageText(1) + tabs.GetPageText(2), "File QueueFilter ListExceptions");
  for (const std::size_t tab : {1U, 2U, 0U}) {
    tabs.SetSelection(tab);
    for (std::size_t other = 0; other < 3; ++other) {
      for (const char* const name : of_tab[other]) {
        EXPECT_EQ(find<wxWindow>(*frame, name).IsShownOnScreen(), other == tab) << name;
      }
    }
  }
  for (const auto& [up, down, add] :
       {std::tuple("Command3", "Command1", "Command2"), {"Command4", "Command5", "Command6"}}) {
    EXPECT_EQ(label(*frame, up) + label(*frame, down) + label(*frame, add), "Move UpMove DownAdd New");
  }
}

TEST_F(TestWindow, DroppedFoldersAreRenamedByThePassThatTheTimerStarts) {
  start();
  const auto& list = find<ui::QueueList>(*frame, "ListView1");
  EXPECT_TRUE(list.hint_is_shown());
  file("Harbour.Lights/harbour.lights.s01e01.avi");
  const std::string odd = file(odd_name.bytes + ".s01e01.avi");
  drop({path("in/Harbour.Lights"), odd});
  wait_until([&] { return !list.hint_is_shown(); });
  EXPECT_EQ(cell("ListView1", 1, 0) + "|" + cell("ListView1", 2, 0),
            "harbour.lights.s01e01|" + odd_name.shown + ".s01e01");
  EXPECT_EQ(session->queue.at(2).path, odd);
  wait_until([&] { return session->queue.at(2).state == QueueState::Failed && idle(); });
  const std::string name = session->queue.at(1).new_name;
  EXPECT_TRUE(exists("in/Harbour.Lights/" + name)) << log();
  EXPECT_EQ(cell("ListView1", 1, 1) + ".avi|" + cell("ListView1", 1, 2), name + "|Done");
  EXPECT_EQ(cell("ListView1", 2, 2), "Failed");
  wait_until([&] { return list.selected() == 2; });
  EXPECT_EQ(count(log(), "All items processed"), 1);
}

TEST_F(TestWindow, TenThousandRowsCostNoMoreThanThoseInSight) {
  start();
  const auto begin = std::chrono::steady_clock::now();
  for (int i = 1; i <= 10000; ++i) frame->add_row(i, "file " + std::to_string(i));
  for (int i = 1; i <= 10000; ++i) {
    frame->update_row(i, {true, RowUpdate::DoneIcon, "new", "Done", true});
    if (i % 100 == 0) frame->process_events();
  }
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(10));
  const auto& list = find<ui::QueueList>(*frame, "ListView1");
  EXPECT_EQ(cell("ListView1", 10000, 0) + cell("ListView1", 10000, 2), "file 10000Done");
  wait_until([&] { return list.GetTopItem() >= 10000 - list.GetCountPerPage() - 1; });
  EXPECT_THROW(frame->update_row(10001, {}), Failure);
}

TEST_F(TestWindow, TheLogFollowsItsNewestLineWithoutAHighlight) {
  start();
  for (int i = 0; i < 1200; ++i) session->log.debug_log("line " + std::to_string(i), LogLevel::Normal);
  const auto& box = find<wxListBox>(*frame, "List3");
  EXPECT_EQ(box.GetCount(), session->log.lines().size());
  EXPECT_EQ(from_wx(box.GetString(box.GetCount() - 1)), session->log.lines().back());
  EXPECT_EQ(box.GetSelection(), wxNOT_FOUND);
  wait_until([&] { return box.GetTopItem() + box.GetCountPerPage() >= static_cast<int>(box.GetCount()) - 1; });
}

TEST_F(TestWindow, RulesMoveWithTheirSelectionAndStopAtTheEnds) {
  start();
  for (const char* const name : {"a", "b", "c"}) session->exceptions.append({name, "x", false});
  ASSERT_TRUE(session->exceptions.saveefilters());
  session->exceptions.refresh_lv3();
  auto& list = rules(3);
  const auto order = [&] {
    return cell("ListView3", 1, 0) + cell("ListView3", 2, 0) + cell("ListView3", 3, 0) +
           std::to_string(list.selected());
  };
  press(*frame, "Command5");  // nothing is selected
  list.select(1);
  for (int i = 0; i < 3; ++i) press(*frame, "Command5");
  EXPECT_EQ(order(), "bca3");
  for (int i = 0; i < 3; ++i) press(*frame, "Command4");
  EXPECT_EQ(order(), "abc1");
  command(ui::mnuRemEx);
  EXPECT_EQ(std::to_string(list.GetItemCount()) + cell("ListView3", list.selected(), 0), "2b");

  rules(2).select(1);
  on_dialog("Unable to remove filter", "OK");
  command(ui::mnuRemFilter);
  session->filters.append(session->filters.at(1));
  session->filters.at(2).mask = "[title]";
  ASSERT_TRUE(session->filters.savefilters());
  session->filters.refresh_lv2();
  rules(2).select(2);
  press(*frame, "Command3");
  EXPECT_EQ(cell("ListView2", 1, 2) + std::to_string(rules(2).selected()), "[title]1");
  command(ui::mnuRemFilter);
  EXPECT_EQ(cell("ListView2", 1, 2), "[show] - [s]x[ee] - [title]");
}

TEST_F(TestWindow, ListMenusFitWhatTheyAreForAndUndoAndRetryWhatTheySay) {
  start();
  drop({file("harbour.lights.s01e01.avi"), file("nothing.avi")});
  run_pass();
  ASSERT_TRUE(is_done(1)) << log();
  session->exceptions.append({"a", "b", false});
  session->exceptions.refresh_lv3();
  EXPECT_EQ(menu_over(1, 0) + menu_over(2, 0) + menu_over(3, 0), "Add FilterAdd Exception");
  EXPECT_EQ(menu_over(2, 1), "Edit Filter|Remove Filter|-|Add Filter");
  EXPECT_EQ(menu_over(3, 1), "Add Exception|Remove Exception");
  EXPECT_EQ(menu_over(1, 1), "Item Info|Undo Rename|Add Exception|-|Retry Failed");
  command(ui::mnuUndo);
  EXPECT_TRUE(exists("in/harbour.lights.s01e01.avi"));
  EXPECT_EQ(cell("ListView1", 1, 2) + cell("ListView1", 1, 1), "Cancelled");
  command(ui::mnuRetry);
  EXPECT_TRUE(is_done(1));
}

TEST_F(TestWindow, TheFileAndHelpMenusLeadOut) {
  store.texts["updater"] = "/opt/tarn";
  start();
  on_dialog([](wxDialog& dialog) {
    auto& picker = dynamic_cast<wxFileDialog&>(dialog);
    EXPECT_EQ(picker.GetMessage(), "Select File");
    EXPECT_EQ(picker.GetWildcard(), "Supported Types|*.avi;*.mkv;*.mpg;*.mp4|All Files|*.*");
    cancel(picker);
  });
  command(ui::mnuOpen);
  on_dialog("Quorvel", "OK");
  command(ui::mnuHelpGuide);
  command(ui::mnuUpdate);
  on_dialog([](wxDialog& about) {
    EXPECT_EQ(about.GetTitle(), "About Quorvel");
    find<wxWindow>(about, "Version 3.4  Build 0");
    find<wxWindow>(about, "https://quorvel.example"), click(about, "website");
    type(about, 'A', false);
    press(about, "OK");
  });
  command(ui::mnuAbout);
  command(ui::mnuWeb);
  const std::string handle = std::to_string(reinterpret_cast<std::uintptr_t>(frame->GetHandle()));
  const std::string updater =
      "start /opt/tarn package=Quorvel,apppath=" + path("program") + ",runcount=123,version=3400,handle=" + handle;
  const std::string web = "open https://quorvel.example/?v=3.4";
  EXPECT_EQ(recorder.calls, (std::vector<std::string>{updater, web, web}));
  EXPECT_EQ(count(log(), "Using SocketWrench libcurl "), 1);
}

}  // namespace quorvel::testing
