#pragma once

#include <wx/frame.h>
#include <wx/listbox.h>
#include <wx/notebook.h>
#include <wx/timer.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "platform/launcher.h"
#include "platform/main_window.h"
#include "platform/user_interface.h"
#include "shell/commands.h"
#include "shell/session.h"
#include "ui/menus.h"
#include "ui/queue_page.h"
#include "ui/rule_page.h"
#include "ui/window_life.h"

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

  CallStack& stack() { return stack_; }
  WindowLife& life() { return life_; }

  /// `done` of `total` bytes are moved or copied; false when that is to be abandoned.
  bool copy_progress(std::uint64_t done, std::uint64_t total);

  /// Whether the file at `path` may go to the trash for another; true only when the user has said so.
  bool ask_to_replace(const std::string& path);

  /// Queues what the user has dropped or picked, in this order.
  void add_paths(const wxArrayString& paths);

  void add_row(int, const std::string& filename) override { queue_page_->list().add_row(filename); }
  void update_row(int index, const RowUpdate& update) override;
  void show_filters(const std::vector<ListRow>& rows) override { filter_page_->list().show(rows); }
  void show_exceptions(const std::vector<ListRow>& rows) override { exception_page_->list().show(rows); }
  void process_events() override;
  void catch_up() override;
  std::optional<bool> ask_confirmation(const ConfirmationQuestion& question) override;
  void show_message(int id, const std::string& title, const std::string& text, MessageIcon icon) override;
  void arm_start_timer() override;
  void close() override { life_.close(); }

  void open(const std::string& caption, bool visible) override;
  void add_tray_icon(const std::string& tip) override { life_.add_tray_icon(tip); }
  void remove_tray_icon() override { life_.remove_tray_icon(); }
  void centre() override { CentreOnScreen(); }
  void minimise() override { life_.minimise(); }
  void bring_up() override { life_.restore(); }
  void accept_tray_clicks() override { life_.accept_tray_clicks(); }
  void unload() override { life_.unload(); }
  bool is_unloading() const override { return life_.is_unloading(); }

 private:
  class Running;

  void show_empty();
  void build();
  template <typename List>
  RulePage::Actions rule_actions(List& rules, const std::string& thing);
  RulePage* build_filter_page();
  RulePage* build_exception_page();
  void bind_commands();
  wxWindow* dialog_parent() { return stack_.dialog_parent(*this); }

  void run(const QueuePage::Work& work, const std::function<void()>& action);
  bool may_close();
  bool stays_open() const;
  void stop();
  void on_start_timer();
  void on_add_file();
  void edit_filter(int index);
  bool add_exception(int item);
  void show_about();
  void show_preferences();
  void show_settings();

  Session* session_ = nullptr;
  Launcher* launcher_ = nullptr;
  std::optional<Commands> commands_;

  wxNotebook* TabStrip1_ = nullptr;
  QueuePage* queue_page_ = nullptr;
  RulePage *filter_page_ = nullptr, *exception_page_ = nullptr;
  wxListBox* List3_ = nullptr;
  ListMenus menus_;
  wxTimer Timer1_;  // starts a pass

  CallStack stack_;
  WindowLife life_{*this, stack_};
  QueuePage::Work work_;  // what copy_progress reports on
  int running_ = 0;       // passes and undoings, one inside the other
  bool stopped_ = false;
  std::chrono::steady_clock::time_point last_progress_;
  std::chrono::steady_clock::time_point last_yield_;
  bool keep_temp_ = false;
};

}  // namespace quorvel::ui
