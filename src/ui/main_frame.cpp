#include "ui/main_frame.h"

#include <wx/dnd.h>
#include <wx/evtloop.h>
#include <wx/filedlg.h>
#include <wx/msgdlg.h>
#include <wx/sizer.h>

// Behind the header that it leans on.
#include <wx/generic/msgdlgg.h>

#include "shell/version.h"
#include "text/cut.h"
#include "ui/about_box.h"
#include "ui/confirm_dialog.h"
#include "ui/exception_dialog.h"
#include "ui/filter_wizard.h"
#include "ui/icons.h"
#include "ui/item_info_dialog.h"
#include "ui/message_box.h"
#include "ui/preferences_dialog.h"
#include "ui/text.h"

namespace quorvel::ui {
namespace {

const wxSize window_size(760, 560);
constexpr int log_height = 120;
constexpr int start_delay_ms = 1500;
constexpr int tray_watch_ms = 2000;
constexpr auto progress_interval = std::chrono::milliseconds(50);
constexpr auto longest_wait_for_frame = std::chrono::milliseconds(30);
constexpr auto events_interval = std::chrono::milliseconds(40);

class DropTarget : public wxFileDropTarget {
 public:
  explicit DropTarget(MainFrame& frame) : frame_(frame) {}

  bool OnDropFiles(wxCoord, wxCoord, const wxArrayString& paths) override {
    frame_.add_paths(paths);
    return true;
  }

 private:
  MainFrame& frame_;
};

/// "Supported Types|*.avi;*.mkv|All Files|*.*"
wxString file_filter(const std::string& types) {
  std::string patterns;
  for (const std::string_view type : split(types, ";")) patterns.append("*.").append(type).append(";");
  patterns.pop_back();
  return to_wx("Supported Types|" + patterns + "|All Files|*.*");
}

/// 0 for the empty area. The toolkit's own test leaves the header out of account on some systems.
int row_at(const wxListCtrl& list, const wxPoint& point) {
  wxRect area;
  for (long row = list.GetTopItem(); row < list.GetItemCount() && list.GetItemRect(row, area); ++row) {
    if (point.y < area.y) break;
    if (point.y <= area.GetBottom()) return static_cast<int>(row) + 1;
  }
  return 0;
}

/// Puts a value back at the end of a block.
template <typename T>
class Restored {
 public:
  explicit Restored(T& value) : value_(value), old_(value) {}
  ~Restored() { value_ = old_; }
  Restored(const Restored&) = delete;
  Restored& operator=(const Restored&) = delete;

 private:
  T& value_;
  const T old_;
};

}  // namespace

MainFrame::MainFrame()
    : wxFrame(nullptr, wxID_ANY, application_title, wxDefaultPosition, wxDefaultSize,
              wxDEFAULT_FRAME_STYLE & ~(wxRESIZE_BORDER | wxMAXIMIZE_BOX)),
      pop_up([](wxWindow& over, wxMenu& menu, const wxPoint& at) { over.PopupMenu(&menu, at); }),
      tray_is_available(&TrayIcon::is_available),
      Timer1_(this),
      tray_watch_(this) {
  // A pass lets events run many times a file; asking every control each time what it might want to update is half of
  // what that costs, and nothing here updates itself so.
  wxUpdateUIEvent::SetMode(wxUPDATE_UI_PROCESS_SPECIFIED);
  wxIdleEvent::SetMode(wxIDLE_PROCESS_SPECIFIED);
  stack_.on_empty = [this] { stack_is_empty(); };
  stack_.on_help = [this] { commands_->help(); };
  Bind(wxEVT_CLOSE_WINDOW, &MainFrame::on_close, this);
}

MainFrame::~MainFrame() {
  if (session_ != nullptr) session_->log.on_line = [](const std::string&, bool) {};
}

void MainFrame::build() {
  SetIcons(icons::application());
  SetMenuBar(menu_bar());
  auto* const panel = new wxPanel(this);
  TabStrip1_ = new wxNotebook(panel, wxID_ANY, wxDefaultPosition, wxDefaultSize, 0, "TabStrip1");
  TabStrip1_->AddPage(build_queue_page(), "File Queue");
  filter_page_.emplace(TabStrip1_, RulePage::Names{"ListView2", "Command3", "Command1", "Command2"},
                       std::vector<RuleColumn>{{"Filter", 29}, {"Action", 18}, {"File Mask", 28}, {"Path", 25}});
  TabStrip1_->AddPage(filter_page_->panel, "Filter List");
  exception_page_.emplace(TabStrip1_, RulePage::Names{"ListView3", "Command4", "Command5", "Command6"},
                          std::vector<RuleColumn>{{"Detected Show Name", 50}, {"New Show Name", 50}});
  TabStrip1_->AddPage(exception_page_->panel, "Exceptions");
  List3_ = new wxListBox(panel, wxID_ANY, wxDefaultPosition, FromDIP(wxSize(-1, log_height)), 0, nullptr,
                         wxLB_SINGLE | wxLB_HSCROLL, wxDefaultValidator, "List3");

  auto* const sizer = new wxBoxSizer(wxVERTICAL);
  sizer->Add(TabStrip1_, wxSizerFlags(1).Expand().Border());
  sizer->Add(List3_, wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM));
  panel->SetSizer(sizer);
  SetClientSize(FromDIP(window_size));
  SetSizeHints(GetSize(), GetSize());
  ListView1_->SetFocus();
}

