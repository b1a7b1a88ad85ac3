#include "ui/main_frame.h"

#include <wx/dnd.h>
#include <wx/evtloop.h>
#include <wx/filedlg.h>
#include <wx/msgdlg.h>
#include <wx/sizer.h>

// After the header that it needs.
#include <wx/generic/msgdlgg.h>

#include <utility>

#include "platform/native.h"
#include "shell/dialogs.h"
#include "shell/preferences.h"
#include "shell/version.h"
#include "text/restored.h"
#include "ui/desktop.h"
#include "ui/dialogs.h"
#include "ui/filter_wizard.h"
#include "ui/icons.h"
#include "ui/preferences_dialog.h"
#include "ui/size.h"
#include "ui/text.h"

namespace quorvel::ui {
namespace {

const wxSize window_size(760, 560);
constexpr int log_height = 120;
constexpr int start_delay_ms = 1500;
constexpr auto progress_interval = std::chrono::milliseconds(50);
constexpr auto max_wait_for_frame = std::chrono::milliseconds(30);
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

}  // namespace

MainFrame::MainFrame()
    : wxFrame(nullptr, wxID_ANY, application_title, wxDefaultPosition, wxDefaultSize,
              wxDEFAULT_FRAME_STYLE & ~(wxRESIZE_BORDER | wxMAXIMIZE_BOX)),
      Timer1_(this) {
  // A pass lets events run many times a file; asking every control each time what it might want to update is half of
  // what that costs, and nothing here updates itself so.
  wxUpdateUIEvent::SetMode(wxUPDATE_UI_PROCESS_SPECIFIED);
  wxIdleEvent::SetMode(wxIDLE_PROCESS_SPECIFIED);
  wxDialog::EnableLayoutAdaptation(true);  // those that are larger than the display scroll, above their buttons
  stack_.on_help = [this] { commands_->help(); };
}

MainFrame::~MainFrame() {
  if (session_ != nullptr) session_->log.on_line = [](const std::string&, bool) {};
}

void MainFrame::attach(Session& session, Launcher& launcher, std::function<void()> on_unload) {
  session_ = &session;
  launcher_ = &launcher;
  commands_.emplace(session, launcher);
  life_.attach(
      {[this] { return may_close(); }, [this] { stop(); }, [this] { return stays_open(); }, std::move(on_unload)});
  session.log.on_line = [this](const std::string& line, bool cleared) {
    if (cleared) List3_->Clear();
    List3_->AppendAndEnsureVisible(to_wx(line));
  };
}

// How it is made.

void MainFrame::open(const std::string& caption, bool visible) {
  SetTitle(to_wx(caption));
  if (visible) show_empty();
  build();
  bind_commands();
  SetDropTarget(new DropTarget(*this));
  keep_on_display(*this);
}

/// The lists, the menus and what is in them take as long again as the frame; it need not wait for them.
void MainFrame::show_empty() {
  fix_size(*this, window_size);
  Show();
  wxGUIEventLoop loop;
  const wxEventLoopActivator active(&loop);
  bool is_painted = false;
  const auto on_paint = [&is_painted](wxPaintEvent& event) {
    is_painted = true;
    event.Skip();
  };
  Bind(wxEVT_PAINT, on_paint);
  // The window manager answers in its own time.
  const auto until = std::chrono::steady_clock::now() + max_wait_for_frame;
  while (!is_painted && std::chrono::steady_clock::now() < until) loop.YieldFor(wxEVT_CATEGORY_UI);
  Unbind(wxEVT_PAINT, on_paint);
}

void MainFrame::build() {
  SetIcons(icons::application());
  SetMenuBar(menu_bar());
  GetMenuBar()->Enable(mnuStop, false);
  auto* const panel = new wxPanel(this);
  panel->Hide();  // else each part is laid out as it comes, in a space that is not yet the right one
  TabStrip1_ = new wxNotebook(panel, wxID_ANY, wxDefaultPosition, wxDefaultSize, 0, "TabStrip1");
  queue_page_ =
      new QueuePage(TabStrip1_, menus_.mnuList3, menus_.mnuList6,
                    {*session_, *launcher_, stack_, life_,
                     [this](const QueuePage::Work& work, const std::function<void()>& action) { run(work, action); },
                     [this] { return stopped_; }, [this] { stop(); }, [this] { show_settings(); }});
  TabStrip1_->AddPage(queue_page_, "File Queue");
  TabStrip1_->AddPage(filter_page_ = build_filter_page(), "Filter List");
  TabStrip1_->AddPage(exception_page_ = build_exception_page(), "Exceptions");
  List3_ = new wxListBox(panel, wxID_ANY, wxDefaultPosition, scaled(*this, wxSize(-1, log_height)), 0, nullptr,
                         wxLB_SINGLE | wxLB_HSCROLL, wxDefaultValidator, "List3");

  auto* const sizer = new wxBoxSizer(wxVERTICAL);
  sizer->Add(TabStrip1_, wxSizerFlags(1).Expand().Border());
  sizer->Add(List3_, wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM));
  panel->SetSizer(sizer);
  set_spoken_name(*List3_, "Log");
  panel->Show();
  fix_size(*this, window_size);
  show_settings();
  queue_page_->list().SetFocus();
}

