#pragma once

#include <wx/menu.h>
#include <wx/panel.h>
#include <wx/timer.h>

#include <functional>
#include <string>
#include <vector>

#include "platform/launcher.h"
#include "shell/past_undoing.h"
#include "shell/session.h"
#include "shell/show_choice.h"
#include "shell/watching.h"
#include "ui/call_stack.h"
#include "ui/empty_hint.h"
#include "ui/item_strip.h"
#include "ui/lists.h"
#include "ui/message_bar.h"
#include "ui/pass_report.h"
#include "ui/review_page.h"
#include "ui/review_strip.h"

namespace quorvel::ui {

/// The tab of the file queue: its list, what lies over that while it is empty, the menu over an item and what is done
/// from there, and the strips that tell what is to be said about a row and about a pass.
class QueuePage : public wxPanel {
 public:
  /// What moves files and can be stopped; its progress is shown in this row.
  struct Work {
    int row = 0;
    bool undoing = false;
  };
  /// What the page stands on. `run` does something that moves files and can be stopped.
  struct Window {
    Session& session;
    Launcher& launcher;
    CallStack& stack;
    WindowLife& life;
    std::function<void(const Work&, const std::function<void()>&)> run;
    std::function<bool()> is_stopped;  // by the user, since that began
    std::function<void()> stop;
    std::function<void()> show_settings;  // everywhere, when the page has changed them
  };

  /// `menu` pops up over an item, `review_menu` over one under review.
  QueuePage(wxWindow* parent, wxMenu& menu, wxMenu& review_menu, Window window);

  QueueList& list() { return *list_; }
  ReviewPage& review() { return *review_; }

  /// After the settings have been changed elsewhere.
  void show_settings();

  /// Whether the user waits for the service or for an undoing, which a pass would hold up.
  bool has_no_time() const { return is_undoing_ || (choice_ != nullptr && choice_->is_searching()); }

  /// The first item that is selected, in the list or in the review; 0 for none.
  int selected_file() const { return review_->IsShown() ? review_->selected_file() : list_->selected(); }

  // The commands of the menu, for the items that it was last over.

  int menu_item() const { return items_.empty() ? 0 : items_.front(); }
  void show_info();
  void undo();
  void choose_show();
  void look_up_again();
  void retry();
  void open_folders();
  /// An exception has been added for one of them.
  void exception_added();

  /// Lets the user say which folders are watched.
  void show_watched();

  // The history's.

  void show_history();
  void undo_last_pass();

 private:
  void watch();
  void on_menu(const wxContextMenuEvent& event);
  ReviewPage* make_review(wxMenu& menu);
  void show_review(bool on);
  void give(int command);
  void apply(Remedy remedy, int item);
  void take_again(bool anew);
  void open_menu(const wxPoint& at);
  std::string hindrance() const;
  bool goes_on() const;
  void run_undoing(const Work& work, const std::function<void()>& action);
  bool ask(const std::string& question, const char* title, const char* yes, const char* no);
  void undo_pass(const std::function<std::optional<PastPass>()>& find);

  const Window window_;
  wxMenu& menu_;
  QueueList* list_;
  EmptyHint* hint_;
  MessageBar *strip_, *bar_;
  ReviewStrip* review_strip_;
  ReviewPage* review_;
  std::vector<int> items_;
  bool is_undoing_ = false;
  PastUndoing past_undoing_;
  const ShowChoice* choice_ = nullptr;  // while its dialog is open
  std::optional<ItemStrip> item_strip_;
  std::optional<PassReport> report_;
  std::optional<Watching> watching_;
  wxTimer watch_timer_;
};

}  // namespace quorvel::ui
