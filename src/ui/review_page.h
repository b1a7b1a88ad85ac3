#pragma once

#include <wx/button.h>
#include <wx/choice.h>
#include <wx/menu.h>
#include <wx/panel.h>
#include <wx/stattext.h>
#include <wx/textctrl.h>
#include <wx/timer.h>

#include <chrono>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "review/sheet.h"
#include "shell/session.h"
#include "ui/review_tree.h"

namespace quorvel::ui {

/// What a pass would do, for the user to look at, to correct and to apply. It is shown in the queue list's place.
class ReviewPage : public wxPanel {
 public:
  /// What the page stands on.
  struct Window {
    Session& session;
    wxMenu& menu;  // of a row
    /// Does something that moves files and can be stopped.
    std::function<void(const std::function<void()>&)> run;
    std::function<void()> stop;
    /// Whether something is going on that must not be disturbed by a pass.
    std::function<bool()> is_busy;
    std::function<void(wxMenu&, const wxPoint&)> pop_up;
    std::function<bool(const std::string& question)> ask;
    /// The menu's commands are for these from now on.
    std::function<void(const std::vector<int>& items)> choose;
    /// The page is to be shown, or the list; then what there is to review.
    std::function<void(bool)> show;
    std::function<void(const std::string& heading)> tell;
  };

  ReviewPage(wxWindow* parent, Window window);

  /// Whether there is anything to review.
  bool has_work() const { return !is_applying_ && !sheet_.is_empty(); }
  /// How much that is, and whether it still grows.
  std::string heading() const;
  /// The page has been shown or hidden.
  void shown(bool is_shown);
  /// Gives it the keyboard.
  void focus() { tree_->control().SetFocus(); }

  /// Something has changed in the queue; it is seen after a while.
  void changed();
  /// The page shows itself where there is something to review.
  void pass_ended();
  /// After the settings have been changed.
  void update();

  int selected_file() const { return tree_->selected_file(); }

  // The menu's commands.

  void edit_name() { edit(tree_->selected_file(), ReviewModel::NewName); }
  void look_up_again();
  void edit_numbers() { edit(tree_->selected_file(), ReviewModel::Numbers); }

 private:
  wxSizer* top_row();
  wxSizer* buttons();
  wxButton* button(wxSizer& row, int side, const char* label, const std::function<void()>& press);
  void send(int command);
  void refresh();
  void show_rows();
  bool is_looking_up() const;
  void on_select();
  void open_menu(const wxPoint& at);
  std::string tip(int item) const;
  std::string details() const;
  void edit(int item, ReviewModel::Column column);
  bool accept_name(int item, const std::string& name);
  bool accept_numbers(int item, const std::string& numbers);
  void correct(int item, const std::string& numbers);
  bool refused(const std::string& refusal);
  void tick(const std::vector<int>& items, bool on);
  void on_key(wxKeyEvent& event);
  void apply();
  void cancel();

  const Window window_;
  ReviewSheet sheet_;
  wxStaticText* heading_ = nullptr;
  wxChoice* filter_ = nullptr;
  ReviewTree* tree_ = nullptr;
  wxTextCtrl* details_ = nullptr;
  wxButton *choose_ = nullptr, *exception_ = nullptr, *look_up_ = nullptr, *folder_ = nullptr, *all_ready_ = nullptr,
           *apply_ = nullptr;
  wxTimer refresh_;                    // while a change waits to be seen
  std::chrono::milliseconds cost_{0};  // of the last refresh
  std::set<int> edited_;               // by the user, which would be lost
  int corrections_ = 0;                // that have not begun to be looked up yet
  bool is_applying_ = false;
  bool cancels_ = false;  // as soon as the pass has ended
};

}  // namespace quorvel::ui