/// What the pages of rules have in common; `thing` is what the user calls one of `rules`.
template <typename List>
RulePage::Actions MainFrame::rule_actions(List& rules, const std::string& thing) {
  return {.remove = [&rules](int index) { return rules.remove(index); },
          .exchange = [&rules](int a, int b) { return rules.exchange(a, b); },
          .add = {},
          .edit = {},
          .not_saved =
              [this, thing](const std::string& verb) {
                show_message(0, "Unable to " + verb + " " + thing, "The change could not be saved. The log says why.",
                             MessageIcon::Error);
              },
          .pop_up = [this](wxWindow& over, wxMenu& menu, const wxPoint& at) { stack_.pop_up(over, menu, at); }};
}

RulePage* MainFrame::build_filter_page() {
  RulePage::Actions actions = rule_actions(session_->filters, "filter");
  // The list itself says why its last rule stays.
  actions.remove = [&rules = session_->filters](int index) { return rules.remove(index) || rules.count() == 1; };
  actions.add = [this] { edit_filter(0); };
  actions.edit = [this](int index) { edit_filter(index); };
  return new RulePage(TabStrip1_,
                      {{"ListView2", "Filter List", {"Filter", "Action", "File Mask", "Path"}},
                       {30, 22, 26, 22},
                       "Command3",
                       "Command1",
                       "Command2",
                       menus_.mnuList,
                       menus_.mnuList2},
                      std::move(actions));
}

RulePage* MainFrame::build_exception_page() {
  RulePage::Actions actions = rule_actions(session_->exceptions, "exception");
  actions.add = [this] { add_exception(0); };
  return new RulePage(TabStrip1_,
                      {{"ListView3", "Exceptions", {"Detected Show Name", "New Show Name"}},
                       {50, 50},
                       "Command4",
                       "Command5",
                       "Command6",
                       menus_.mnuList4,
                       menus_.mnuList5},
                      std::move(actions));
}

