#pragma once

#include <wx/frame.h>
#include <wx/listbox.h>
#include <wx/notebook.h>
#include <wx/timer.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/launcher.h"
#include "platform/main_window.h"
#include "platform/user_interface.h"
#include "shell/commands.h"
#include "shell/session.h"
#include "ui/call_stack.h"
#include "ui/menus.h"
#include "ui/queue_list.h"
#include "ui/rule_page.h"
#include "ui/tray_icon.h"

namespace quorvel::ui {

/// The program's window. It exists before the session, whose user interface it is; attach() makes the two known to
/// each other.
///
/// Events run in the middle of passes, of file operations and inside of dialogs. What they may lead to there:
/// - files and rules are added, and rules changed, as at any time; an item keeps to what its rule said when it was
///   chosen for it;
/// - an open dialog holds up whatever it was opened in the middle of, and nothing starts a second pass or a second
///   undoing meanwhile;
/// - the window ends when all that has come back.
class MainFrame : public wxFrame, public UserInterface, public MainWindow {
 public:
  MainFrame();
  ~MainFrame() override;

  /// Both outlive the window. `on_unload` is called once, when the window really goes away.
  void attach(Session& session, Launcher& launcher, std::function<void()> on_unload);

  /// Whether the frame is shown as soon as it has its caption, while the rest is still being made.
  bool comes_at_once = false;

  /// The first time the window is seen, unless it has been minimised before.
  void show_first();

  /// `done` of `total` bytes are moved or copied; false when that is to be given up.
  bool copy_progress(std::uint64_t done, std::uint64_t total);

  /// Whether the file at `path` may go to the trash for another; true only when the user has said so.
  bool ask_to_replace(const std::string& path);

  /// Queues what the user has dropped or picked, in this order.
  void add_paths(const wxArrayString& paths);

  /// The user's session is about to end; vetoed while a pass runs, which then ends at its next stage.
  void query_end_session(wxCloseEvent& event);
  /// It ends: what is being copied is given up.
  void end_session();

  void add_row(int index, const std::string& filename) override;
  void update_row(int index, const RowUpdate& update) override;
  void show_filters(const std::vector<ListRow>& rows) override;
  void show_exceptions(const std::vector<ListRow>& rows) override;
  void process_events() override;
  std::optional<bool> ask_confirmation(const ConfirmationQuestion& question) override;
  void show_message(int id, const std::string& title, const std::string& text, MessageIcon icon) override;
  void arm_start_timer() override;
  void close() override;

  void set_caption(const std::string& caption) override;
  void add_tray_icon(const std::string& tip) override;
  void remove_tray_icon() override;
  void set_help_file(const std::string& path) override { help_file_ = path; }
  void select_full_rows() override {}  // the toolkit's lists never select less
  void centre() override { CentreOnScreen(); }
  void minimise() override;
  void accept_tray_clicks() override { tray_clicks_count_ = true; }
  void unload() override;

  /// What pops menus up and knows of trays; tests put their own in place.
  std::function<void(wxWindow& over, wxMenu& menu, const wxPoint& at)> pop_up;
  std::function<bool()> tray_is_available;

  /// The menu of the tray icon, to be deleted by whoever shows it; null while clicks there do not count.
  wxMenu* open_tray_menu();
  void toggle_from_tray();

 private:
  /// What copy_progress tells of.
  struct Work {
    int row = 0;
    bool undoing = false;
  };

  void show_frame();
  void on_first_paint(wxPaintEvent& event);
  void build();
  wxWindow* build_queue_page();
  void bind_commands();
  void bind_lists();
  wxWindow* dialog_parent();

  void on_close(wxCloseEvent& event);
  void on_iconize(wxIconizeEvent& event);
  void on_start_timer(wxTimerEvent& event);
  void on_add_file();
  void on_info();
  void on_undo();
  void on_retry();
  void on_queue_menu(wxContextMenuEvent& event);
  void on_filter_menu(wxContextMenuEvent& event);
  void on_exception_menu(wxContextMenuEvent& event);
  void on_filter_key(wxListEvent& event);
  void on_exception_key(wxListEvent& event);

  void edit_filter(int index);
  void remove_filter();
  void add_exception(int item);
  void remove_exception();
  void move_filter(int by);
  void move_exception(int by);
  void tell_not_saved(const char* title);
  void show_about();
  void show_preferences();

  /// The row that a context menu is for, 0 for the empty area; `at` becomes where it belongs.
  int menu_row(const wxListCtrl& list, const wxContextMenuEvent& event, wxPoint& at) const;
  void toggle();
  void restore();
  bool lives_in_tray() const { return tray_icon_ != nullptr && tray_icon_->is_in() && tray_is_available(); }
  void begin_unload();
  void stack_is_empty();
  void finish_unload();

  Session* session_ = nullptr;
  Launcher* launcher_ = nullptr;
  std::optional<Commands> commands_;
  std::function<void()> on_unload_ = [] {};

  QueueListModel model_;
  wxNotebook* TabStrip1_ = nullptr;
  QueueList* ListView1_ = nullptr;
  std::optional<RulePage> filter_page_, exception_page_;
  wxListBox* List3_ = nullptr;
  ListMenus menus_;
  std::unique_ptr<TrayIcon> tray_icon_;
  wxTimer Timer1_;      // starts a pass
  wxTimer tray_watch_;  // while the window lives in the tray
  std::string help_file_;

  CallStack stack_;
  Work work_;
  std::chrono::steady_clock::time_point last_progress_;
  std::chrono::steady_clock::time_point last_yield_;
  bool is_painted_ = false;
  int context_item_ = 0;  // the queue item that the last context menu was for
  bool keep_temp_ = false;
  bool tray_clicks_count_ = false;
  bool minimised_ = false;
  bool is_undoing_ = false;
  bool close_when_empty_ = false;
  bool gives_copies_up_ = false;
  bool unloading_ = false;
  bool unloaded_ = false;
};

}  // namespace quorvel::ui