wxWindow* MainFrame::build_queue_page() {
  auto* const page = new wxPanel(TabStrip1_);
  ListView1_ = new QueueList(page, model_);
  auto* const sizer = new wxBoxSizer(wxVERTICAL);
  sizer->Add(ListView1_, wxSizerFlags(1).Expand().Border());
  page->SetSizer(sizer);
  return page;
}

void MainFrame::bind_commands() {
  const auto on = [this](MenuCommand command, std::function<void()> action) {
    Bind(
        wxEVT_MENU, [action = std::move(action)](wxCommandEvent&) { action(); }, command);
  };
  on(mnuOpen, [this] { on_add_file(); });
  on(mnuExit, [this] { Close(); });
  on(mnuExit2, [this] { Close(); });
  on(mnuPrefs, [this] { show_preferences(); });
  on(mnuHelpGuide, [this] { commands_->help(); });
  on(mnuUpdate, [this] { commands_->update(reinterpret_cast<std::uintptr_t>(GetHandle())); });
  on(mnuWeb, [this] { commands_->website(); });
  on(mnuAbout, [this] { show_about(); });
  on(mnuShow, [this] { toggle(); });
  on(mnuEditFilter, [this] { edit_filter(filter_page_->list->selected()); });
  on(mnuRemFilter, [this] { remove_filter(); });
  on(mnuAddFilter, [this] { edit_filter(0); });
  on(mnuAddFilter2, [this] { edit_filter(0); });
  on(mnuInfo, [this] { on_info(); });
  on(mnuUndo, [this] { on_undo(); });
  on(mnuSpecify, [this] { add_exception(context_item_); });
  on(mnuRetry, [this] { on_retry(); });
  on(mnuAddEx, [this] { add_exception(0); });
  on(mnuRemEx, [this] { remove_exception(); });
  on(mnuAddEx2, [this] { add_exception(0); });

  Bind(wxEVT_ICONIZE, &MainFrame::on_iconize, this);
  Bind(wxEVT_TIMER, &MainFrame::on_start_timer, this, Timer1_.GetId());
  Bind(
      wxEVT_TIMER,
      [this](wxTimerEvent&) {
        // The tray went away with the window in it.
        if (minimised_ && !IsShown() && !lives_in_tray()) minimise();
      },
      tray_watch_.GetId());
}

