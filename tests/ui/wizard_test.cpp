#include <wx/choice.h>
#include <wx/radiobut.h>

#include <algorithm>

#include "naming/file_names.h"
#include "test_window.h"
#include "ui/menus.h"
#include "ui/text.h"

namespace quorvel::testing {

using ui::from_wx;

TEST_F(TestWindow, TheWizardShowsEachStepAndReadsItsControls) {
  start();
  const std::string folder = with_separator(with_native_separators("/tv")), rule = "|Copy & Rename|",
                    mask = "[show] - [s]x[ee] - [title]!";
  const std::string hints = "Conditions are not case sensitive.|Wildcards are supported. Leave blank for anything.|";
  const std::string example = "Insert...|Preset...|Example:|The.Harbour.Lights.2015.S01E02.1080p.WEB-DL-NTb.mkv|";
  const std::string place = "It stands above \"Show Name Equals Anything\", which takes every file that is left.|";
  const std::string first = "Wizard: Step 1 - Filter Conditions|Specify the critera of this filter|";
  on_dialog([&](wxDialog& wizard) {
    EXPECT_EQ(shown(wizard), "Add Filter " + first + "<Show Name>|<Equals>|[]|" + hints + "-Back|Next |Cancel|");
    std::string seen;
    const wxWindow& book = *find(wizard, "field").GetGrandParent();
    const auto next = [&] { press(wizard, "&Next "), seen += shown(book) + "\n"; };
    find<wxChoice>(wizard, "field").SetSelection(1), find<wxChoice>(wizard, "comparison").SetSelection(1);
    set_text(wizard, "condition", "AVI"), next();
    find<wxRadioButton>(wizard, "&Move && Rename").SetValue(true), next();
    press(wizard, "&Back");
    find<wxChoice>(wizard, "existing").SetSelection(1);
    find<wxRadioButton>(wizard, "C&opy && Rename").SetValue(true), press(wizard, "&Next ");
    set_text(wizard, "path", "/tv"), next();
    find<wxTextCtrl>(wizard, "mask").WriteText("!");  // after the text: nothing is selected
    press(wizard, "&Next ");
    EXPECT_EQ(seen,
              "x Rename|o Move & Rename|o Copy & Rename|o Hard Link & Rename|o Symbolic Link & Rename|If another file "
              "has the new name:|<Ask whether to replace it>|\nDirectory to "
              "move new files to:|[]|Browse|" +
                  example + "New Name:|Folder:|\n[[show] - [s]x[ee] - [title]]|" + example +
                  "New Name:|The Harbour Lights - 1x02 - The Pilot Boat.mkv|Folder:|" + folder + "|\n");
    std::string summary = shown(wizard);
    std::ranges::replace(summary, '\n', ' ');  // where it is wrapped
    EXPECT_EQ(summary,
              "Add Filter Wizard: Filter Added|You have successfully added a filter|The following filter has been "
              "successfully added:|Filter:|File Type Doesn't Equal AVI|Action:" +
                  rule + "File Mask:|" + mask + "|Path:|" + folder +
                  "|Same Name:|Keep both: a number behind the new name|" + place + "-Back|Finish|-Cancel|");
    press(wizard, "&Finish");
  });
  list(2), press(*frame, "Command2");
  EXPECT_TRUE(rows(2).starts_with("File Type Doesn't Equal AVI" + rule + mask + "|" + folder + ";"));
  EXPECT_EQ(list(2).selected(), 1);
  on_dialog([&](wxDialog& wizard) {
    EXPECT_EQ(shown(wizard),
              "Edit Filter " + first + "<File Type>|<Doesn't Equal>|[avi]|" + hints + "-Back|Next |Cancel|");
    EXPECT_EQ(find<wxTextCtrl>(wizard, "path").GetValue() + find<wxTextCtrl>(wizard, "mask").GetValue(), folder + mask);
    EXPECT_TRUE(find<wxRadioButton>(wizard, "C&opy && Rename").GetValue());
    EXPECT_EQ(find<wxChoice>(wizard, "existing").GetSelection(), 1);
    press(wizard, "Cancel");
  });
  command(ui::mnuEditFilter);
}

TEST_F(TestWindow, TheWizardShowsWhatAMaskMakesAndHelpsToWriteIt) {
  start();
  drop({file("harbour.lights.1x02.mkv")});
  run_pass();
  const auto choose = [this](wxDialog& wizard, const char* button, const std::string& entry) {
    std::string all;
    frame->stack().show_menu = [&](wxWindow& over, wxMenu& menu, const wxPoint&) {
      all = captions(menu);
      for (wxMenuItem* const item : menu.GetMenuItems()) {
        if (item->IsSubMenu()) all += "(" + captions(*item->GetSubMenu()) + ")";
        if (from_wx(item->GetItemLabelText()).starts_with(entry)) use(over, wxEVT_MENU, 0, item->GetId());
      }
    };
    press(wizard, button);
    return all;
  };
  const auto seen = [](wxDialog& wizard) {
    const std::string page = shown(*find(wizard, "field").GetGrandParent()), before = "Preset...|";
    return page.substr(page.find(before) + before.size());
  };
  const auto next = [](wxDialog& wizard) { press(wizard, "&Next "); };
  list(1).select(1);
  on_dialog([&](wxDialog& wizard) {
    auto &path = find<wxTextCtrl>(wizard, "path"), &mask = find<wxTextCtrl>(wizard, "mask");
    next(wizard), find<wxRadioButton>(wizard, "&Move && Rename").SetValue(true), next(wizard);
    EXPECT_EQ(seen(wizard), "Selected File:|harbour.lights.1x02.mkv|New Name:|Folder:|");
    on_dialog([](wxDialog& picker) { cancel(picker); }), choose(wizard, "path_presets", "Kodi");
    EXPECT_EQ(path.GetValue() + mask.GetValue(), "") << "there is no folder for it to lie below";
    set_text(wizard, "path", "tv");
    EXPECT_NE(seen(wizard).find("begins neither at the root"), std::string::npos) << seen(wizard);
    set_text(wizard, "path", "/tv"), path.SelectAll();
    EXPECT_EQ(choose(wizard, "path_tokens", "[s] ").find("[title]"), std::string::npos);
    EXPECT_EQ(path.GetValue() + "|" + wxString::Format("%ld", path.GetInsertionPoint()), "/tv[s]|6");
    choose(wizard, "path_presets", "Plex");
    EXPECT_EQ(mask.GetValue(), "[show]{ ([year])}{ - [dated]| - s[ss]e[ee-]} - [title]");
    EXPECT_EQ(from_wx(path.GetValue()), with_native_separators("/[show]{ ([year])}/Season {[dated-year]|[ss]}"));
    next(wizard);
    EXPECT_EQ(seen(wizard),
              "Selected File:|harbour.lights.1x02.mkv|New Name:|"
              "The Harbour Lights - s01e02 - The Pilot Boat.mkv|Folder:|" +
                  with_native_separators("/The Harbour Lights/Season 01/") + "|");
    mask.SetValue("[title][yaer]"), mask.SetSelection(7, 13);
    EXPECT_NE(choose(wizard, "mask_tokens", "{ }").find("[old]  the file's name"), std::string::npos);
    EXPECT_EQ(mask.GetValue() + wxString::Format("%ld", mask.GetInsertionPoint()), "[title]{[yaer]}14");
    EXPECT_TRUE(seen(wizard).ends_with("|\"[yaer]\" is no token and stays as it is.|")) << seen(wizard);
    press(wizard, "Cancel");
  });
  command(ui::mnuAddFilter);
}

}  // namespace quorvel::testing
