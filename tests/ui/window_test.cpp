#include <wx/choice.h>
#include <wx/filedlg.h>
#include <wx/hyperlink.h>
#include <wx/notebook.h>
#include <wx/radiobut.h>
#include <wx/spinctrl.h>
#include <wx/uiaction.h>

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

/// What a file can be picked by, in capitals too.
#ifdef _WIN32
constexpr const char* file_types = "Supported Types|*.avi;*.mkv;*.mpg;*.mp4|All Files|*.*";
#else
constexpr const char* file_types =
    "Supported Types|*.[aA][vV][iI];*.[mM][kK][vV];*.[mM][pP][gG];*.[mM][pP]4|All Files|*";
#endif

TEST_F(TestWindow, MenusAndTabsHoldWhatBelongsThere) {
  start();
  session->exceptions.store(0, {"a", "b", false});
  EXPECT_EQ(frame->GetTitle(), "Quorvel 3.4");
  EXPECT_TRUE(frame->GetMinSize() == frame->GetSize() && frame->GetMaxSize() == frame->GetSize());
  std::string all;
  const wxMenuBar& bar = *frame->GetMenuBar();
  for (unsigned i = 0; i < bar.GetMenuCount(); ++i) {
    all += from_wx(bar.GetMenuLabelText(i)) + ": " + captions(*bar.GetMenu(i)) + "\n";
  }
  const auto& tabs = find<wxNotebook>(*frame, "TabStrip1");
  for (const std::size_t tab : {2U, 3U, 1U}) {
    const std::string menus = menu_over(tab, 0) + ";" + menu_over(tab, -2) + ";" + menu_over(tab, tab > 1 ? 1 : 0);
    const std::string page = shown(tabs) + std::to_string(list(tab).selected()) + menus;
    all += from_wx(tabs.GetPageText(tab - 1)) + ": " + page + "\n";
  }
  EXPECT_EQ(
      all,
      "File: Add File|Stop|-|Exit\n"
      "Options: Preferences|Review First|Watch Folders\u2026|-|History\u2026|Undo Last Pass\n"
      "Help: Quorvel Help|Check For Updates|Quorvel Website|-|About Quorvel\n"
      "Filter List: Filter,Action,File Mask,Path|Move Up|Move Down|Add New|1Add Filter;Add Filter;Edit Filter|Remove "
      "Filter|-|Add Filter\n"
      "Exceptions: Detected Show Name,New Show Name|Move Up|Move Down|Add New|1Add Exception;Add Exception;Add "
      "Exception|Remove Exception\n"
      "File Queue: Filename,New Name,Status|0;;\n");
}

TEST_F(TestWindow, DroppedFoldersAreRenamedByThePassThatTheTimerStartsThenUndoneAndRetriedByTheMenu) {
  start();
  const auto& queue = find<ui::QueueList>(*frame, "ListView1");
  EXPECT_TRUE(find(queue, "hint").IsShown());
  const std::string early = file("Harbour.Lights/harbour.lights.s01e01.avi");
  const std::string odd = file(std::string(odd_name) + ".s01e01.avi"),
                    odd_row = std::string(odd_name_shown) + ".s01e01||Failed;";
  drop({folder / "in/Harbour.Lights", odd});
  wait_until([&] { return session->queue.at(2).state == QueueState::Failed && !session->processor.queue_busy(); });
  EXPECT_TRUE(exists("in/Harbour.Lights/The Harbour Lights - 1x01 - Slack Water.avi"));
  EXPECT_EQ(rows(1), "harbour.lights.s01e01|The Harbour Lights - 1x01 - Slack Water|Done;" + odd_row);
  EXPECT_TRUE(queue.selected() == 2 && session->queue.at(2).path == odd && logged("All items processed") == 1);
  EXPECT_FALSE(find(queue, "hint").IsShown());

  EXPECT_EQ(
      menu_over(1, 1),
      "Item Info|Undo Rename|Add Exception|Choose Show\u2026|Look Up Again|Retry This File|Open Folder|-|Retry Failed");
  command(ui::mnuUndo);
  EXPECT_TRUE(files->exists(early));
  EXPECT_EQ(rows(1), "harbour.lights.s01e01||Cancelled;" + odd_row);
  command(ui::mnuRetry);
  EXPECT_TRUE(is_done(1));

  for (int i = 0; i < 1200; ++i) session->log.debug_log("line", LogLevel::Normal);
  const auto& log = find<wxListBox>(*frame, "List3");
  wait_until([&] { return log.GetTopItem() + log.GetCountPerPage() >= static_cast<int>(log.GetCount()) - 1; });
}