void MainFrame::bind_lists() {
  const auto click = [](wxButton* button, std::function<void()> action) {
    button->Bind(wxEVT_BUTTON, [action = std::move(action)](wxCommandEvent&) { action(); });
  };
  click(filter_page_->up, [this] { move_filter(-1); });
  click(filter_page_->down, [this] { move_filter(1); });
  click(filter_page_->add, [this] { edit_filter(0); });
  click(exception_page_->up, [this] { move_exception(-1); });
  click(exception_page_->down, [this] { move_exception(1); });
  click(exception_page_->add, [this] { add_exception(0); });

  ListView1_->Bind(wxEVT_CONTEXT_MENU, &MainFrame::on_queue_menu, this);
  filter_page_->list->Bind(wxEVT_CONTEXT_MENU, &MainFrame::on_filter_menu, this);
  exception_page_->list->Bind(wxEVT_CONTEXT_MENU, &MainFrame::on_exception_menu, this);
  filter_page_->list->Bind(wxEVT_LIST_KEY_DOWN, &MainFrame::on_filter_key, this);
  exception_page_->list->Bind(wxEVT_LIST_KEY_DOWN, &MainFrame::on_exception_key, this);
  // Enter, and the double-click.
  filter_page_->list->Bind(wxEVT_LIST_ITEM_ACTIVATED,
                           [this](wxListEvent& event) { edit_filter(static_cast<int>(event.GetIndex()) + 1); });
  ListView1_->Bind(wxEVT_LIST_ITEM_ACTIVATED, [this](wxListEvent& event) {
    context_item_ = static_cast<int>(event.GetIndex()) + 1;
    on_info();
  });
}

void MainFrame::attach(Session& session, Launcher& launcher, std::function<void()> on_unload) {
  session_ = &session;
  launcher_ = &launcher;
  commands_.emplace(session, launcher);
  on_unload_ = std::move(on_unload);
  session.log.on_line = [this](const std::string& line, bool cleared) {
    if (cleared) List3_->Clear();
    List3_->AppendAndEnsureVisible(to_wx(line));
  };
}

void MainFrame::show_first() {
  if (!minimised_ && !unloading_) Show();
}

wxWindow* MainFrame::dialog_parent() {
  if (stack_.has_dialog()) return stack_.top_dialog();
  return this;
}

// What the core asks for.

void MainFrame::add_row(int, const std::string& filename) {
  model_.add(filename);
  ListView1_->row_added();
}

void MainFrame::update_row(int index, const RowUpdate& update) {
  model_.update(index, update);
  work_.row = index;
  ListView1_->row_changed(index, update.scroll_into_view, update.select);
}

void MainFrame::show_filters(const std::vector<ListRow>& rows) {
  filter_page_->list->show(rows);
}

void MainFrame::show_exceptions(const std::vector<ListRow>& rows) {
  exception_page_->list->show(rows);
}

void MainFrame::process_events() {
  wxEventLoopBase* const loop = wxEventLoopBase::GetActive();
  if (loop == nullptr) return;  // the program is starting: nothing can be pending yet
  // A pass asks for this a dozen times a file, and painting the window takes longer than a file does. Nobody sees more
  // pictures a second than this gives.
  if (std::chrono::steady_clock::now() - last_yield_ < events_interval) return;
  const CallStack::Use use(stack_);
  loop->YieldFor(wxEVT_CATEGORY_ALL);
  last_yield_ = std::chrono::steady_clock::now();
}

bool MainFrame::copy_progress(std::uint64_t done, std::uint64_t total) {
  const auto now = std::chrono::steady_clock::now();
  if (now - last_progress_ < progress_interval) return !gives_copies_up_;
  last_progress_ = now;
  if (total > 0) {
    const auto percent = static_cast<int>(100.0 * static_cast<double>(done) / static_cast<double>(total));
    const std::string progress = std::to_string(percent) + "%";
    if (model_.set_progress(work_.row, work_.undoing ? "(undoing, " + progress + ")" : progress)) {
      ListView1_->row_changed(work_.row, false, false);
    }
  }
  process_events();
  return !gives_copies_up_;
}

bool MainFrame::ask_to_replace(const std::string& path) {
  wxGenericMessageDialog dialog(dialog_parent(), "There is a file of that name already:", "Confirm File Replace",
                                wxYES_NO | wxNO_DEFAULT | wxICON_WARNING);
  dialog.SetExtendedMessage(to_wx(path) + "\n\nShall it be put into the trash and replaced?");
  dialog.SetYesNoLabels("&Replace", "&Keep");
  return stack_.show_modal(dialog) == wxID_YES && !unloading_;
}

