#pragma once

#include <wx/menu.h>
#include <wx/panel.h>

#include <functional>

#include "platform/launcher.h"
#include "shell/session.h"
#include "shell/show_choice.h"
#include "ui/call_stack.h"
#include "ui/empty_hint.h"
#include "ui/lists.h"
#include "ui/message_bar.h"

namespace quorvel::ui {

/// The tab of the file queue: its list, what lies over that while it is empty, the menu over an item and what is done
/// from there, and the strip that tells what is to be said about a pass.
class QueuePage : public wxPanel {
 public:
  /// What moves files and can be stopped; its progress is shown in this row.
  struct Work {
    int row = 0;
    bool undoing = false;
  };
  /// What the page stands on. `run` does something that moves files.
  struct Window {
    Session& session;
    Launcher& launcher;
    CallStack& stack;
    std::function<void(const Work&, const std::function<void()>&)> run;
  };

  /// `menu` pops up over an item.
  QueuePage(wxWindow* parent, wxMenu& menu, Window window);
  ~QueuePage() override;

  QueueList& list() { return *list_; }

  /// After the settings have been changed elsewhere.
  void show_settings();

  /// Whether the user waits for the service, so that no pass may hold that up.
  bool is_searching() const { return choice_ != nullptr && choice_->is_searching(); }

  // The commands of the menu, for the item that it was last over.

  int menu_item() const { return item_; }
  void show_info();
  void undo();
  void choose_show();
  void look_up_again();

 private:
  void on_menu(const wxContextMenuEvent& event);
  void on_pass_ended();

  const Window window_;
  wxMenu& menu_;
  QueueList* list_;
  EmptyHint* hint_;
  MessageBar* bar_;
  int item_ = 0;
  bool is_undoing_ = false;
  const ShowChoice* choice_ = nullptr;  // while its dialog is open
  int lost_characters_ = 0;             // names that lost some in the pass
};

}  // namespace quorvel::ui