void MainFrame::bind_commands() {
  const auto on = [this](MenuCommand command, std::function<void()> action) {
    Bind(
        wxEVT_MENU, [action = std::move(action)](wxCommandEvent&) { action(); }, command);
  };
  on(mnuOpen, [this] { on_add_file(); });
  on(mnuStop, [this] { stop(); });
  on(mnuExit, [this] { Close(); });
  on(mnuExit2, [this] { Close(); });
  on(mnuPrefs, [this] { show_preferences(); });
  on(mnuReview, [this] {
    turn_review_first(*session_, !session_->settings.review);
    show_settings();
  });
  on(mnuWatch, [this] { queue_page_->show_watched(); });
  on(mnuHistory, [this] { queue_page_->show_history(); });
  on(mnuUndoPass, [this] {
    TabStrip1_->SetSelection(0);  // where the outcome is told
    queue_page_->undo_last_pass();
  });
  on(mnuHelpGuide, [this] { commands_->help(); });
  on(mnuUpdate, [this] { commands_->update(reinterpret_cast<std::uintptr_t>(GetHandle())); });
  on(mnuWeb, [this] { commands_->website(); });
  on(mnuAbout, [this] { show_about(); });
  on(mnuShow, [this] { life_.toggle(); });
  on(mnuEditFilter, [this] { filter_page_->edit(); });
  on(mnuRemFilter, [this] { filter_page_->remove(); });
  on(mnuAddFilter, [this] { edit_filter(0); });
  on(mnuAddFilter2, [this] { edit_filter(0); });
  on(mnuInfo, [this] { queue_page_->show_info(); });
  on(mnuUndo, [this] { queue_page_->undo(); });
  on(mnuSpecify, [this] {
    if (add_exception(queue_page_->menu_item())) queue_page_->exception_added();
  });
  on(mnuChoose, [this] { queue_page_->choose_show(); });
  on(mnuLookUp, [this] { queue_page_->look_up_again(); });
  on(mnuRetryThis, [this] { queue_page_->retry(); });
  on(mnuFolder, [this] { queue_page_->open_folders(); });
  on(mnuEditName, [this] { queue_page_->review().edit_name(); });
  on(mnuReviewAgain, [this] { queue_page_->review().look_up_again(); });
  on(mnuEditNumbers, [this] { queue_page_->review().edit_numbers(); });
  on(mnuRetry, [this] { run({}, [this] { session_->processor.retry_failed(); }); });
  on(mnuAddEx, [this] { add_exception(0); });
  on(mnuRemEx, [this] { exception_page_->remove(); });
  on(mnuAddEx2, [this] { add_exception(0); });

  Bind(
      wxEVT_TIMER, [this](wxTimerEvent&) { on_start_timer(); }, Timer1_.GetId());
}

// What the core asks for.

void MainFrame::update_row(int index, const RowUpdate& update) {
  queue_page_->list().update_row(index, update);
  work_.row = index;
  queue_page_->review().changed();
}

void MainFrame::process_events() {
  // A pass asks for this a dozen times a file, and painting the window takes longer than a file does. Nobody sees more
  // pictures a second than this gives.
  if (std::chrono::steady_clock::now() - last_yield_ >= events_interval) catch_up();
}

void MainFrame::catch_up() {
  wxEventLoopBase* const loop = wxEventLoopBase::GetActive();
  if (loop == nullptr) return;  // the program is starting: nothing can be pending yet
  const CallStack::Use use(stack_);
  loop->YieldFor(wxEVT_CATEGORY_ALL);
  last_yield_ = std::chrono::steady_clock::now();
}

bool MainFrame::copy_progress(std::uint64_t done, std::uint64_t total) {
  const auto now = std::chrono::steady_clock::now();
  if (now - last_progress_ < progress_interval) return !stopped_;
  last_progress_ = now;
  if (total > 0) {
    const auto percent = static_cast<int>(100.0 * static_cast<double>(done) / static_cast<double>(total));
    const std::string progress = std::to_string(percent) + "%";
    queue_page_->list().set_progress(work_.row, work_.undoing ? "(undoing, " + progress + ")" : progress);
  }
  process_events();
  return !stopped_;
}

bool MainFrame::ask_to_replace(const std::string& path) {
  wxGenericMessageDialog dialog(dialog_parent(), "There is a file of that name already:", "Confirm File Replace",
                                wxYES_NO | wxNO_DEFAULT | wxICON_WARNING);
  dialog.SetExtendedMessage(to_wx(path) + "\n\nShall it be put into the " + to_wx(std::string(native::trash_name)) +
                            " and replaced?");
  dialog.SetYesNoLabels("&Replace", "&Keep");
  return stack_.show_modal(dialog) == wxID_YES && !life_.is_unloading();
}

