#include "test_window.h"

#include <wx/dnd.h>
#include <wx/evtloop.h>
#include <wx/log.h>
#include <wx/notebook.h>
#include <wx/stockitem.h>

#include <algorithm>

#include "ui/desktop.h"
#include "ui/text.h"

namespace quorvel::testing {

using ui::from_wx;
using ui::to_wx;

void wait_until(const std::function<bool()>& done) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (!done()) {
    if (std::chrono::steady_clock::now() > deadline) throw std::runtime_error("waited in vain");
    wxEventLoopBase* const loop = wxEventLoopBase::GetActive();
    wxTheApp->ProcessPendingEvents();
    if (loop->Pending()) {
      loop->Dispatch();
    } else if (!loop->ProcessIdle() && !done()) {
      loop->DispatchTimeout(10);
    }
  }
}

TestWindow::TestWindow() {
  key_values.texts[""] = "3.4";
  key_values.numbers["context"] = Settings::TurnedOff;  // the menu entries are left alone
  shell = system_file_operation(
      [this](std::uint64_t done, std::uint64_t total) {
        on_progress();
        return frame->copy_progress(done, total);
      },
      [this](const std::string& path) { return frame->ask_to_replace(path); });
  Register();
}

TestWindow::~TestWindow() {
  Unregister();
  if (frame != nullptr) {
    frame->unload();
    wait_for_the_end();
  }
  EXPECT_TRUE(all_dialogs_came());
}

void TestWindow::start() {
  frame = new ui::MainFrame;
  session.emplace(with(*frame), places());
  startup.emplace(*session, *frame, desktop);
  frame->attach(*session, desktop, [this] { startup->unload(); });
  ASSERT_EQ(startup->run({}), StartResult::Running);
  wait_until([this] { return frame->IsActive(); });
  events.list.clear();
}

/// The letters that the dialog's controls answer to with Alt; each must have one owner.
static std::string alt_letters(const wxWindow& parent) {
  std::string letters;
  for (const wxWindow* const child : parent.GetChildren()) {
    if (!child->IsShown()) continue;
    // The system puts its own label, with its own letter, onto the buttons that it knows.
    wxString label = wxIsStockID(child->GetId()) ? wxGetStockLabel(child->GetId()) : child->GetLabel();
    label.Replace("&&", "");
    if (const int mark = label.Find('&'); mark != wxNOT_FOUND) letters += from_wx(label.Mid(mark + 1, 1).Upper());
    letters += alt_letters(*child);
  }
  return letters;
}

int TestWindow::Enter(wxDialog* dialog) {
  if (std::exchange(entered_, dialog) == dialog) return wxID_NONE;  // the system's own dialogs come twice
  if (drives_.empty()) {
    ADD_FAILURE() << "unexpected dialog: " << from_wx(dialog->GetTitle());
    return wxID_CANCEL;
  }
  auto drive = std::move(drives_.front());
  drives_.pop_front();
  wxTheApp->CallAfter([dialog, drive = std::move(drive)] {
    try {
      std::string letters = alt_letters(*dialog);
      std::ranges::sort(letters);
      EXPECT_EQ(std::ranges::adjacent_find(letters), letters.end()) << from_wx(dialog->GetTitle()) << ": " << letters;
      drive(*dialog);
    } catch (const std::exception& failure) {
      ADD_FAILURE() << from_wx(dialog->GetTitle()) << ": " << failure.what();
      cancel(*dialog);
    }
  });
  return wxID_NONE;
}

void TestWindow::on_dialog(const std::string& title, const char* button) {
  on_dialog([=](wxDialog& dialog) {
    EXPECT_EQ(dialog.GetTitle(), to_wx(title));
    press(dialog, button);
  });
}

void TestWindow::command(int id) {
  wxCommandEvent event(wxEVT_MENU, id);
  frame->ProcessWindowEvent(event);
}

ui::RowList& TestWindow::list(std::size_t tab) const {
  find<wxNotebook>(*frame, "TabStrip1").SetSelection(tab - 1);
  return find<ui::RowList>(*frame, ("ListView" + std::to_string(tab)).c_str());
}

std::string TestWindow::rows(std::size_t tab) const {
  wxTheApp->ProcessPendingEvents();
  const auto& shown = find<ui::RowList>(*frame, ("ListView" + std::to_string(tab)).c_str());
  std::string all;
  for (int row = 1; row <= shown.count(); ++row) {
    for (std::size_t column = 0; column < shown.titles().size(); ++column) {
      all += (column > 0 ? "|" : "") + from_wx(shown.cell(row, static_cast<int>(column)));
    }
    all += ";";
  }
  return all;
}

std::string TestWindow::menu_over(std::size_t tab, int row) {
  ui::RowList& over = list(tab);
  wxTheApp->ProcessPendingEvents();
  wxContextMenuEvent event(wxEVT_CONTEXT_MENU, over.GetId());
  wait_until([&] {
    const wxRect area = over.area_of(row);
    const wxPoint at(40, row == -2 ? 2 : area.IsEmpty() ? over.GetClientSize().y - 8 : area.y + area.height / 2);
    if (row != -1) event.SetPosition(over.ClientToScreen(at));
    wxPoint menu;
    return row < 1 || (!area.IsEmpty() && over.menu_row(event, menu) == row);
  });
  const auto shown = std::make_shared<std::string>();
  frame->stack().show_menu = [shown](wxWindow&, wxMenu& menu, const wxPoint&) { *shown = captions(menu); };
  over.ProcessWindowEvent(event);
  return *shown;
}

