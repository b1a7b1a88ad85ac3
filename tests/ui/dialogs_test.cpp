#include <wx/choice.h>
#include <wx/radiobut.h>

#include "naming/file_names.h"
#include "test_window.h"
#include "ui/text.h"

namespace quorvel::testing {

/// What the wizard shows: its heading and the line below.
static std::string step(const wxWindow& wizard) {
  return label(wizard, "heading") + "|" + label(wizard, "subheading");
}

static const std::vector<const char*> boxes = {"Check1", "Check2", "Check3", "Check4", "Check5", "Check6"};
static const std::string conditions = "Step 1 - Filter Conditions|Specify the critera of this filter";
static const std::string options = "Step 2 - Filter Options|Select what this filter will do";
static const std::string move_path = "Step 3 - File Path|Select where files will me moved to";
static const std::string copy_path = "Step 3 - File Path|Select where files will me copied to";
static const std::string third_name = "Step 3 - File Name|Specify the new file name format";
static const std::string fourth_name = "Step 4 - File Name|Specify the new file name format";

TEST_F(TestWindow, TheWizardGoesByItsTransitions) {
  struct Move {
    const char *option, *press;
    std::string then;
  };
  const Move moves[] = {{nullptr, "Next ", options},
                        {nullptr, "Back", conditions},
                        {nullptr, "Next ", options},
                        {"Rename", "Next ", third_name},
                        {nullptr, "Back", options},
                        {"Move & Rename", "Next ", move_path},
                        {nullptr, "Next ", move_path},
                        {nullptr, "Back", options},
                        {"Copy & Rename", "Next ", copy_path},
                        {nullptr, "Next ", fourth_name},
                        {nullptr, "Back", copy_path},
                        {nullptr, "Next ", fourth_name},
                        {nullptr, "Next ", "Filter Added|You have successfully added a filter"}};
  start();
  on_dialog([&](wxDialog& wizard) {
    EXPECT_EQ(wizard.GetTitle(), "Add Filter Wizard");
    EXPECT_EQ(step(wizard), conditions);
    EXPECT_FALSE(named(wizard, "Back")->IsEnabled());
    for (const Move& move : moves) {
      if (move.option != nullptr) find<wxRadioButton>(wizard, move.option).SetValue(true);
      if (move.then == move_path && step(wizard) == move_path) {
        set_text(wizard, "path", "D:");
        on_dialog("Path not valid", "OK");
      }
      if (step(wizard) == copy_path) set_text(wizard, "path", "/tv");
      press(wizard, move.press);
      EXPECT_EQ(step(wizard), move.then);
      const auto& mask = find<wxTextCtrl>(wizard, "mask");
      EXPECT_TRUE(!mask.IsShownOnScreen() || (mask.GetInsertionPoint() == 27 && mask.GetStringSelection().empty()));
    }
    EXPECT_EQ(label(wizard, "summary"), "The following filter has been successfully added:");
    EXPECT_EQ(label(wizard, "summary_filter") + "|" + label(wizard, "summary_path"),
              "Show Name Equals Anything|" + with_separator("/tv"));
    EXPECT_FALSE(named(wizard, "Back")->IsEnabled());
    press(wizard, "Finish");
  });
  command(ui::mnuAddFilter2);
  EXPECT_EQ(cell("ListView2", 2, 0) + "|" + cell("ListView2", 2, 1) + "|" + cell("ListView2", 2, 2),
            "Show Name Equals Anything|Copy & Rename|[show] - [s]x[ee] - [title]");
  const AFilter& rule = session->filters.at(2);
  EXPECT_EQ(rule.showName + rule.fileType + rule.path, "*" + with_separator("/tv"));
  EXPECT_TRUE(rule.enabled && rule.showNameCondition == Equals && rule.fileTypeCondition == 0);
}

TEST_F(TestWindow, EditingARuleKeepsItsOtherConditionAndCancellingChangesNothing) {
  start();
  find<ui::RuleList>(*frame, "ListView2").select(1);
  on_dialog([](wxDialog& wizard) {
    EXPECT_EQ(wizard.GetTitle(), "Edit Filter Wizard");
    set_text(wizard, "condition", "lost");
    press(wizard, "Next ");
    press(wizard, "Cancel");
  });
  command(ui::mnuEditFilter);
  EXPECT_EQ(session->filters.at(1).showName, "*");
  on_dialog([](wxDialog& wizard) {
    find<wxChoice>(wizard, "field").SetSelection(1);
    find<wxChoice>(wizard, "comparison").SetSelection(1);
    set_text(wizard, "condition", "AVI");
    press(wizard, "Next ");
    press(wizard, "Next ");
    set_text(wizard, "mask", "[title]");
    press(wizard, "Next ");
    EXPECT_EQ(step(wizard), "Filter Edited|You have successfully edited a filter");
    press(wizard, "Finish");
  });
  command(ui::mnuEditFilter);
  const AFilter& rule = session->filters.at(1);
  EXPECT_EQ(rule.description, "File Type Doesn't Equal AVI");
  EXPECT_EQ(rule.fileType + std::to_string(rule.fileTypeCondition) + rule.showName, "avi2*");
  EXPECT_EQ(rule.mask, "[title]");
  on_dialog([&](wxDialog& wizard) {  // a rule that the file cannot hold is not stored, and said not to be
    press(wizard, "Next "), press(wizard, "Next ");
    set_text(wizard, "mask", "a\tb");
    on_dialog("Unable to save filter", "OK");
    press(wizard, "Next ");
    press(wizard, "Cancel");
  });
  command(ui::mnuEditFilter);
  EXPECT_EQ(session->filters.at(1).mask, "[title]");
}

TEST_F(TestWindow, PreferencesAreCheckedCleanedAndStored) {
  start();
  on_dialog([&](wxDialog& dialog) {
    EXPECT_EQ(text(dialog, "txtTypes"), "avi;mkv;mpg;mp4");
    EXPECT_FALSE(find<wxCheckBox>(dialog, "Check1").GetValue());
    set_text(dialog, "txtTypes", "a;");
    on_dialog("Filetypes Required", "OK");
    press(dialog, "OK");
    EXPECT_TRUE(store.texts.count("types") == 0 && dialog.IsModal());
    for (const char* const box : boxes) tick(dialog, box);
    set_text(dialog, "txtTypes", ".AVI;.mkv;");
    type(dialog, 'T', true);
    on_dialog([](wxDialog& warning) {
      EXPECT_EQ(warning.GetTitle(), "Not Recommended");
      tick(warning, "Don't show this again");
      press(warning, "OK");
    });
    press(dialog, "OK");
  });
  command(ui::mnuPrefs);
  EXPECT_EQ(store.texts["types"], "avi;mkv");
  EXPECT_EQ(store.numbers, (std::map<std::string, std::uint32_t>{{"context", 2},
                                                                 {"confirm", 1},
                                                                 {"nocache", 1},
                                                                 {"noutf8", 1},
                                                                 {"logging", 2},
                                                                 {"autoclose", 1},
                                                                 {"msgskip$1", 1}}));
  EXPECT_EQ(recorder.calls, (std::vector<std::string>{"remove avi", "remove mkv", "remove mpg", "remove mp4",
                                                      "install avi", "install mkv", "install DIR"}));
  EXPECT_NE(log().find("Keep temp on"), std::string::npos);
  recorder.calls.clear();
  on_dialog([](wxDialog& dialog) {  // the warning has been switched off
    for (const char* const box : boxes) {
      EXPECT_TRUE(find<wxCheckBox>(dialog, box).GetValue()) << box;
      if (box != std::string("Check3")) tick(dialog, box, false);
    }
    press(dialog, "OK");
  });
  command(ui::mnuPrefs);
  EXPECT_EQ(recorder.calls.back() + std::to_string(session->settings.context), "remove DIR1");
  EXPECT_TRUE(session->settings.nocache && !session->settings.confirm && !session->settings.autoclose);
  on_dialog([](wxDialog& dialog) {
    tick(dialog, "Check2");
    press(dialog, "Cancel");
  });
  command(ui::mnuPrefs);
  EXPECT_FALSE(session->settings.confirm);
}

TEST_F(TestWindow, ExceptionsNeedBothNames) {
  start();
  drop({file("no.such.show.s01e01.avi")});
  run_pass();
  on_dialog([&](wxDialog& dialog) {
    EXPECT_EQ(dialog.GetTitle(), "Add Exception");
    on_dialog("Detected Name Required", "OK");
    press(dialog, "OK");
    set_text(dialog, "detected_name", "the office");
    on_dialog("New Name Required", "OK");
    press(dialog, "OK");
    set_text(dialog, "new_name", "The Office");
    press(dialog, "OK");
  });
  command(ui::mnuAddEx2);
  EXPECT_EQ(cell("ListView3", 1, 0) + "|" + cell("ListView3", 1, 1), "the office|The Office");

  on_dialog([](wxDialog& info) {
    wait_until([&] { return !label(info, "status").empty(); });
    EXPECT_EQ(label(info, "status"), "Status: Failed");
    EXPECT_EQ(text(info, "description"), "Error: Unable to find show on tvmaze.com\nSearched for: no such show");
    press(info, "OK");
  });
  open_item(1);
  on_dialog([](wxDialog& dialog) {
    wait_until([&] { return !text(dialog, "detected_name").empty(); });
    EXPECT_EQ(text(dialog, "detected_name"), "no such show");
    EXPECT_FALSE(find<wxTextCtrl>(dialog, "detected_name").IsEditable());
    set_text(dialog, "new_name", "Harbour Lights");
    press(dialog, "OK");
  });
  command(ui::mnuSpecify);
  command(ui::mnuRetry);
  EXPECT_TRUE(is_done(1)) << log();

  on_dialog([&](wxDialog& info) {
    wait_until([&] { return !label(info, "status").empty(); });
    EXPECT_EQ(label(info, "status"), "Status: Done");
    EXPECT_EQ(label(info, "filename"), "Filename: no.such.show.s01e01.avi");
    EXPECT_FALSE(named(info, "description")->IsShown());
    click(info, "show_link");
    click(info, "episode_link");
    press(info, "OK");
  });
  command(ui::mnuInfo);
  EXPECT_EQ(recorder.calls, (std::vector<std::string>{"open " + session->queue.at(1).show_url,
                                                      "open " + session->queue.at(1).episode_url}));
}

TEST_F(TestWindow, ConfirmationDecidesAndCanBeSwitchedOff) {
  store.numbers["confirm"] = 1;
  start();
  drop({file("harbour.lights.s01e01.avi"), file("harbour.lights.s01e02.avi")});
  on_dialog([this](wxDialog& dialog) {
    EXPECT_EQ(dialog.GetTitle(), "Confirm File Rename");
    find<wxWindow>(dialog, "Continue with file rename?");
    wait_until([&] { return !text(dialog, "source").empty(); });
    EXPECT_EQ(text(dialog, "source"), session->queue.at(1).path);
    EXPECT_EQ(text(dialog, "destination"), session->queue.at(1).dest_path + session->queue.at(1).new_name);
    tick(dialog, "Don't show this again");
    EXPECT_EQ(store.numbers["confirm"], 0U);
    press(dialog, "Cancel");
  });
  run_pass();
  EXPECT_EQ(cell("ListView1", 1, 2) + "," + cell("ListView1", 2, 2), "Cancelled,Done");
  EXPECT_TRUE(exists("in/harbour.lights.s01e01.avi"));
}

TEST_F(TestWindow, MessagesBreakTheirLinesAndOfferABoxOnlyWithANumber) {
  start();
  for (const int id : {0, 7}) {
    on_dialog([id](wxDialog& dialog) {
      EXPECT_EQ(named(dialog, "Don't show this again")->IsShown(), id > 0);
      EXPECT_EQ(text(dialog, "text"), "one\ntwo");
      dialog.Close();
    });
    frame->show_message(id, "Title", "one#two", MessageIcon::Warning);
  }
}

}  // namespace quorvel::testing
