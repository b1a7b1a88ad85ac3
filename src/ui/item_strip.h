#pragma once

#include <wx/timer.h>

#include <functional>
#include <utility>

#include "shell/item_help.h"
#include "ui/lists.h"
#include "ui/message_bar.h"

namespace quorvel::ui {

/// The strip below the queue that says why the selected row has failed, and has the buttons that help. It comes when
/// the user has selected a row, or when nothing is at work: a pass selects row after row, and the list would jump.
class ItemStrip {
 public:
  /// `apply` does for an item what a button says.
  ItemStrip(Session& session, QueueList& list, MessageBar& bar, std::function<void(Remedy, int)> apply);

  ~ItemStrip();
  ItemStrip(const ItemStrip&) = delete;
  ItemStrip& operator=(const ItemStrip&) = delete;

  /// Shows what is to be said by now.
  void look();

 private:
  void on_select();
  int selected() const;

  Session& session_;
  QueueList& list_;
  MessageBar& bar_;
  const std::function<void(Remedy, int)> apply_;
  wxTimer pause_;
  int row_ = 0;  // 0 for none
  int dismissed_ = 0;
  std::pair<std::string, std::vector<Remedy>> shown_;
};

}  // namespace quorvel::ui
