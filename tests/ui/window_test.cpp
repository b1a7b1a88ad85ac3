#include <wx/choice.h>
#include <wx/filedlg.h>
#include <wx/hyperlink.h>
#include <wx/notebook.h>
#include <wx/radiobut.h>

#include "naming/file_names.h"
#include "shell/version.h"
#include "test_window.h"
#include "ui/text.h"

namespace quorvel::testing {

using ui::from_wx;

/// A file name that gives trouble to whoever takes the system's names for text, and what is seen of it.
#ifdef _WIN32
constexpr const char *odd_name = "caf\u00E9 \U0001F600", *odd_name_shown = odd_name;  // no code page holds it
#else
constexpr const char *odd_name = "caf\xE9", *odd_name_shown = "caf\\351";  // not UTF-8
#endif

TEST_F(TestWindow, MenusAndTabsHoldWhatBelongsThere) {
  start();
  EXPECT_EQ(frame->GetTitle(), "Quorvel 3.4");
  EXPECT_TRUE(frame->GetMinSize() == frame->GetSize() && frame->GetMaxSize() == frame->GetSize());
  std::string all;
  const wxMenuBar& bar = *frame->GetMenuBar();
  for (unsigned i = 0; i < bar.GetMenuCount(); ++i) {
    all += from_wx(bar.GetMenuLabelText(i)) + ": " + captions(*bar.GetMenu(i)) + "\n";
  }
  const auto& tabs = find<wxNotebook>(*frame, "TabStrip1");
  for (const std::size_t tab : {2U, 3U, 1U}) {
    list(tab);
    all += from_wx(tabs.GetPageText(tab - 1)) + ": " + shown(tabs) + "\n";
  }
  EXPECT_EQ(all,
            "File: Add File|-|Exit\n"
            "Options: Preferences\n"
            "Help: Quorvel Help|Check For Updates|Quorvel Website|-|About Quorvel\n"
            "Filter List: Filter,Action,File Mask,Path|Move Up|Move Down|Add New|\n"
            "Exceptions: Detected Show Name,New Show Name|Move Up|Move Down|Add New|\n"
            "File Queue: Filename,New Name,Status|\n");
}

TEST_F(TestWindow, DroppedFoldersAreRenamedByThePassThatTheTimerStarts) {
  start();
  const auto& queue = find<ui::QueueList>(*frame, "ListView1");
  EXPECT_TRUE(queue.hint_is_shown());
  EXPECT_THROW(frame->update_row(1, {}), Failure);
  file("Harbour.Lights/harbour.lights.s01e01.avi");
  const std::string odd = file(std::string(odd_name) + ".s01e01.avi"), odd_shown = odd_name_shown;
  drop({folder / "in/Harbour.Lights", odd});
  EXPECT_EQ(rows(1), "harbour.lights.s01e01||;" + odd_shown + ".s01e01||;");
  EXPECT_FALSE(queue.hint_is_shown());
  wait_until([&] { return session->queue.at(2).state == QueueState::Failed && !session->processor.queue_busy(); });
  EXPECT_TRUE(exists("in/Harbour.Lights/The Harbour Lights - 1x01 - Slack Water.avi"));
  EXPECT_EQ(rows(1),
            "harbour.lights.s01e01|The Harbour Lights - 1x01 - Slack Water|Done;" + odd_shown + ".s01e01||Failed;");
  EXPECT_TRUE(queue.selected() == 2 && session->queue.at(2).path == odd && logged("All items processed") == 1);

  for (int i = 0; i < 1200; ++i) session->log.debug_log("line", LogLevel::Normal);
  const auto& log = find<wxListBox>(*frame, "List3");
  EXPECT_EQ(log.GetCount(), session->log.lines().size());
  EXPECT_EQ(log.GetSelection(), wxNOT_FOUND);
  wait_until([&] { return log.GetTopItem() + log.GetCountPerPage() >= static_cast<int>(log.GetCount()) - 1; });
}

TEST_F(TestWindow, RulesMoveWithTheirSelectionAndStopAtTheEnds) {
  start();
  for (const char* const name : {"a", "b", "c"}) {
    AFilter filter;
    filter.description = name, filter.action = Rename;
    session->filters.store(name[0] == 'a' ? 1 : 0, filter);
    session->exceptions.store(0, {name, "Rename||", false});
  }
  const struct {
    const char *up, *down, *thing;
    int remove;
  } pages[] = {{"Command3", "Command1", "filter", ui::mnuRemFilter},
               {"Command4", "Command5", "exception", ui::mnuRemEx}};
  for (const auto& [up, down, thing, remove] : pages) {
    const std::size_t tab = &up == &pages[0].up ? 2 : 3;
    ui::RowList& list = this->list(tab);
    std::string seen;
    const auto look = [&] { seen += rows(tab) + std::to_string(list.selected()) + " "; };
    press(*frame, down), command(remove);  // nothing is selected
    list.select(1);
    for (const char* const button : {down, down, down, up}) press(*frame, button), look();
    command(remove), look();
    press(*frame, up), press(*frame, up), look();
    const std::string a = "a|Rename||;", b = "b|Rename||;", c = "c|Rename||;";
    EXPECT_EQ(seen,
              b + a + c + "2 " + b + c + a + "3 " + b + c + a + "3 " + b + a + c + "2 " + b + c + "2 " + c + b + "1 ");
    std::filesystem::rename(path_of(folder / "data/Quorvel"), path_of(folder / "data/gone"));
    on_dialog(std::string("Unable to move ") + thing, "OK"), on_dialog(std::string("Unable to remove ") + thing, "OK");
    press(*frame, down), command(remove), look();
    EXPECT_TRUE(seen.ends_with(" " + c + b + "1 "));
    std::filesystem::rename(path_of(folder / "data/gone"), path_of(folder / "data/Quorvel"));
    command(remove);
  }
  on_dialog([](wxDialog& dialog) {
    EXPECT_EQ(text(dialog, "text"), "You must have at least one filter");
    press(dialog, "OK");
  });
  command(ui::mnuRemFilter), command(ui::mnuRemEx);
  EXPECT_EQ(rows(2) + rows(3), "b|Rename||;");
}

TEST_F(TestWindow, ListMenusFitWhatTheyAreForAndUndoAndRetryWhatTheySay) {
  start();
  drop({file("harbour.lights.s01e01.avi"), file("nothing.avi")});
  run_pass();
  session->exceptions.store(0, {"a", "b", false});
  EXPECT_EQ(menu_over(1, 0) + menu_over(2, 0) + menu_over(3, 0), "Add FilterAdd Exception");
  EXPECT_EQ(menu_over(2, 1), "Edit Filter|Remove Filter|-|Add Filter");
  EXPECT_EQ(menu_over(3, 1), "Add Exception|Remove Exception");
  EXPECT_TRUE(list(2).selected() == 1 && list(3).selected() == 1);
  EXPECT_EQ(menu_over(1, 1), "Item Info|Undo Rename|Add Exception|-|Retry Failed");
  command(ui::mnuUndo);
  EXPECT_TRUE(exists("in/harbour.lights.s01e01.avi"));
  EXPECT_EQ(rows(1), "harbour.lights.s01e01||Cancelled;nothing||Failed;");
  command(ui::mnuRetry);
  EXPECT_TRUE(is_done(1));
}

TEST_F(TestWindow, TheFileAndHelpMenusLeadOut) {
  key_values.texts["updater"] = "/opt/tarn";
  start();
  on_dialog([](wxDialog& dialog) {
    auto& picker = dynamic_cast<wxFileDialog&>(dialog);
    EXPECT_EQ(picker.GetMessage(), "Select File");
    EXPECT_EQ(picker.GetWildcard(), "Supported Types|*.avi;*.mkv;*.mpg;*.mp4|All Files|*.*");
    cancel(picker);
  });
  on_dialog("Quorvel", "OK");
  on_dialog([](wxDialog& about) {
    EXPECT_EQ(shown(about),
              std::string("About Quorvel: Quorvel|Version 3.4  Build 0|") + copyright + "|https://quorvel.example|OK|");
    use(find(about, "website"), wxEVT_HYPERLINK);
    type(about, 'A', false);
    press(about, "OK");
  });
  for (const int id : {ui::mnuOpen, ui::mnuHelpGuide, ui::mnuUpdate, ui::mnuAbout, ui::mnuWeb}) command(id);
  const std::string handle = std::to_string(reinterpret_cast<std::uintptr_t>(frame->GetHandle()));
  const std::string updater =
      "/opt/tarn|package=Quorvel,apppath=" + (folder / "program") + ",runcount=123,version=3400,handle=" + handle;
  const std::string web = "open https://quorvel.example/?v=3.4";
  EXPECT_EQ(happened(), (std::vector<std::string>{updater, web, web}));
  EXPECT_EQ(logged("Using SocketWrench " + service.version()), 1);
}

// The dialogs.

TEST_F(TestWindow, TheWizardShowsEachStepAndStoresOnlyWhatItCan) {
  start();
  const std::string folder = with_separator("/tv");
  const std::string hints = "Conditions are not case sensitive.|Wildcards are supported. Leave blank for anything.|";
  on_dialog([&](wxDialog& wizard) {
    std::string seen;
    const auto look = [&] { seen += shown(wizard) + "\n"; };
    look();
    find<wxChoice>(wizard, "field").SetSelection(1), find<wxChoice>(wizard, "comparison").SetSelection(1);
    set_text(wizard, "condition", "AVI");
    press(wizard, "Next "), look();
    find<wxRadioButton>(wizard, "Copy & Rename").SetValue(true);
    on_dialog("Path not valid", "OK");
    press(wizard, "Next "), press(wizard, "Next "), look();
    set_text(wizard, "path", "/tv");
    press(wizard, "Next "), press(wizard, "Back"), press(wizard, "Next "), look();
    const auto& mask = find<wxTextCtrl>(wizard, "mask");
    EXPECT_TRUE(mask.GetInsertionPoint() == 27 && mask.GetStringSelection().empty());
    set_text(wizard, "mask", "a\tb");
    on_dialog("Unable to save filter", "OK");
    press(wizard, "Next ");
    EXPECT_EQ(session->filters.count(), 1);
    set_text(wizard, "mask", "[title]");
    press(wizard, "Next "), look();
    EXPECT_EQ(
        seen,
        "Add Filter Wizard: Step 1 - Filter Conditions|Specify the critera of this filter|<Show Name>|<Equals>|[]|" +
            hints +
            "-Back|Next |Cancel|\n"
            "Add Filter Wizard: Step 2 - Filter Options|Select what this filter will do|x Rename|o Move & Rename|o "
            "Copy & Rename|"
            "Back|Next |Cancel|\n"
            "Add Filter Wizard: Step 3 - File Path|Select where files will me copied to|Directory to copy new files "
            "to:|[]|Browse|"
            "Back|Next |Cancel|\n"
            "Add Filter Wizard: Step 4 - File Name|Specify the new file name format|[[show] - [s]x[ee] - [title]]|"
            "[show], [title]: names of the show and the episode|"
            "[s], [e]: numbers of the season and the episode; [ss], [ee]: with two digits|Back|Next |Cancel|\n"
            "Add Filter Wizard: Filter Added|You have successfully added a filter|The following filter has been "
            "successfully added:|"
            "Filter:|File Type Doesn't Equal AVI|Action:|Copy & Rename|File Mask:|[title]|Path:|" +
            folder + "|-Back|Finish|-Cancel|\n");
    press(wizard, "Finish");
  });
  command(ui::mnuAddFilter2);
  EXPECT_TRUE(rows(2).ends_with(";File Type Doesn't Equal AVI|Copy & Rename|[title]|" + folder + ";"));
  EXPECT_EQ(list(2).selected(), 2);
  on_dialog([&](wxDialog& wizard) {
    EXPECT_EQ(shown(wizard),
              "Edit Filter Wizard: Step 1 - Filter Conditions|Specify the critera of this filter|<File Type>|"
              "<Doesn't Equal>|[avi]|" +
                  hints + "-Back|Next |Cancel|");
    EXPECT_EQ(text(wizard, "path") + text(wizard, "mask"), folder + "[title]");
    EXPECT_TRUE(find<wxRadioButton>(wizard, "Copy & Rename").GetValue());
    set_text(wizard, "condition", "lost");
    press(wizard, "Next "), press(wizard, "Cancel");
  });
  command(ui::mnuEditFilter);
  EXPECT_EQ(session->filters.at(2).fileType, "avi");
}

TEST_F(TestWindow, EachPreferenceHasItsBox) {
  const std::map<std::string, std::string> boxes = {{"Check1", "context"}, {"Check2", "confirm"},
                                                    {"Check3", "nocache"}, {"Check4", "noutf8"},
                                                    {"Check5", "logging"}, {"Check6", "autoclose"}};
  start();
  on_dialog([this](wxDialog& dialog) {
    EXPECT_EQ(shown(dialog),
              "Preferences: o Close when done|o Verbose Logging|o Confirm File Operations|o Disable Cache|o Disable "
              "UTF-8 Decoding|"
              "o Add To Context Menu for Folders & Video Files|Additional Types:|[avi;mkv;mpg;mp4]|OK|Cancel|");
    set_text(dialog, "txtTypes", "a;");
    on_dialog("Filetypes Required", "OK");
    press(dialog, "OK");
    set_text(dialog, "txtTypes", ".MOV;");
    type(dialog, 'T', true);
    press(dialog, "OK");
  });
  command(ui::mnuPrefs);
  EXPECT_TRUE(key_values.texts["types"] == "mov" && logged("Keep temp on") == 1);
  for (const auto& [ticked, setting] : boxes) {
    std::string seen;
    on_dialog([&, ticked = ticked](wxDialog& dialog) {
      for (const auto& [box, of] : boxes) tick(dialog, box, box == ticked);
      if (ticked == "Check3") on_dialog("Not Recommended", "OK");
      press(dialog, "OK");
    });
    command(ui::mnuPrefs);
    on_dialog([&](wxDialog& dialog) {
      for (const auto& [box, of] : boxes) {
        if (find<wxCheckBox>(dialog, box).GetValue()) seen += box;
        tick(dialog, box);
      }
      press(dialog, "Cancel");
    });
    command(ui::mnuPrefs);
    for (const auto& [name, number] : key_values.numbers) {
      if (number > (name == "context" || name == "logging" ? 1U : 0U)) seen += name;
    }
    EXPECT_EQ(seen, ticked + setting);
  }
}

TEST_F(TestWindow, ExceptionsNeedBothNamesAndItemsSayWhatBecameOfThem) {
  start();
  drop({file("no.such.show.s01e01.avi")});
  run_pass();
  on_dialog([&](wxDialog& dialog) {
    EXPECT_EQ(shown(dialog), "Add Exception: Detected Show Name:|[]|New Show Name:|[]|OK|Cancel|");
    on_dialog("Detected Name Required", "OK"), on_dialog("New Name Required", "OK");
    press(dialog, "OK");
    set_text(dialog, "detected_name", "the office");
    press(dialog, "OK");
    set_text(dialog, "new_name", "The Office");
    press(dialog, "OK");
  });
  command(ui::mnuAddEx2);
  std::string seen;
  const auto look = [&](wxDialog& info) {
    wait_until([&] { return !label(info, "status").empty(); });
    seen = shown(info);
    press(info, "OK");
  };
  on_dialog(look);
  wxListEvent double_click(wxEVT_LIST_ITEM_ACTIVATED);
  double_click.m_itemIndex = 0;
  list(1).ProcessWindowEvent(double_click);
  EXPECT_EQ(seen,
            "Item Info: Filename: no.such.show.s01e01.avi|Status: Failed|[Error: Unable to find show on tvmaze.com\n"
            "Searched for: no such show]|OK|");
  on_dialog([](wxDialog& dialog) {
    wait_until([&] { return text(dialog, "detected_name") == "no such show"; });
    EXPECT_FALSE(find<wxTextCtrl>(dialog, "detected_name").IsEditable());
    set_text(dialog, "new_name", "Harbour Lights");
    press(dialog, "OK");
  });
  command(ui::mnuSpecify);
  EXPECT_EQ(rows(3), "the office|The Office;no such show|Harbour Lights;");
  EXPECT_EQ(list(3).selected(), 2);
  run_pass();
  session->queue.at(1).new_name = "b.avi";  // the real one does not fit everywhere
  on_dialog([&](wxDialog& info) {
    look(info);
    for (const char* const link : {"show_link", "episode_link"}) use(find(info, link), wxEVT_HYPERLINK);
  });
  command(ui::mnuInfo);
  EXPECT_EQ(seen,
            "Item Info: Filename: no.such.show.s01e01.avi|Status: Done|New Name: b.avi|Show page on tvmaze.com|"
            "Episode page on tvmaze.com|OK|");
  const QueueItem& item = session->queue.at(1);
  EXPECT_EQ(happened(), (std::vector{"open " + item.show_url, "open " + item.episode_url}));
}

TEST_F(TestWindow, ConfirmationDecidesAndCanBeSwitchedOff) {
  key_values.numbers["confirm"] = 1;
  start();
  drop({file("harbour.lights.s01e01.avi"), file("harbour.lights.s01e02.avi")});
  on_dialog([this](wxDialog& dialog) {
    wait_until([&] { return !text(dialog, "source").empty(); });
    const QueueItem& item = session->queue.at(1);
    EXPECT_EQ(shown(dialog), ("Confirm File Rename: Continue with file rename?|From:|[" + item.path + "]|To:|[" +
                              item.dest_path + item.new_name + "]|o Don't show this again|OK|Cancel|"));
    tick(dialog, "Don't show this again");
    EXPECT_EQ(key_values.numbers["confirm"], 0U);
    press(dialog, "Cancel");
  });
  run_pass();
  EXPECT_TRUE(session->queue.at(1).state == QueueState::Cancelled && is_done(2)) << rows(1);
  EXPECT_TRUE(exists("in/harbour.lights.s01e01.avi"));
}

TEST_F(TestWindow, MessagesBreakTheirLinesAndThoseWithANumberCanBeSwitchedOff) {
  start();
  const auto show = [this](int id, bool is_unwanted) {
    on_dialog([=](wxDialog& dialog) {
      EXPECT_EQ(shown(dialog), std::string("Title: [one\ntwo]|") + (id > 0 ? "o Don't show this again|OK|" : "OK|"));
      if (is_unwanted) tick(dialog, "Don't show this again");
      dialog.Close();
    });
    frame->show_message(id, "Title", "one#two", MessageIcon::Warning);
  };
  show(0, true), show(7, false), show(0, false), show(7, true);
  frame->show_message(7, "Title", "one#two", MessageIcon::Warning);  // stays away
}

}  // namespace quorvel::testing
