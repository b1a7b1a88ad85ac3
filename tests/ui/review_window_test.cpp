// The review: what a pass has planned is looked at, corrected, applied, and undone.
#include <wx/uiaction.h>

#include "test_window.h"
#include "ui/review_page.h"
#include "ui/text.h"

namespace quorvel::testing {

using ui::from_wx;
using ui::ReviewModel;

class ReviewWindow : public TestWindow {
 protected:
  const std::string first = "harbour.lights.s01e01.avi", second = "harbour.lights.s01e02.avi";
  const std::string slack_water = "The Harbour Lights - 1x01 - Slack Water.avi";

  void start_review(const std::vector<std::string>& names) {
    key_values.numbers["review"] = 1;
    start();
    std::vector<std::string> paths;
    paths.reserve(names.size());
    for (const std::string& name : names) paths.push_back(file(name));
    drop(paths);
  }
  bool is_shown() const { return find(*frame, "review").IsShown(); }
  ui::ReviewTree& tree() const { return find<ui::ReviewTree>(*frame, "review_tree"); }
  std::string text(const char* name) const { return from_wx(find(*frame, name).GetLabel()); }
  std::string details() const { return from_wx(find<wxTextCtrl>(*frame, "review_details").GetValue()); }
  /// The cells of its rows, those of a group after "#", those of what goes along after "+".
  std::string sheet() const {
    ReviewModel& model = tree().model();
    std::string all;
    const auto add = [&](const wxDataViewItem& row) {
      for (unsigned column = 0; column <= ReviewModel::Status; ++column) {
        wxVariant value;
        wxDataViewIconText status;
        model.GetValue(value, row, column);
        if (column == ReviewModel::Status) status << value;
        if (column == ReviewModel::Tick) all += value.GetBool() ? "x " : "o ";
        if (column == ReviewModel::Folder || column == ReviewModel::Tick) continue;
        all += from_wx(column == ReviewModel::Status ? status.GetText() : value.GetString() + "|");
      }
      all += ";";
    };
    for (const wxDataViewItem& group : model.groups()) {
      all += "#", add(group);
      wxDataViewItemArray files;
      model.GetChildren(group, files);
      for (const wxDataViewItem& row : files) {
        add(row);
        wxDataViewItemArray companions;
        model.GetChildren(row, companions);
        for (const wxDataViewItem& companion : companions) all += "+", add(companion);
      }
    }
    return all;
  }
  void type_into_cell(const char* letters) {
    wxUIActionSimulator keyboard;
    auto& box = find<wxTextCtrl>(*frame, "cell_text");
    wait_until([&] { return box.HasFocus(); });
    box.SetValue(letters);
    keyboard.Char(WXK_RETURN);
  }
};

TEST_F(ReviewWindow, NamesAndEpisodesAreCorrectedInPlaceAndTickedFilesAppliedAndUndone) {
  start_review({first, second, "harbour.lights.s01e99.avi"});
  session->settings.companions = "srt";
  file("harbour.lights.s01e02.en.srt");
  wxUIActionSimulator keyboard;
  run_pass();
  wait_until([&] { return is_shown() && !list(1).IsShown(); });
  EXPECT_EQ(sheet(), "#x harbour lights|The Harbour Lights||2 of 3 files;x " + first +
                         "|<b>The</b> Harbour Lights - <b>1x01 - Slack Water</b>.avi|1x01|Ready;x " + second +
                         "|<b>The</b> Harbour Lights - <b>1x02 - The Pilot Boat</b>.avi|1x02|Ready, with 1 more;+x "
                         "harbour.lights.s01e02.en.srt|<b>The</b> Harbour Lights - <b>1x02 - The Pilot "
                         "Boat</b>.en.srt||;o harbour.lights.s01e99.avi||"
                         "1x99|Episode unknown;");
  EXPECT_EQ(text("heading"), "3 files, 2 ready, 1 problem");
  EXPECT_TRUE(exists("in/" + first) && exists("in/" + second));

  tree().select({1}), tree().control().SetFocus();
  keyboard.Char(WXK_F2);
  type_into_cell("A?");
  wait_until([&] { return details().starts_with("A name cannot have any of"); });
  session->processor.on_pass_ended();  // what happens meanwhile leaves the box as it is
  EXPECT_EQ(find<wxTextCtrl>(*frame, "cell_text").GetValue(), "A?");
  type(find(*frame, "cell_text"), 'Z', true);
  EXPECT_EQ(find<wxTextCtrl>(*frame, "cell_text").GetValue() + ".avi", slack_water);
  type_into_cell("A");
  wait_until([&] { return sheet().find("|<b>A</b>.avi|1x01|Ready;") != std::string::npos; });
  wait_until([&] { return tree().control().IsDescendant(wxWindow::FindFocus()); });

  tree().select({3});
  keyboard.Char(WXK_F2, wxMOD_SHIFT);
  type_into_cell("Fog");
  wait_until([&] { return details() == "Enter season and episode as in \"2x05\"."; });
  type_into_cell("1x03");
  wait_until([&] { return sheet().ends_with("A Lantern for Maud</b>.avi|1x03|Ready;"); });
  EXPECT_EQ(tree().selection(), std::vector{3});

  tree().select({2});
  keyboard.Char(WXK_SPACE);
  wait_until([&] { return text("heading") == "3 files, 3 ready" && text("review_apply") == "&Apply 2"; });
  keyboard.Char(WXK_RETURN, wxMOD_CONTROL);
  wait_until([&] { return !is_shown() && session->queue.at(3).state == QueueState::Done; });
  EXPECT_TRUE(exists("in/A.avi") && exists("in/" + second) && session->queue.at(2).state == QueueState::Cancelled);
  on_dialog("Undo Last Pass", "&Undo");
  command(ui::mnuUndoPass);
  EXPECT_TRUE(exists("in/" + first) && !exists("in/A.avi") && exists("in/harbour.lights.s01e99.avi"));
}

TEST_F(ReviewWindow, ItIsSeenWhileThePassGoesOnAndAppliesNothingBeforeThat) {
  start_review({first, "night.train.s01e02.avi", "nobody.s01e01.avi"});
  int looks = 0;
  service.works = [&](const std::string&) {
    if (session->queue.at(3).state != QueueState::Searching || looks++ > 0) return true;
    wait_until([&] { return find(*frame, "review_strip").IsShown(); });
    press(*frame, "Re&view Now");
    wait_until([&] { return is_shown(); });
    EXPECT_EQ(text("heading"), "2 files, 2 ready. Looking up 1 more\u2026");
    EXPECT_FALSE(find(*frame, "review_apply").IsEnabled());
    type(find(*frame, "review"), WXK_RETURN, true);
    return true;
  };
  run_pass();
  EXPECT_EQ(looks > 0 ? text("heading") : "", "3 files, 2 ready, 1 problem");
  auto& filter = find<wxChoice>(*frame, "filter");
  filter.SetSelection(2), use(filter, wxEVT_CHOICE, 2);
  EXPECT_EQ(sheet(), "#o nobody|No show found||0 of 1 file;o nobody.s01e01.avi||1x01|Show unknown;");
  filter.SetSelection(0), use(filter, wxEVT_CHOICE, 0);

  press(*frame, "Show Li&st");
  EXPECT_TRUE(list(1).IsShown() && find(*frame, "review_strip").IsShown());
  type(find(*frame, "review"), WXK_RETURN, true);  // out of sight
  press(*frame, "Re&view Now");
  wait_until([&] { return is_shown(); });
  // It stays a review, whatever is set meanwhile.
  command(ui::mnuReview);
  EXPECT_EQ(key_values.numbers["review"], 0U);
  EXPECT_FALSE(find<wxCheckBox>(*frame, "review_first").GetValue() || frame->GetMenuBar()->IsChecked(ui::mnuReview));
  tree().select({3});
  on_dialog([](wxDialog& dialog) {
    wait_until([&] { return find<wxTextCtrl>(dialog, "detected_name").GetValue() == "nobody"; });
    set_text(dialog, "new_name", "Night Train");
    press(dialog, "OK");
  });
  press(*frame, "review_exception");
  wait_until([&] { return text("heading") == "3 files, 3 ready"; });
  EXPECT_EQ(everything_in(folder / "in").size(), 3U);
  EXPECT_TRUE(exists("in/" + first) && exists("in/night.train.s01e02.avi") && exists("in/nobody.s01e01.avi"));

  tree().select({1}), tree().control().SetFocus();
  tick(*frame, "review_first", true);
  command(ui::mnuEditName);
  type_into_cell("Mine");
  wait_until([&] { return !tree().editor().is_open(); });
  on_dialog("Cancel Review", "&Go Back"), press(*frame, "Ca&ncel");
  EXPECT_TRUE(is_shown());
  drop({file(second)});
  wait_until([&] { return text("heading") == "4 files, 4 ready"; });
  frame->Close();
  wait_for_the_end();
  EXPECT_EQ(everything_in(folder / "in").size(), 4U);
  EXPECT_TRUE(exists("in/" + first) && exists("in/" + second));
}

TEST_F(ReviewWindow, AShowIsChosenForAllFilesOfAGroupWhereverTheKeyboardIs) {
  key_values.numbers["exact"] = 1;
  web.knows_part_time();
  start_review({"part.time.s01e01.avi", "part.time.s01e02.avi"});
  run_pass();
  wait_until([&] { return is_shown(); });
  EXPECT_EQ(text("heading"), "2 files, 0 ready, 2 need a decision");
  EXPECT_FALSE(find(*frame, "review_exception").IsShown() || find(*frame, "review_apply").IsEnabled());
  std::string menu;
  frame->stack().show_menu = [&](wxWindow&, wxMenu& shown, const wxPoint&) {
    for (const wxMenuItem* const item : shown.GetMenuItems()) {
      if (item->IsEnabled() && !item->IsSeparator()) menu += from_wx(item->GetItemLabelText()) + "|";
    }
  };
  wxUIActionSimulator keyboard;
  tree().control().SetFocus();
  keyboard.Char(WXK_HOME);  // the group
  wait_until([&] { return details() == "2 files"; });
  keyboard.Char(WXK_RIGHT), keyboard.Char(WXK_DOWN);
  wait_until([&] { return tree().selected_file() == 1; });
  keyboard.Char(WXK_LEFT);
  wait_until([&] { return details() == "2 files"; });
  wxContextMenuEvent key(wxEVT_CONTEXT_MENU);  // as from the Menu key
  tree().control().ProcessWindowEvent(key);
  EXPECT_EQ(menu, "Choose Show\u2026|Add Exception\u2026|Look Up Again|Open Folder|");
  on_dialog([&](wxDialog& dialog) {
    auto& shows = find<ui::RowList>(dialog, "shows");
    wait_until([&] { return dialog.IsActive() && shows.count() == 2; });
    shows.SetFocus();
    keyboard.Char(WXK_DOWN);
    wait_until([&] { return shows.selected() == 1; });
    keyboard.Char(WXK_RETURN);
  });
  press(*frame, "review_choose");
  EXPECT_TRUE(text("heading") == "2 files, 2 ready" && text("review_apply") == "&Apply 2") << sheet();
}

}  // namespace quorvel::testing