std::optional<bool> MainFrame::ask_confirmation(const ConfirmationQuestion& question) {
  ConfirmDialog dialog(dialog_parent(), session_->settings, session_->settings_store, question);
  stack_.show_modal(dialog);
  // A question that the program's end has closed must not fall back on an answer given before.
  if (unloading_) return false;
  return dialog.answer();
}

void MainFrame::show_message(int id, const std::string& title, const std::string& text, MessageIcon icon) {
  if (MessageDialog::is_skipped(session_->settings_store, id)) return;
  MessageDialog dialog(dialog_parent(), session_->settings_store, id, title, text, icon);
  stack_.show_modal(dialog);
}

void MainFrame::arm_start_timer() {
  Timer1_.StartOnce(start_delay_ms);
}

void MainFrame::close() {
  // With a dialog open the pass ran inside of it, and the program ends of itself: what the user is doing there comes
  // first.
  if (stack_.has_dialog() && !unloading_) {
    close_when_empty_ = true;
  } else {
    Close();
  }
}

// The window's life.

void MainFrame::set_caption(const std::string& caption) {
  SetTitle(to_wx(caption));
  if (comes_at_once) show_frame();
  build();
  bind_commands();
  bind_lists();
  SetDropTarget(new DropTarget(*this));
}

/// The lists, the menus and what is in them take as long again as the frame; it need not wait for them.
void MainFrame::show_frame() {
  SetClientSize(FromDIP(window_size));
  Show();
  wxGUIEventLoop loop;
  const wxEventLoopActivator active(&loop);
  Bind(wxEVT_PAINT, &MainFrame::on_first_paint, this);
  // The window manager answers in its own time.
  const auto until = std::chrono::steady_clock::now() + longest_wait_for_frame;
  while (!is_painted_ && std::chrono::steady_clock::now() < until) loop.YieldFor(wxEVT_CATEGORY_UI);
  Unbind(wxEVT_PAINT, &MainFrame::on_first_paint, this);
}

void MainFrame::on_first_paint(wxPaintEvent& event) {
  is_painted_ = true;
  event.Skip();
}

void MainFrame::add_tray_icon(const std::string& tip) {
  if (!tray_is_available()) return;
  const auto show = [this](wxMenu& menu) {
    const CallStack::Use use(stack_);
    pop_up(*this, menu, wxDefaultPosition);
  };
  remove_tray_icon();
  tray_icon_ = std::make_unique<TrayIcon>(
      *this, tip, TrayIcon::Actions{[this] { toggle_from_tray(); }, [this] { return open_tray_menu(); }, show});
}

void MainFrame::remove_tray_icon() {
  tray_icon_.reset();
}

void MainFrame::minimise() {
  minimised_ = true;
  if (lives_in_tray()) {
    Hide();
    tray_watch_.Start(tray_watch_ms);
  } else {
    if (!IsShown()) Show();
    Iconize();
  }
}

void MainFrame::restore() {
  minimised_ = false;
  tray_watch_.Stop();
  Iconize(false);
  Show();
  Raise();
}

void MainFrame::toggle() {
  minimised_ ? restore() : minimise();
}

void MainFrame::on_iconize(wxIconizeEvent& event) {
  event.Skip();
  if (!event.IsIconized()) {
    if (IsShown()) minimised_ = false;
  } else if (!minimised_) {
    minimise();
  }
}

void MainFrame::toggle_from_tray() {
  if (tray_clicks_count_ && !stack_.has_dialog()) toggle();
}

wxMenu* MainFrame::open_tray_menu() {
  if (!tray_clicks_count_ || stack_.has_dialog()) return nullptr;
  if (!minimised_) Raise();
  return tray_menu(minimised_ ? "&Show" : "&Hide").release();
}

