#include "test_window.h"

#include <wx/dnd.h>
#include <wx/evtloop.h>
#include <wx/hyperlink.h>
#include <wx/listctrl.h>
#include <wx/notebook.h>

#include <utility>

#include "file_tools.h"
#include "naming/file_names.h"
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
  store.texts[""] = "3.4";
  store.numbers["context"] = 1;  // the menu entries are left alone
  for (const char* const sub : {"in", "data", "program", "program/work"}) {
    std::filesystem::create_directory(folder / sub);
  }
  shell = system_file_operation(
      [this](std::uint64_t done, std::uint64_t total) {
        ++progress_reports;
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
    wait_until([this] { return frame == nullptr; });
  }
  EXPECT_TRUE(all_dialogs_came());
}

void TestWindow::start() {
  frame = new ui::MainFrame;
  frame->Bind(wxEVT_DESTROY, [this](wxWindowDestroyEvent& event) {
    if (event.GetWindow() == frame) frame = nullptr;
    event.Skip();
  });
  session.emplace(Ports{store, *shell, *files, *socket, *frame, *clock, &recorder},
                  Places{path("data"), path("program"), with_separator(path("program/work")), service.base()});
  startup.emplace(*session, *frame, recorder);
  frame->attach(*session, recorder, [this] { startup->unload(); });
  ASSERT_EQ(startup->run({}), StartResult::Running);
  wait_until([this] { return frame->IsActive(); });
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
      drive(*dialog);
    } catch (const std::exception& failure) {
      ADD_FAILURE() << from_wx(dialog->GetTitle()) << ": " << failure.what();
      cancel(*dialog);
    }
  });
  return wxID_NONE;
}

void TestWindow::on_dialog(const std::string& title, const std::string& button) {
  on_dialog([title, button](wxDialog& dialog) {
    EXPECT_EQ(from_wx(dialog.GetTitle()), title);
    press(dialog, button);
  });
}

void TestWindow::cancel(wxDialog& dialog) {
  if (dialog.IsModal()) return dialog.EndModal(wxID_CANCEL);
  wait_until([] { return ui::cancel_system_dialogs(); });
}

void TestWindow::command(int id) {
  wxCommandEvent event(wxEVT_MENU, id);
  frame->ProcessWindowEvent(event);
}

ui::RuleList& TestWindow::rules(std::size_t tab) {
  find<wxNotebook>(*frame, "TabStrip1").SetSelection(tab - 1);
  return find<ui::RuleList>(*frame, "ListView" + std::to_string(tab));
}

std::string TestWindow::menu_over(std::size_t tab, int row) {
  find<wxNotebook>(*frame, "TabStrip1").SetSelection(tab - 1);
  auto& list = find<wxListCtrl>(*frame, "ListView" + std::to_string(tab));
  wxRect area;
  wxPoint at(5, list.GetClientSize().y - 5);
  if (row > 0 && list.GetItemRect(row - 1, area)) at = wxPoint(area.x + 30, area.y + area.height / 2);
  auto shown = std::make_shared<std::string>();
  frame->stack().show_menu = [shown](wxWindow&, wxMenu& menu, const wxPoint&) { *shown = captions(menu); };
  wxContextMenuEvent event(wxEVT_CONTEXT_MENU, list.GetId(), list.ClientToScreen(at));
  list.ProcessWindowEvent(event);
  return *shown;
}

void TestWindow::choose_selected_item() {
  frame->stack().show_menu = [](wxWindow&, wxMenu&, const wxPoint&) {};
  wxContextMenuEvent by_key(wxEVT_CONTEXT_MENU);
  named(*frame, "ListView1")->ProcessWindowEvent(by_key);
}

void TestWindow::open_item(int index) {
  wxListEvent activated(wxEVT_LIST_ITEM_ACTIVATED);
  activated.m_itemIndex = index - 1;
  named(*frame, "ListView1")->ProcessWindowEvent(activated);
}

void TestWindow::in_the_pass(const std::function<void()>& action) {
  wxTheApp->CallAfter([this, action] {
    EXPECT_FALSE(idle());
    action();
  });
}

void TestWindow::wait_for_the_end() {
  wait_until([this] { return frame == nullptr; });
}