std::optional<bool> MainFrame::ask_confirmation(const ConfirmationQuestion& question) {
  ConfirmDialog dialog(dialog_parent(), *session_, question);
  stack_.show_modal(dialog);
  // A question that the program's end has closed must not fall back on an answer given before.
  if (life_.is_unloading()) return false;
  return dialog.answer();
}

void MainFrame::show_message(int id, const std::string& title, const std::string& text, MessageIcon icon) {
  if (is_switched_off(session_->settings_store, id)) return;
  MessageDialog dialog(dialog_parent(), id, title, text, icon);
  if (stack_.show_modal(dialog) == wxID_OK && dialog.is_unwanted()) switch_off(session_->settings_store, id);
}

void MainFrame::arm_start_timer() {
  Timer1_.StartOnce(start_delay_ms);
}

// The queue.

/// While it lives, there is something that can be stopped.
class MainFrame::Running {
 public:
  explicit Running(MainFrame& frame) : frame_(frame) {
    if (frame_.running_++ == 0) frame_.GetMenuBar()->Enable(mnuStop, true);
  }
  ~Running() {
    if (--frame_.running_ > 0) return;
    frame_.GetMenuBar()->Enable(mnuStop, false);
    frame_.stopped_ = false;
  }
  Running(const Running&) = delete;
  Running& operator=(const Running&) = delete;

 private:
  MainFrame& frame_;
};

/// With copy_progress reporting on `work`.
void MainFrame::run(const QueuePage::Work& work, const std::function<void()>& action) {
  const CallStack::Use use(stack_);
  const Running running(*this);
  const Restored<QueuePage::Work> meanwhile(work_, work);
  action();
}

void MainFrame::stop() {
  stopped_ = running_ > 0;
  session_->stop();
}

/// A pass finishes what it is at; whoever asks a second time does not want to wait for that.
bool MainFrame::may_close() {
  if (session_->processor.is_quitting()) stop();
  return session_->processor.may_close();
}

/// A pass is due, or what the last one has left must be seen: the window does not close by itself.
bool MainFrame::stays_open() const {
  const Processor& processor = session_->processor;
  return Timer1_.IsRunning() || (!processor.is_quitting() && processor.need_user() > 0);
}

void MainFrame::on_start_timer() {
  // A retry that the user has started in the meantime takes what the timer was armed for along.
  if (session_->processor.queue_busy() || life_.is_unloading()) return;
  if (queue_page_->has_no_time()) return arm_start_timer();
  run({}, [this] { session_->processor.process_queue(); });
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

// The other dialogs.

void MainFrame::edit_filter(int index) {
  FilterWizard dialog(dialog_parent(), *session_, stack_, queue_page_->selected_file());
  dialog.setID(index);
  if (stack_.show_modal(dialog) == wxID_OK) filter_page_->list().select(dialog.place());
}

/// False when the user has thought better of it.
bool MainFrame::add_exception(int item) {
  ExceptionDialog dialog(dialog_parent(), *session_);
  dialog.setQID(item);
  if (stack_.show_modal(dialog) != wxID_OK) return false;
  exception_page_->list().select(session_->exceptions.count());
  return true;
}

void MainFrame::show_preferences() {
  PreferencesDialog dialog(dialog_parent(), *session_, keep_temp_);
  stack_.show_modal(dialog);
  show_settings();
}

/// Wherever they are seen.
void MainFrame::show_settings() {
  GetMenuBar()->Check(mnuReview, session_->settings.review);
  queue_page_->show_settings();
}

void MainFrame::show_about() {
  AboutBox dialog(
      dialog_parent(), session_->log, commands_->website_address(), [this] { commands_->website(); },
      session_->ports.socket.version());
  stack_.show_modal(dialog);
}

}  // namespace quorvel::ui