TEST_F(TestWindow, ExactNamesAreTurnedOnInTheEmptyQueueInThePreferencesAndWhereNamesHaveLostCharacters) {
  start();
  std::string seen;
  const auto look = [&] {
    seen += std::to_string(key_values.numbers["exact"]) + (session->settings.exact ? "x" : "o");
    seen += find<wxCheckBox>(*frame, "exact_names").GetValue() ? "x " : "o ";
  };
  tick(*frame, "exact_names"), look();
  on_dialog([](wxDialog& dialog) { tick(dialog, "Check8", false), press(dialog, "OK"); });
  command(ui::mnuPrefs), look();
  drop({file("cafe.noir.s01e01.avi"), file("night.train.s01e02.avi")});
  auto& bar = find(*frame, "message_bar");
  for (const char* const button : {"&Close", "&Use Exact Names", "&Don't Show Again", ""}) {
    run_pass();
    EXPECT_TRUE(is_done(1) && is_done(2)) << rows(1);
    seen += shown(bar) + " ";
    if (*button != '\0') press(bar, button);
    wxTheApp->ProcessPendingEvents();
    look();
    for (const int item : {1, 2}) session->undo.run(item);
    tick(*frame, "exact_names", false);
  }
  const std::string told =
      "2 renamed. 2 names have lost characters. Exact names keep them.|Undo All 2|Use Exact Names|Don't Show "
      "Again|Close| ";
  EXPECT_EQ(seen, "1xx 0oo " + told + "0oo " + told + "1xx " + told + "0oo 2 renamed.|Undo All 2|Close| 0oo ");
}

TEST_F(TestWindow, RulesMoveWithTheirSelectionAndStopAtTheEnds) {
  start();
  for (const std::string name : {"a", "b", "c"}) {
    AFilter filter;
    filter.description = name;
    session->filters.store(name == "a" ? 1 : 0, filter);
    session->exceptions.store(0, {name, name, false});
  }
  for (const std::string thing : {"filter", "exception"}) {
    const bool is_filter = thing == "filter";
    const char *const up = is_filter ? "Command3" : "Command4", *const down = is_filter ? "Command1" : "Command5";
    const int remove = is_filter ? ui::mnuRemFilter : ui::mnuRemEx;
    ui::RowList& list = this->list(is_filter ? 2 : 3);
    std::string seen;
    const auto look = [&] {
      for (int row = 1; row <= list.count(); ++row) seen += from_wx(list.cell(row, 0));
      seen += std::to_string(list.selected()) + " ";
    };
    press(*frame, down), command(remove), look();  // nothing is selected
    list.select(1);
    for (const char* const button : {down, down, down, up}) press(*frame, button), look();
    command(remove), look();
    press(*frame, up), press(*frame, up), look();
    std::filesystem::rename(path_of(folder / "data/Quorvel"), path_of(folder / "data/gone"));
    on_dialog("Unable to move " + thing, "OK"), on_dialog("Unable to remove " + thing, "OK");
    press(*frame, down), command(remove), look();
    std::filesystem::rename(path_of(folder / "data/gone"), path_of(folder / "data/Quorvel"));
    command(remove), look();
    EXPECT_EQ(seen, "abc0 bac2 bca3 bca3 bac2 bc2 cb1 cb1 b1 ");
  }
  on_dialog("Unable to remove filter", "OK");  // the last one stays
  command(ui::mnuRemFilter), command(ui::mnuRemEx);
  EXPECT_EQ(rows(2) + rows(3), "b|||;");
}