void TestWindow::rule(int action, const std::string& to) {
  session->filters.at(1).action = action;
  session->filters.at(1).path = with_separator(to);
}

std::size_t TestWindow::files_in(const char* name) const {
  if (!std::filesystem::exists(folder / name)) return 0;
  return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder / name), {}));
}

void TestWindow::focus(const char* name) {
  wxWindow* const window = named(*frame, name);
  window->SetFocus();
  wait_until([&] { return wxWindow::FindFocus() != nullptr && window->IsDescendant(wxWindow::FindFocus()); });
}

std::string TestWindow::file(const std::string& name, const std::string& contents) {
  std::string path = this->path("in/" + name);
  std::filesystem::create_directories(path_of(path).parent_path());
  write_file(path, contents);
  return path;
}

std::string TestWindow::path(const std::string& below) const {
  return text_of((folder / path_of(below)).make_preferred());
}

std::string TestWindow::cell(const char* list, int row, int column) const {
  const auto& shown = find<wxListCtrl>(*frame, list);
  wait_until([&] { return shown.GetItemCount() >= row; });
  return from_wx(shown.GetItemText(row - 1, column));
}

std::string TestWindow::log() const {
  const auto& box = find<wxListBox>(*frame, "List3");
  std::string all;
  for (const wxString& line : box.GetStrings()) all += from_wx(line) + "\n";
  return all;
}

void TestWindow::drop(const std::vector<std::string>& paths) {
  wxArrayString dropped;
  for (const std::string& path : paths) dropped.Add(wxString(path_of(path).c_str(), *wxConvFileName));
  static_cast<wxFileDropTarget*>(frame->GetDropTarget())->OnDropFiles(1, 1, dropped);
}

wxWindow* named(const wxWindow& parent, const std::string& name) {
  wxWindow* found = wxWindow::FindWindowByName(to_wx(name), &parent);
  if (found != nullptr) return found;
  for (wxWindow* const child : parent.GetChildren()) {
    if (child->IsTopLevel()) continue;
    if (from_wx(wxControl::RemoveMnemonics(child->GetLabel())) == name) return child;
    if (wxWindow* const below = named(*child, name)) return below;
  }
  return nullptr;
}

std::string label(const wxWindow& parent, const std::string& name) {
  return from_wx(find<wxControl>(parent, name).GetLabelText());
}

std::string text(const wxWindow& parent, const std::string& name) {
  return from_wx(find<wxTextCtrl>(parent, name).GetValue());
}

void set_text(const wxWindow& parent, const std::string& name, const std::string& text) {
  find<wxTextCtrl>(parent, name).SetValue(to_wx(text));
}

void press(const wxWindow& parent, const std::string& name) {
  auto& button = find<wxButton>(parent, name);
  if (!button.IsEnabled() || !button.IsShownOnScreen()) throw std::runtime_error(name + " cannot be pressed");
  wxCommandEvent event(wxEVT_BUTTON, button.GetId());
  event.SetEventObject(&button);
  button.ProcessWindowEvent(event);
}

std::string captions(const wxMenu& menu) {
  std::string all;
  for (const wxMenuItem* const item : menu.GetMenuItems()) {
    all += (all.empty() ? "" : "|") + (item->IsSeparator() ? "-" : from_wx(item->GetItemLabelText()));
  }
  return all;
}

int count(const std::string& text, const std::string& what) {
  int found = 0;
  for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; ++at) ++found;
  return found;
}

void click(const wxWindow& parent, const std::string& link) {
  wxCommandEvent event(wxEVT_HYPERLINK);
  find<wxHyperlinkCtrl>(parent, link).ProcessWindowEvent(event);
}

void type(const wxWindow& dialog, int key, bool control) {
  wxKeyEvent event(wxEVT_CHAR_HOOK);
  event.m_keyCode = key;
  event.m_controlDown = control;
  dialog.GetEventHandler()->ProcessEvent(event);
}

void tick(const wxWindow& parent, const std::string& name, bool on) {
  auto& box = find<wxCheckBox>(parent, name);
  box.SetValue(on);
  wxCommandEvent event(wxEVT_CHECKBOX, box.GetId());
  event.SetInt(on ? 1 : 0);
  event.SetEventObject(&box);
  box.ProcessWindowEvent(event);
}

}  // namespace quorvel::testing
