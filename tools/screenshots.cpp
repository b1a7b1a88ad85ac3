// Each case brings the window into one state and takes its picture. Start it by the script beside it.
#include <wx/notebook.h>
#include <wx/radiobut.h>
#include <wx/uiaction.h>
#include <wx/utils.h>

#include <cstdlib>

#include "test_window.h"

namespace quorvel::testing {
namespace {

#ifdef _WIN32
constexpr const char* import = "start /unix /usr/bin/import";  // from inside Wine, which does not wait for it
const std::string drive = "D:";
#else
constexpr const char* import = "import";
const std::string drive;
#endif

/// A path that is only shown, as this system writes it.
std::string shown(const std::string& path) {
  return text_of(path_of(drive + path).make_preferred());
}

/// Lets the toolkit finish its drawing and its animations.
void settle() {
  const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(400);
  wait_until([&] { return std::chrono::steady_clock::now() > until; });
}

class Screenshots : public TestWindow {
 protected:
  void picture(const wxWindow& window, const std::string& name) {
    settle();
    const char* const shots = std::getenv("QUORVEL_SCREENSHOTS");
    ASSERT_NE(shots, nullptr) << "QUORVEL_SCREENSHOTS names no folder";
    const wxRect area = window.GetScreenRect();
    const std::string crop = std::to_string(area.width) + "x" + std::to_string(area.height) + "+" +
                             std::to_string(area.x) + "+" + std::to_string(area.y);
    const std::string file = std::string(shots) + "/" + name + ".png";
    std::filesystem::remove(file);
    const std::string command = import + (" -window root -crop " + crop + " +repage ") + file;
    wxExecute(command, wxEXEC_ASYNC | wxEXEC_HIDE_CONSOLE);
    std::error_code none_yet;
    wait_until([&] { return std::filesystem::file_size(file, none_yet) > 0 && !none_yet; });
  }

  /// A session in which much has happened.
  void prepare() {
    start();
    AFilter rule = session->filters.at(1);
    rule.description = "File Type Equals mkv";
    rule.action = MoveAndRename;
    rule.showName.clear();
    rule.fileType = "mkv";
    rule.fileTypeCondition = Equals;
    rule.path = folder / "TV/[show]/Season [s]/";
    rule.mask = "[show] - S[ss]E[ee] - [title]";
    session->filters.append(rule);
    session->filters.exchange(1, 2);
    session->exceptions.store(0, {"harbor lights uk", "the harbour lights", false});
    session->exceptions.store(0, {"tom sons", "tom & sons", false});
    files->create_folder(folder / "TV");
    drop({file("The Harbour Lights/harbour.lights.s01e01.720p.avi"), file("The Harbour Lights/harbour.lights.1x02.mkv"),
          file("the.daily.brief.s01e01.mkv"), file("no.such.show.s01e01.avi"), file("holiday video.avi"),
          file("tomorrow.street.s01e01.avi")});
    run_pass();
    drop({file("tom.and.sons.s01e01.mp4"), file("night.train.s01e02.mkv")});
    rows(1);  // the pass has asked for another one
    list(1).select(2);
  }

  /// The window, with room for it, and the menu that its button opens.
  void with_menu(wxWindow& window, const char* button, const std::string& name) {
    const wxSize size = window.GetSize();
    window.SetSize(size + wxSize(0, size.y / 4));
    wxTheApp->CallAfter([&] {
      picture(window, name);
      wxUIActionSimulator().Char(WXK_ESCAPE);
    });
    press(window, button);
    window.SetSize(size);
  }