void TestWindow::wait_for_the_end() {
  wait_until([this] { return frame == nullptr; });
}

std::string TestWindow::file(const std::string& name, const std::string& bytes) const {
  write("in/" + name, bytes);
  return folder / ("in/" + name);
}

std::ptrdiff_t TestWindow::logged(const std::string& end) const {
  return std::ranges::count_if(session->log.lines(), [&](const std::string& line) { return line.ends_with(end); });
}

void TestWindow::drop(const std::vector<std::string>& paths) const {
  wxArrayString dropped;
  for (const std::string& path : paths) dropped.Add(wxString(path_of(path).c_str(), *wxConvFileName));
  static_cast<wxFileDropTarget*>(frame->GetDropTarget())->OnDropFiles(1, 1, dropped);
}

static std::string seen(const wxWindow& window) {
  if (const auto* const list = dynamic_cast<const ui::RowList*>(&window)) {
    std::string titles;
    for (const char* const title : list->titles()) titles += (titles.empty() ? "" : ",") + std::string(title);
    return titles;
  }
  const auto* const control = dynamic_cast<const wxControl*>(&window);
  std::string label = control != nullptr ? from_wx(control->GetLabelText()) : "";
  const auto ticked = [&label](bool is_ticked) { return (is_ticked ? "x " : "o ") + label; };
  if (const auto* const box = dynamic_cast<const wxTextCtrl*>(control)) return "[" + from_wx(box->GetValue()) + "]";
  const auto* const choice = dynamic_cast<const wxChoice*>(control);
  if (choice != nullptr) return "<" + from_wx(choice->GetStringSelection()) + ">";
  if (const auto* const box = dynamic_cast<const wxCheckBox*>(control)) return ticked(box->GetValue());
  if (const auto* const button = dynamic_cast<const wxRadioButton*>(control)) return ticked(button->GetValue());
  return label;
}

std::string shown(const wxWindow& parent) {
  const auto* const dialog = dynamic_cast<const wxDialog*>(&parent);
  std::string all = dialog != nullptr ? from_wx(dialog->GetTitle()) + ": " : "";
  for (const wxWindow* const child : parent.GetChildren()) {
    if (!child->IsShownOnScreen() || child->IsTopLevel()) continue;
    const std::string piece = seen(*child);
    all += piece.empty() ? shown(*child) : (child->IsEnabled() ? "" : "-") + piece + "|";
  }
  return all;
}

void set_text(const wxWindow& parent, const char* name, const char* text) {
  find<wxTextCtrl>(parent, name).SetValue(text);
}

void use(wxWindow& control, wxEventType event, int value, int id) {
  wxCommandEvent used(event, id == wxID_NONE ? control.GetId() : id);
  used.SetInt(value);
  used.SetEventObject(&control);
  control.ProcessWindowEvent(used);
}

void press(const wxWindow& parent, const char* name) {
  auto& button = find<wxButton>(parent, name);
  EXPECT_TRUE(button.IsEnabled() && button.IsShownOnScreen()) << name;
  use(button, wxEVT_BUTTON);
}

void tick(const wxWindow& parent, const char* name, bool on) {
  find<wxCheckBox>(parent, name).SetValue(on);
  use(find(parent, name), wxEVT_CHECKBOX, on ? 1 : 0);
}

void type(const wxWindow& dialog, int key, bool control) {
  wxKeyEvent event(wxEVT_CHAR_HOOK);
  event.m_keyCode = key;
  event.m_controlDown = control;
  dialog.GetEventHandler()->ProcessEvent(event);
}

std::string captions(const wxMenu& menu) {
  std::string all;
  for (const wxMenuItem* const item : menu.GetMenuItems()) {
    all += (all.empty() ? "" : "|") + (item->IsSeparator() ? "-" : from_wx(item->GetItemLabelText()));
  }
  return all;
}

void cancel(wxDialog& dialog) {
  if (dialog.IsModal()) return dialog.EndModal(wxID_CANCEL);
  wait_until([] { return ui::cancel_system_dialogs(); });
}

}  // namespace quorvel::testing

/// Runs the tests with the toolkit, whose complaints are failures.
int main(int argc, char** argv) {
  ::testing::InitGoogleTest(&argc, argv);
  if (GTEST_FLAG_GET(list_tests)) return RUN_ALL_TESTS();
  wxApp::SetInstance(new wxApp);
  if (!wxEntryStart(argc, argv) || !wxTheApp->CallOnInit()) return 1;
  wxTheApp->SetExitOnFrameDelete(false);
  delete wxLog::SetActiveTarget(new wxLogStderr);  // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks): it is the log's
  wxSetAssertHandler(
      [](const wxString& file, int line, const wxString& function, const wxString& condition, const wxString& message) {
        ADD_FAILURE_AT(file.utf8_str(), line) << function << ": " << condition << " " << message;
      });
  int result = 0;
  {
    wxGUIEventLoop loop;
    const wxEventLoopActivator active(&loop);
    result = RUN_ALL_TESTS();
  }
  wxEntryCleanup();
  return result;
}