void MainFrame::on_close(wxCloseEvent& event) {
  if (!event.CanVeto() || session_ == nullptr || session_->processor.may_close()) {
    begin_unload();
  } else {
    event.Veto();
  }
}

void MainFrame::unload() {
  gives_copies_up_ = true;
  if (session_ != nullptr && session_->processor.queue_busy()) session_->processor.may_close();
  begin_unload();
}

void MainFrame::begin_unload() {
  if (unloading_) return;
  unloading_ = true;
  Timer1_.Stop();
  stack_.end_dialogs();
  if (stack_.empty()) stack_is_empty();
}

/// Only the toolkit's own loop is left on the stack, or something that will not come here again.
void MainFrame::stack_is_empty() {
  if (unloading_) {
    CallAfter(&MainFrame::finish_unload);
  } else if (close_when_empty_) {
    close_when_empty_ = false;
    // Something came in meanwhile: the pass over it will ask again.
    if (!Timer1_.IsRunning()) Close();
  }
}

void MainFrame::finish_unload() {
  if (unloaded_ || !stack_.empty()) return;
  unloaded_ = true;
  on_unload_();
  remove_tray_icon();
  Destroy();
}

void MainFrame::query_end_session(wxCloseEvent& event) {
  if (!session_->processor.may_close() && event.CanVeto()) event.Veto();
}

void MainFrame::end_session() {
  unload();
}

// The queue.

void MainFrame::on_start_timer(wxTimerEvent&) {
  Timer1_.Stop();
  // A retry that the user has started in the meantime takes what the timer was armed for along.
  if (session_->processor.queue_busy() || unloading_) return;
  const CallStack::Use use(stack_);
  const Restored<Work> work(work_);
  work_ = {};
  session_->processor.process_queue();
}

void MainFrame::on_retry() {
  const CallStack::Use use(stack_);
  const Restored<Work> work(work_);
  work_ = {};
  session_->processor.retry_failed();
}

void MainFrame::on_undo() {
  if (is_undoing_) return;  // the same file twice at once, perhaps
  const CallStack::Use use(stack_);
  const Restored<Work> work(work_);
  const Restored<bool> undoing(is_undoing_);
  is_undoing_ = true;
  work_ = {context_item_, true};
  session_->undo.run(context_item_);
}

void MainFrame::on_info() {
  if (!session_->queue.holds(context_item_)) return;
  ItemInfoDialog dialog(dialog_parent(), session_->queue, *launcher_, *this);
  dialog.setQID(context_item_);
  stack_.show_modal(dialog);
}

void MainFrame::on_add_file() {
  wxFileDialog dialog(dialog_parent(), "Select File", wxString(), wxString(), file_filter(session_->settings.types),
                      wxFD_OPEN | wxFD_MULTIPLE | wxFD_FILE_MUST_EXIST);
  if (stack_.show_modal(dialog) != wxID_OK) return;
  wxArrayString paths;
  dialog.GetPaths(paths);
  add_paths(paths);
}

void MainFrame::add_paths(const wxArrayString& paths) {
  for (const wxString& path : paths) session_->intake.add_to_queue(path_from_wx(path), true);
}

// The menus over the lists.

int MainFrame::menu_row(const wxListCtrl& list, const wxContextMenuEvent& event, wxPoint& at) const {
  if (event.GetPosition() != wxDefaultPosition) {
    at = list.ScreenToClient(event.GetPosition());
    return row_at(list, at);
  }
  // By key: over the selected row.
  const long row = list.GetNextItem(-1, wxLIST_NEXT_ALL, wxLIST_STATE_SELECTED);
  wxRect area;
  at = row >= 0 && list.GetItemRect(row, area) ? wxPoint(area.x + area.height, area.GetBottom()) : wxPoint(0, 0);
  return static_cast<int>(row) + 1;
}

void MainFrame::on_queue_menu(wxContextMenuEvent& event) {
  wxPoint at;
  const int row = menu_row(*ListView1_, event, at);
  if (!session_->queue.holds(row)) return;
  context_item_ = row;
  const Undo::Entry undo = session_->undo.entry(row);
  menus_.mnuList3.SetLabel(mnuUndo, "&" + to_wx(undo.caption));
  menus_.mnuList3.Enable(mnuUndo, undo.enabled);
  const CallStack::Use use(stack_);
  pop_up(*ListView1_, menus_.mnuList3, at);
}

