#include "ui/queue_page.h"

#include <wx/sizer.h>

#include <utility>

#include "ui/dialogs.h"
#include "ui/menus.h"
#include "ui/restored.h"
#include "ui/text.h"

namespace quorvel::ui {

QueuePage::QueuePage(wxWindow* parent, wxMenu& menu, Window window)
    : wxPanel(parent), window_(std::move(window)), menu_(menu), list_(new QueueList(this)) {
  auto* const sizer = new wxBoxSizer(wxVERTICAL);
  sizer->Add(list_, wxSizerFlags(1).Expand().Border());
  SetSizer(sizer);
  list_->Bind(wxEVT_CONTEXT_MENU, &QueuePage::on_menu, this);
  list_->on_activate = [this](int row) {
    item_ = row;
    show_info();
  };
}

void QueuePage::on_menu(const wxContextMenuEvent& event) {
  wxPoint at;
  const int row = list_->menu_row(event, at);
  if (!window_.session.queue.holds(row)) return;
  item_ = row;
  const Undo::Entry undo = window_.session.undo.entry(row);
  menu_.SetLabel(mnuUndo, "&" + to_wx(undo.caption));
  menu_.Enable(mnuUndo, undo.enabled);
  window_.stack.pop_up(*list_, menu_, at);
}

void QueuePage::show_info() {
  if (!window_.session.queue.holds(item_)) return;
  ItemInfoDialog dialog(window_.stack.dialog_parent(*this), window_.session, window_.launcher);
  dialog.setQID(item_);
  window_.stack.show_modal(dialog);
}

void QueuePage::undo() {
  if (is_undoing_) return;  // the same file twice at once, perhaps
  const Restored<bool> undoing(is_undoing_, true);
  window_.run({item_, true}, [this] { window_.session.undo.run(item_); });
}

}  // namespace quorvel::ui
