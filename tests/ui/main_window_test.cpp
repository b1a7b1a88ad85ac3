#include <wx/hyperlink.h>
#include <wx/listctrl.h>
#include <wx/notebook.h>

#include "test_window.h"
#include "ui/text.h"

namespace quorvel::testing {
namespace {

using ui::from_wx;

std::string captions(const wxMenu& menu) {
  std::string all;
  for (const wxMenuItem* const item : menu.GetMenuItems()) {
    all += (all.empty() ? "" : "|") + (item->IsSeparator() ? "-" : from_wx(item->GetItemLabelText()));
  }
  return all;
}

TEST_F(TestWindow, ShowsTheMenusAndTabsByTheirNames) {
  start();
  EXPECT_EQ(frame->GetTitle(), "Quorvel 3.4");
  const wxMenuBar& bar = *frame->GetMenuBar();
  ASSERT_EQ(bar.GetMenuCount(), 3U);
  const std::pair<const char*, const char*> menus[] = {
      {"File", "Add File|-|Exit"},
      {"Options", "Preferences"},
      {"Help", "Quorvel Help|Check For Updates|Quorvel Website|-|About Quorvel"}};
  for (std::size_t i = 0; i < 3; ++i) {
    EXPECT_EQ(bar.GetMenuLabelText(i), menus[i].first);
    EXPECT_EQ(captions(*bar.GetMenu(i)), menus[i].second);
  }
  const auto& tabs = find<wxNotebook>(*frame, "TabStrip1");
  EXPECT_EQ(tabs.GetPageText(0) + "|" + tabs.GetPageText(1) + "|" + tabs.GetPageText(2),
            "File Queue|Filter List|Exceptions");
}

TEST_F(TestWindow, EachTabShowsItsOwnListAndButtons) {
  start();
  const std::vector<const char*> of_tab[] = {{"ListView1"},
                                             {"ListView2", "Command1", "Command2", "Command3"},
                                             {"ListView3", "Command4", "Command5", "Command6"}};
  for (const int tab : {1, 2, 0}) {
    find<wxNotebook>(*frame, "TabStrip1").SetSelection(static_cast<std::size_t>(tab));
    for (int other = 0; other < 3; ++other) {
      for (const char* const name : of_tab[other]) {
        EXPECT_EQ(find<wxWindow>(*frame, name).IsShownOnScreen(), other == tab) << name;
      }
    }
  }
  EXPECT_EQ(label(*frame, "Command3") + label(*frame, "Command1") + label(*frame, "Command2"),
            "Move UpMove DownAdd New");
  EXPECT_EQ(label(*frame, "Command4") + label(*frame, "Command5") + label(*frame, "Command6"),
            "Move UpMove DownAdd New");
}

TEST_F(TestWindow, DroppedFoldersAreRenamedByThePassThatTheTimerStarts) {
  start();
  const auto& list = find<ui::QueueList>(*frame, "ListView1");
  EXPECT_TRUE(list.hint_is_shown());
  file("Harbour.Lights/harbour.lights.s01e01.avi");
  const std::string stray = file("nothing.avi");
  drop({(folder / "in/Harbour.Lights").string(), stray});
  EXPECT_FALSE(list.hint_is_shown());
  EXPECT_EQ(cell("ListView1", 1, 0), "harbour.lights.s01e01");
  wait_until([&] { return session->queue.at(2).state == QueueState::Failed && idle(); });
  const std::string name = session->queue.at(1).new_name;
  EXPECT_TRUE(exists("in/Harbour.Lights/" + name)) << log();
  EXPECT_EQ(cell("ListView1", 1, 1) + ".avi|" + cell("ListView1", 1, 2), name + "|Done");
  EXPECT_EQ(cell("ListView1", 2, 2), "Failed");
  EXPECT_EQ(list.selected(), 2);
  EXPECT_NE(log().find("All items processed"), std::string::npos);
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
  EXPECT_GE(list.GetTopItem(), 10000 - list.GetCountPerPage() - 1);
  EXPECT_THROW(frame->update_row(10001, {}), Failure);
}

TEST_F(TestWindow, TheLogFollowsItsNewestLineWithoutAHighlight) {
  start();
  for (int i = 0; i < 1200; ++i) session->log.debug_log("line " + std::to_string(i), 1);
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
  auto& list = find<ui::RuleList>(*frame, "ListView3");
  find<wxNotebook>(*frame, "TabStrip1").SetSelection(2);
  press(*frame, "Command5");  // nothing is selected
  list.select(1);
  for (int i = 0; i < 3; ++i) press(*frame, "Command5");
  const auto order = [&] { return cell("ListView3", 1, 0) + cell("ListView3", 2, 0) + cell("ListView3", 3, 0); };
  EXPECT_EQ(order() + std::to_string(list.selected()), "bca3");
  for (int i = 0; i < 3; ++i) press(*frame, "Command4");
  EXPECT_EQ(order() + std::to_string(list.selected()), "abc1");
  command(ui::mnuRemEx);
  EXPECT_EQ(std::to_string(list.GetItemCount()) + cell("ListView3", list.selected(), 0), "2b");

  find<wxNotebook>(*frame, "TabStrip1").SetSelection(1);
  auto& filters = find<ui::RuleList>(*frame, "ListView2");
  filters.select(1);
  on_dialog("Unable to remove filter", "OK");
  command(ui::mnuRemFilter);
  session->filters.append(session->filters.at(1));
  session->filters.at(2).mask = "[title]";
  ASSERT_TRUE(session->filters.savefilters());
  session->filters.refresh_lv2();
  filters.select(2);
  press(*frame, "Command3");
  EXPECT_EQ(cell("ListView2", 1, 2) + std::to_string(filters.selected()), "[title]1");
  command(ui::mnuRemFilter);
  EXPECT_EQ(cell("ListView2", 1, 2), "[show] - [s]x[ee] - [title]");
}

TEST_F(TestWindow, ListMenusFitWhatTheyAreFor) {
  start();
  drop({file("harbour.lights.s01e01.avi"), file("nothing.avi")});
  run_pass();
  ASSERT_TRUE(is_done(1)) << log();
  std::string shown;
  frame->pop_up = [&](wxWindow&, wxMenu& menu, const wxPoint&) { shown = captions(menu); };
  const auto over = [&](const char* list, long row) {
    auto& control = find<wxListCtrl>(*frame, list);
    find<wxNotebook>(*frame, "TabStrip1").SetSelection(std::string("123").find(list[8]));
    wxRect area;
    wxPoint at(5, control.GetClientSize().y - 5);
    if (row >= 0 && control.GetItemRect(row, area)) at = wxPoint(area.x + 30, area.y + area.height / 2);
    wxContextMenuEvent event(wxEVT_CONTEXT_MENU, control.GetId(), control.ClientToScreen(at));
    shown.clear();
    control.ProcessWindowEvent(event);
    return shown;
  };
  EXPECT_EQ(over("ListView1", -1), "");
  EXPECT_EQ(over("ListView1", 1), "Item Info|Undo Rename|Add Exception|-|Retry Failed");
  EXPECT_EQ(over("ListView2", 0), "Edit Filter|Remove Filter|-|Add Filter");
  EXPECT_EQ(over("ListView2", -1), "Add Filter");
  EXPECT_EQ(over("ListView3", -1), "Add Exception");
  session->exceptions.append({"a", "b", false});
  session->exceptions.refresh_lv3();
  EXPECT_EQ(over("ListView3", 0), "Add Exception|Remove Exception");

  over("ListView1", 0);
  command(ui::mnuUndo);
  EXPECT_TRUE(exists("in/harbour.lights.s01e01.avi"));
  EXPECT_EQ(cell("ListView1", 1, 2) + cell("ListView1", 1, 1), "Cancelled");
  command(ui::mnuRetry);
  EXPECT_TRUE(is_done(1));
}

TEST_F(TestWindow, TheHelpMenuLeadsOut) {
  store.texts["updater"] = "/opt/tarn";
  start();
  on_dialog("Quorvel", "OK");
  command(ui::mnuHelpGuide);
  command(ui::mnuWeb);
  command(ui::mnuUpdate);
  const std::string handle = std::to_string(reinterpret_cast<std::uintptr_t>(frame->GetHandle()));
  EXPECT_EQ(recorder.calls,
            (std::vector<std::string>{"open https://quorvel.example/?v=3.4",
                                      "start /opt/tarn package=Quorvel,apppath=" + (folder / "program").string() +
                                          ",runcount=123,version=3400,handle=" + handle}));
  recorder.calls.clear();
  on_dialog([this](wxDialog& about) {
    EXPECT_EQ(about.GetTitle(), "About Quorvel");
    find<wxWindow>(about, "Version 3.4  Build 0");
    wxCommandEvent click(wxEVT_HYPERLINK);
    named(about, "https://quorvel.example")->ProcessWindowEvent(click);
    wxKeyEvent key(wxEVT_CHAR_HOOK);
    about.ProcessWindowEvent(key);
    press(about, "OK");
  });
  command(ui::mnuAbout);
  EXPECT_EQ(recorder.calls, std::vector<std::string>{"open https://quorvel.example/?v=3.4"});
  EXPECT_NE(log().find("Using SocketWrench libcurl "), std::string::npos);
}

TEST_F(TestWindow, AddFileOffersTheListedTypes) {
  start();
  on_dialog([](wxDialog& dialog) {
    auto& picker = dynamic_cast<wxFileDialog&>(dialog);
    EXPECT_EQ(picker.GetMessage(), "Select File");
    EXPECT_EQ(picker.GetWildcard(), "Supported Types|*.avi;*.mkv;*.mpg;*.mp4|All Files|*.*");
    EXPECT_TRUE(picker.HasFlag(wxFD_MULTIPLE));
    picker.EndModal(wxID_CANCEL);
  });
  command(ui::mnuOpen);
  EXPECT_EQ(session->queue.count(), 0);
}

}  // namespace
}  // namespace quorvel::testing