void MainFrame::on_filter_menu(wxContextMenuEvent& event) {
  wxPoint at;
  const int row = menu_row(*filter_page_->list, event, at);
  if (row > 0) filter_page_->list->select(row);
  const CallStack::Use use(stack_);
  pop_up(*filter_page_->list, row > 0 ? menus_.mnuList : menus_.mnuList2, at);
}

void MainFrame::on_exception_menu(wxContextMenuEvent& event) {
  wxPoint at;
  const int row = menu_row(*exception_page_->list, event, at);
  if (row > 0) exception_page_->list->select(row);
  const CallStack::Use use(stack_);
  pop_up(*exception_page_->list, row > 0 ? menus_.mnuList4 : menus_.mnuList5, at);
}

// The rules.

void MainFrame::on_filter_key(wxListEvent& event) {
  const int row = filter_page_->list->selected();
  if (event.GetKeyCode() == WXK_F2 && row > 0) {
    edit_filter(row);
  } else if (event.GetKeyCode() == WXK_DELETE) {
    remove_filter();
  } else {
    event.Skip();
  }
}

void MainFrame::on_exception_key(wxListEvent& event) {
  if (event.GetKeyCode() == WXK_DELETE) {
    remove_exception();
  } else {
    event.Skip();
  }
}

void MainFrame::edit_filter(int index) {
  FilterWizard wizard(dialog_parent(), *session_, [this](wxDialog& picker) { return stack_.show_modal(picker); });
  wizard.setID(index);
  if (stack_.show_modal(wizard) == wxID_OK) filter_page_->list->select(index > 0 ? index : session_->filters.count());
}

void MainFrame::remove_filter() {
  const int index = filter_page_->list->selected();
  if (!session_->filters.holds(index)) return;
  const bool is_last = session_->filters.count() == 1;
  if (!session_->filters.remove(index) && !is_last) tell_not_saved("Unable to remove filter");
  filter_page_->list->select(index);
}

void MainFrame::add_exception(int item) {
  ExceptionDialog dialog(dialog_parent(), *session_);
  dialog.setQID(item);
  if (stack_.show_modal(dialog) == wxID_OK) exception_page_->list->select(session_->exceptions.count());
}

void MainFrame::remove_exception() {
  const int index = exception_page_->list->selected();
  if (!session_->exceptions.holds(index)) return;
  if (!session_->exceptions.remove(index)) tell_not_saved("Unable to remove exception");
  exception_page_->list->select(index);
}

void MainFrame::move_filter(int by) {
  const int index = filter_page_->list->selected();
  if (!session_->filters.holds(index) || !session_->filters.holds(index + by)) return;
  const bool moved = session_->filters.exchange(index, index + by);
  filter_page_->list->select(moved ? index + by : index);
  if (!moved) tell_not_saved("Unable to move filter");
}

void MainFrame::move_exception(int by) {
  const int index = exception_page_->list->selected();
  if (!session_->exceptions.holds(index) || !session_->exceptions.holds(index + by)) return;
  const bool moved = session_->exceptions.exchange(index, index + by);
  exception_page_->list->select(moved ? index + by : index);
  if (!moved) tell_not_saved("Unable to move exception");
}

void MainFrame::tell_not_saved(const char* title) {
  show_message(0, title, "The change could not be saved. The log says why.", MessageIcon::Error);
}

// The other dialogs.

void MainFrame::show_preferences() {
  PreferencesDialog dialog(dialog_parent(), *session_, keep_temp_);
  stack_.show_modal(dialog);
}

void MainFrame::show_about() {
  AboutBox dialog(
      dialog_parent(), session_->log, commands_->website_address(), [this] { commands_->website(); },
      session_->ports.socket.version());
  stack_.show_modal(dialog);
}

}  // namespace quorvel::ui