  void of_dialog(
      int id, const std::string& name, const std::function<void(wxDialog&)>& before = [](wxDialog&) {}) {
    on_dialog([this, name, before](wxDialog& dialog) {
      before(dialog);
      picture(dialog, name);
      dialog.EndModal(wxID_CANCEL);
    });
    command(id);
  }
};

TEST_F(Screenshots, Tabs) {
  start();
  picture(*frame, "queue-empty");
  frame->unload();
  wait_for_the_end();
  prepare();
  picture(*frame, "queue");
  find<wxNotebook>(*frame, "TabStrip1").SetSelection(1);
  std::vector<AFilter> examples = session->filters.entries();
  examples[0].path = shown("/home/anna/TV/[show]/");  // the real one has another name each time
  frame->show_filters({FilterFormat::row(examples, 0), FilterFormat::row(examples, 1)});
  find<ui::PlainList>(*frame, "ListView2").select(1);
  picture(*frame, "filters");
  find<wxNotebook>(*frame, "TabStrip1").SetSelection(2);
  picture(*frame, "exceptions");
}

TEST_F(Screenshots, Dialogs) {
  prepare();
  of_dialog(ui::mnuPrefs, "preferences");
  of_dialog(ui::mnuAbout, "about");
  of_dialog(ui::mnuAddEx, "exception");
  of_dialog(ui::mnuHelpGuide, "message");
  menu_over(1, 1);
  of_dialog(ui::mnuInfo, "item-done");
  menu_over(1, 4);
  of_dialog(ui::mnuInfo, "item-failed");
  of_dialog(ui::mnuSpecify, "exception-from-item");
  on_dialog([this](wxDialog& dialog) {
    picture(dialog, "message-with-box");
    dialog.EndModal(wxID_CANCEL);
  });
  frame->show_message(1, "Not Recommended",
                      "Disabling the cache is for troubleshooting only. The program will operate a lot slower with no "
                      "cache",
                      MessageIcon::Warning);
  on_dialog([this](wxDialog& dialog) {
    picture(dialog, "replace");
    dialog.EndModal(wxID_CANCEL);
  });
  frame->ask_to_replace(shown("/srv/media/TV/The Harbour Lights/Season 1/The Harbour Lights - S01E02 - Fog.mkv"));
  on_dialog([this](wxDialog& dialog) {
    picture(dialog, "confirm");
    dialog.EndModal(wxID_CANCEL);
  });
  frame->ask_confirmation({"Confirm File Move", "Continue with file move?",
                           shown("/home/user/Downloads/The Harbour Lights Season 1/harbour.lights.1x02.720p.mkv"),
                           shown("/srv/media/TV/The Harbour Lights/Season 1/The Harbour Lights - S01E02 - Fog.mkv")});
}

TEST_F(Screenshots, ExactNames) {
  prepare();
  drop({file("cafe.noir.s01e01.avi"), file("cafe.noir.s01e02.avi")});
  run_pass();
  picture(*frame, "lost-characters");
  frame->unload();
  wait_for_the_end();
  key_values.numbers["exact"] = 1;
  web.knows_part_time();
  web.bodies["/search/shows?q=part+time"] =
      R"([{"show":{"id":8,"name":"Part Time","url":"https://x/8","premiered":"2010-01-01",
                   "network":{"name":"Harbour TV","country":{"code":"US"}}}},
          {"show":{"id":9,"name":"Part Time","url":"https://x/9","premiered":"2015-01-01",
                   "network":{"name":"Channel 9","country":{"code":"GB"}}}},
          {"show":{"id":10,"name":"Part-Time Heroes","premiered":"2019-01-01","network":{"name":"KBN"}}}])";
  web.bodies["/shows/9"] = R"({"id":9,"name":"Part Time","premiered":"2015-01-01"})";
  start();
  drop({file("part.time.s01e01.720p.mkv"), file("part.time.s01e02.720p.mkv"), file("part.time.s01e03.720p.mkv"),
        file("the.harbour.lights.s01e01.mkv")});
  run_pass();
  picture(*frame, "queue-exact");
  menu_over(1, 1);
  of_dialog(ui::mnuInfo, "item-unclear");
  const auto wait_for_shows = [](wxDialog& dialog) {
    auto& shows = find<ui::PlainList>(dialog, "shows");
    wait_until([&] { return shows.count() > 0; });
    shows.select(2);
  };
  of_dialog(ui::mnuChoose, "choose-show", wait_for_shows);
  of_dialog(ui::mnuChoose, "choose-show-none", [&](wxDialog& dialog) {
    wait_for_shows(dialog);
    set_text(dialog, "name", "part time work");
    press(dialog, "&Search");
  });
  session->lookup.show_of_id(9);  // so that the dialog need not wait for it
  session->lookup.choose(Lookup::choice_key("part time", read_name("part.time.s01e01.mkv")), 9, false);
  of_dialog(ui::mnuChoose, "choose-show-again", wait_for_shows);
  menu_over(1, 4);
  of_dialog(ui::mnuInfo, "item-exact");
}

TEST_F(Screenshots, Review) {
  key_values.numbers["review"] = 1;
  start();
  picture(*frame, "review-first");
  drop({file("harbour.lights.s01e01.720p.mkv"), file("harbour.lights.s01e02.720p.mkv"),
        file("harbour.lights.s01e03.720p.mkv"), file("Harbour Lights 1x03.mkv"), file("no.such.show.s01e01.avi")});
  run_pass();
  auto& tree = find<ui::ReviewTree>(*frame, "review_tree");
  tree.select({5});
  picture(*frame, "review");
  tree.select({2});
  tree.edit(2, ui::ReviewModel::NewName, "The Harbour Lights - 1x02 - Fog", [](const std::string&) { return true; });
  picture(*frame, "review-edit");
  tree.editor().close();
  press(*frame, "Show Li&st");
  picture(*frame, "review-list");
}

TEST_F(Screenshots, History) {
  prepare();
  run_pass();
  list(1).select_all({1, 2});
  picture(*frame, "queue-several");
  on_dialog([this](wxDialog& dialog) {
    auto& passes = find<ui::PlainList>(dialog, "passes");
    auto& files = find<ui::PlainList>(dialog, "files");
    wait_until([&] { return files.count() > 0; });
    passes.select(passes.count());
    wait_until([&] { return files.count() == 3; });
    files.select_all({1, 3});
    picture(dialog, "history");
    file("The Harbour Lights/harbour.lights.s01e01.720p.avi");
    files.select_all({1, 2, 3});
    settle();
    press(dialog, "Undo &Selected");
    files.select(1);
    picture(dialog, "history-refused");
    dialog.EndModal(wxID_CANCEL);
  });
  command(ui::mnuHistory);
  drop({file("harbour.lights.s01e01.mp4"), file("harbour.lights.s01e02.mp4")});
  run_pass();
  on_dialog([this](wxDialog& dialog) {
    picture(dialog, "undo-last-pass");
    press(dialog, "&Undo");
  });
  command(ui::mnuUndoPass);
  picture(*frame, "undone");
}

TEST_F(Screenshots, Wizard) {
  prepare();
  on_dialog([this](wxDialog& wizard) {
    picture(wizard, "wizard-1");
    press(wizard, "&Next ");
    find<wxRadioButton>(wizard, "&Move && Rename").SetValue(true);
    picture(wizard, "wizard-2");
    press(wizard, "&Next ");
    set_text(wizard, "path", shown("/srv/media/TV/[show]/Season [s]").c_str());
    picture(wizard, "wizard-3");
    press(wizard, "&Next ");
    picture(wizard, "wizard-4");
    with_menu(wizard, "mask_tokens", "wizard-tokens");
    press(wizard, "&Next ");
    picture(wizard, "wizard-5");
    press(wizard, "&Finish");
  });
  command(ui::mnuAddFilter);
}

}  // namespace
}  // namespace quorvel::testing