TEST_F(TestWindow, TheFileAndHelpMenusLeadOut) {
  key_values.texts["updater"] = "/opt/tarn";
  start();
  on_dialog([](wxDialog& dialog) {
    auto& picker = dynamic_cast<wxFileDialog&>(dialog);
    EXPECT_EQ(picker.GetMessage(), "Select File");
    EXPECT_EQ(picker.GetWildcard(), file_types);
    cancel(picker);
  });
  on_dialog("Quorvel", "OK");
  on_dialog([this](wxDialog& about) {
    EXPECT_EQ(shown(about),
              std::string("About Quorvel: Quorvel|Version 3.4  Build 0|") + copyright + "|https://quorvel.example|OK|");
    use(find(about, "website"), wxEVT_HYPERLINK);
    on_dialog("Quorvel", "OK"), type(about, WXK_F1, false);  // there is no help to open
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

TEST_F(TestWindow, FilesOfWatchedFoldersComeIntoTheQueue) {
  const std::string in = folder / "in", gone = folder / "gone";
  key_values.texts["watched"] = in + "\n" + gone + "\n";
  start();
  on_dialog([](wxDialog& dialog) {
    EXPECT_TRUE(shown(dialog).find("|Add\u2026|Remove|o Watch These Folders|") != std::string::npos) << shown(dialog);
    find<wxListBox>(dialog, "folders").SetSelection(1);
    press(dialog, "remove");
    tick(dialog, "watch");
    press(dialog, "OK");
  });
  command(ui::mnuWatch);
  EXPECT_TRUE(key_values.texts["watched"] == in + "\n" && key_values.numbers["watching"] == 1);
  file("The.Harbour.Lights.S01E02.mkv");
  wait_until([this] {
    clock.now += std::chrono::seconds(1);
    return session->queue.count() == 1 && is_done(1);
  });
  EXPECT_TRUE(exists("in/The Harbour Lights - 1x02 - The Pilot Boat.mkv"));
}

TEST_F(TestWindow, EachPreferenceHasItsBox) {
  key_values.numbers["autoclose"] = 1;
  start();
  on_dialog([](wxDialog& dialog) {
    EXPECT_EQ(
        shown(dialog),
        "Preferences: x Close when done|o Verbose Logging|o Confirm File Operations|o Review First|o Exact Names|o "
        "Fail What May Be "
        "Read Otherwise|o Read Back What Is Moved to Another Drive|o Disable Cache|o Disable UTF-8 Decoding|o Take "
        "Along What Belongs to an Episode|o Put Emptied Folders into the Trash|o Add To Context Menu for Folders & "
        "Video "
        "Files|Additional Types:|[avi;mkv;mpg;mp4]|Goes Along:|-[]|Leftovers in "
        "Folders:|-[Thumbs.db;.DS_Store;desktop.ini]|Days to Keep "
        "the History:|OK|Cancel|");
    set_text(dialog, "txtTypes", ".MOV;");
    tick(dialog, "Check12", true);
    find<wxSpinCtrl>(dialog, "spnHistory").SetValue(30);
    type(dialog, 'T', true);
    press(dialog, "OK");
  });
  command(ui::mnuPrefs);
  EXPECT_EQ(key_values.numbers["history"], 30u);
  EXPECT_TRUE(key_values.texts["companions"].starts_with("srt;ass;"));
  EXPECT_TRUE(key_values.texts["types"] == "mov" && logged("Keep temp on") == 1);
  std::string seen;
  const char* const boxes[] = {"Check1", "Check2", "Check3", "Check4",  "Check5", "Check6",
                               "Check7", "Check8", "Check9", "Check10", "Check11"};
  for (const char* const wanted : boxes) {
    on_dialog([&, wanted](wxDialog& dialog) {
      for (const char* const box : boxes) {
        if (find<wxCheckBox>(dialog, box).GetValue()) seen += box;
        tick(dialog, box, box == wanted);
      }
      if (wanted == boxes[2]) on_dialog("Not Recommended", "OK");
      press(dialog, "OK");
    });
    command(ui::mnuPrefs);
    for (const auto& [name, number] : key_values.numbers) {
      if (name != "history" && name != "settle" && number > (name == "context" || name == "logging" ? 1U : 0U))
        seen += ", " + name + " ";
    }
  }
  EXPECT_EQ(seen,
            "Check6, context Check1, confirm Check2, nocache Check3, noutf8 Check4, logging Check5, autoclose Check6, "
            "verify Check7, exact Check8, strict Check9, review Check10, tidy ");
}

TEST_F(TestWindow, AShowIsChosenForTheFilesOfItsNameAndTheyAreLookedUpAgain) {
  key_values.numbers["exact"] = 1;
  web.knows_part_time();
  start();
  wxUIActionSimulator keyboard;
  drop({file("part.time.s01e01.avi"), file("part.time.s01e02.avi")});
  run_pass();
  menu_over(1, 1);
  const auto shows = [](const wxWindow& dialog) -> ui::RowList& { return find<ui::RowList>(dialog, "shows"); };
  on_dialog([&](wxDialog& dialog) {
    wait_until([&] { return shows(dialog).count() == 2; });
    EXPECT_EQ(shown(dialog),
              "Choose Show: Filename: part.time.s01e01.avi|Read as: \"part time\", season 1, episode 1|The "
              "choice is also for 1 other file of this show.|Name:|[part time]|Search|Name,Year,Country,Network|2 "
              "shows found|x "
              "Remember for this name|-Show Page|-Choose|Cancel|");
    wait_until([&] { return dialog.IsActive(); });
    set_text(dialog, "name", " xyz ");
    find(dialog, "name").SetFocus();
    keyboard.Char(WXK_RETURN);
    wait_until(
        [&] { return find(dialog, "result").GetLabel().StartsWith("TVmaze knows no show called \"xyz\". Try"); });
    set_text(dialog, "name", "part time"), press(dialog, "&Search");
    shows(dialog).select(1), press(dialog, "Show &Page");
    shows(dialog).SetFocus();
    keyboard.Char(WXK_DOWN);
    wait_until([&] { return shown(dialog).ends_with("|-Show Page|Choose|Cancel|"); });
    keyboard.Char(WXK_RETURN);
  });
  command(ui::mnuChoose);
  EXPECT_EQ(rows(1), "part.time.s01e01|Part Time - 1x01 - A9|Done;part.time.s01e02|Part Time - 1x02 - B|Done;");
  EXPECT_EQ(happened(), std::vector<std::string>{"open https://x/8"});
  command(ui::mnuUndo);
  on_dialog([&](wxDialog& dialog) {
    wait_until([&] { return shows(dialog).selected() == 2; });
    press(dialog, "&Forget");
    EXPECT_FALSE(find(dialog, "&Forget").IsShown());
    dialog.Close();
  });
  command(ui::mnuChoose);
  web.bodies["/search/shows?q=part+time"] = R"([{"show":{"id":8,"name":"Part Time"}}])";
  command(ui::mnuLookUp);  // the service knows better by now
  EXPECT_TRUE(is_done(1) && session->queue.at(1).show_id == 8);
}

TEST_F(TestWindow, ExceptionsAreAddedByNameOrForAnItemWhoseDialogSaysWhatBecameOfIt) {
  start();
  const std::string path = file("no.such.show.s01e01.avi");
  drop({path, file("holiday.avi")});
  run_pass();
  menu_over(1, 2);  // there is no name to be seen in it
  on_dialog([](wxDialog& dialog) {
    auto& name = find<wxTextCtrl>(dialog, "detected_name");
    wait_until([&] { return name.HasFocus(); });
    EXPECT_TRUE(name.IsEditable());
    press(dialog, "Cancel");
  });
  command(ui::mnuSpecify);
  on_dialog([&](wxDialog& dialog) {
    EXPECT_EQ(shown(dialog), "Add Exception: Detected Show Name:|[]|New Show Name:|[]|OK|Cancel|");
    on_dialog("Detected Name Required", "OK");
    press(dialog, "OK");
    set_text(dialog, "detected_name", "the office"), set_text(dialog, "new_name", "The Office");
    press(dialog, "OK");
  });
  list(3), press(*frame, "Command6");
  std::string seen;
  const auto look = [&](wxDialog& info) {
    wait_until([&] { return !find(info, "status").GetLabel().empty(); });
    seen = shown(info);
    for (const char* const link : {"show_link", "episode_link"}) {
      if (find(info, link).IsShownOnScreen()) use(find(info, link), wxEVT_HYPERLINK);
    }
    press(info, "Open &Folder");
    press(info, "OK");
  };
  on_dialog(look);
  list(1).on_activate(1);
  EXPECT_EQ(seen, "Item Info: Filename: no.such.show.s01e01.avi|Status: Failed|Old Path:|[" + path +
                      "]|[Error: Unable to find show on tvmaze.com\nSearched for: no such show]|Open Folder|OK|");
  on_dialog([](wxDialog& dialog) {
    wait_until([&] { return find<wxTextCtrl>(dialog, "detected_name").GetValue() == "no such show"; });
    EXPECT_FALSE(find<wxTextCtrl>(dialog, "detected_name").IsEditable());
    set_text(dialog, "new_name", "Harbour Lights");
    press(dialog, "OK");
  });
  command(ui::mnuSpecify);
  EXPECT_EQ(rows(3), "the office|The Office;no such show|Harbour Lights;");
  EXPECT_EQ(list(3).selected(), 2);
  run_pass();
  QueueItem& item = session->queue.at(1);
  item.new_name = "b.avi";  // the real one does not fit everywhere
  item.episode_url = "null";
  on_dialog(look);
  command(ui::mnuInfo);
  EXPECT_EQ(seen, "Item Info: Filename: no.such.show.s01e01.avi|Status: Done|New Name: b.avi|Old Path:|[" + path +
                      "]|New Path:|[" + item.dest_path + "b.avi]|Show page on tvmaze.com|Open Folder|OK|");
  EXPECT_EQ(happened(), (std::vector{"open " + item.dest_path, "open " + item.show_url, "open " + item.dest_path}));
}

TEST_F(TestWindow, QuestionsDecideAndTheyAndMessagesWithANumberCanBeSwitchedOff) {
  key_values.numbers["confirm"] = 1;
  start();
  drop({file("harbour.lights.s01e01.avi"), file("harbour.lights.s01e02.avi")});
  on_dialog([this](wxDialog& dialog) {
    wait_until([&] { return !find<wxTextCtrl>(dialog, "source").IsEmpty(); });
    const QueueItem& item = session->queue.at(1);
    EXPECT_EQ(shown(dialog), ("Confirm File Rename: Continue with file rename?|From:|[" + item.path + "]|To:|[" +
                              item.dest_path + item.new_name + "]|o Don't show this again|OK|Cancel|"));
    tick(dialog, "&Don't show this again");
    EXPECT_EQ(key_values.numbers["confirm"], 0U);
    press(dialog, "Cancel");
  });
  run_pass();
  EXPECT_TRUE(session->queue.at(1).state == QueueState::Cancelled && is_done(2)) << rows(1);
  EXPECT_TRUE(exists("in/harbour.lights.s01e01.avi"));

  const auto show = [this](int id) { frame->show_message(id, "Title", "one#two##", MessageIcon::Warning); };
  for (const bool is_unwanted : {false, true}) {
    on_dialog([=](wxDialog& dialog) {
      EXPECT_EQ(shown(dialog), "Title: [one\ntwo\n\n]|o Don't show this again|OK|");
      tick(dialog, "&Don't show this again", is_unwanted);
      dialog.Close();
    });
    show(7);
  }
  show(7);  // stays away
  EXPECT_EQ(key_values.numbers["msgskip$7"], 1U);
  key_values.numbers["msgskip$0"] = 1;
  on_dialog([](wxDialog& dialog) {
    EXPECT_EQ(shown(dialog), "Title: [one\ntwo\n\n]|OK|");
    dialog.Close();
  });
  show(0);
}

}  // namespace quorvel::testing
