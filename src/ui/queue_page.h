#pragma once

#include <wx/menu.h>
#include <wx/panel.h>

#include <functional>

#include "platform/launcher.h"
#include "shell/session.h"
#include "ui/call_stack.h"
#include "ui/lists.h"

namespace quorvel::ui {

/// The tab of the file queue: its list, the menu over an item, and what is done from there.
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

  QueueList& list() { return *list_; }

  // The commands of the menu, for the item that it was last over.

  int menu_item() const { return item_; }
  void show_info();
  void undo();

 private:
  void on_menu(const wxContextMenuEvent& event);

  const Window window_;
  wxMenu& menu_;
  QueueList* list_;
  int item_ = 0;
  bool is_undoing_ = false;
};

}  // namespace quorvel::ui
