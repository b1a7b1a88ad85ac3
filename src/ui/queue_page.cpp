#include "ui/queue_page.h"

#include <wx/sizer.h>

#include <utility>

#include "shell/dialogs.h"
#include "shell/preferences.h"
#include "ui/dialogs.h"
#include "ui/menus.h"
#include "ui/restored.h"
#include "ui/show_dialog.h"
#include "ui/text.h"

namespace quorvel::ui {

QueuePage::QueuePage(wxWindow* parent, wxMenu& menu, Window window)
    : wxPanel(parent),
      window_(std::move(window)),
      menu_(menu),
      list_(new QueueList(this)),
      hint_(new EmptyHint(list_, [this](bool on) { turn_exact_names(window_.session, on); })),
      bar_(new MessageBar(this, *list_)) {
  list_->set_hint(*hint_);
  show_settings();
  auto* const sizer = new wxBoxSizer(wxVERTICAL);
  sizer->Add(list_, wxSizerFlags(1).Expand().Border());
  sizer->Add(bar_, wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM));
  SetSizer(sizer);
  list_->Bind(wxEVT_SIZE, [this](wxSizeEvent& event) {
    event.Skip();
    // The row where the pass has ended may lie where the strip is now.
    if (bar_->IsShown()) CallAfter([this] { list_->select(list_->selected()); });
  });
  list_->Bind(wxEVT_CONTEXT_MENU, &QueuePage::on_menu, this);
  list_->on_activate = [this](int row) {
    item_ = row;
    show_info();
  };
  Processor& processor = window_.session.processor;
  processor.on_ended = [this](const QueueItem& item) {
    if (item.state == QueueState::Done && item.lost_characters) ++lost_characters_;
  };
  processor.on_pass_ended = [this] { on_pass_ended(); };
}

QueuePage::~QueuePage() {
  window_.session.processor.on_ended = [](const QueueItem&) {};
  window_.session.processor.on_pass_ended = [] {};
}

void QueuePage::show_settings() {
  hint_->show_exact_names(window_.session.settings.exact);
  if (window_.session.settings.exact) bar_->close();
}

void QueuePage::on_pass_ended() {
  Session& session = window_.session;
  const std::string notice = lost_characters_notice(session, std::exchange(lost_characters_, 0));
  if (notice.empty()) return;
  const auto turn_on = [this] {
    turn_exact_names(window_.session, true);
    show_settings();
  };
  bar_->show(notice, {{"&Use Exact Names", turn_on}, {"&Don't Show Again", [&session] {
                                                        switch_off(session.settings_store, lost_characters_message);
                                                      }}});
}

void QueuePage::on_menu(const wxContextMenuEvent& event) {
  wxPoint at;
  const int row = list_->menu_row(event, at);
  if (!window_.session.queue.holds(row)) return;
  item_ = row;
  const Undo::Entry undo = window_.session.undo.entry(row);
  menu_.SetLabel(mnuUndo, "&" + to_wx(undo.caption));
  menu_.Enable(mnuUndo, undo.enabled);
  menu_.Enable(mnuChoose, ShowChoice::is_possible(window_.session, row));
  menu_.Enable(mnuLookUp, window_.session.settings.exact && window_.session.processor.may_take_again(row));
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

void QueuePage::choose_show() {
  Session& session = window_.session;
  if (!ShowChoice::is_possible(session, item_)) return;
  ShowChoice choice(session, item_);
  const Restored<const ShowChoice*> open(choice_, &choice);
  ShowDialog dialog(window_.stack.dialog_parent(*this), choice, window_.launcher, session.ports.ui);
  if (window_.stack.show_modal(dialog) != wxID_OK) return;
  window_.run({}, [&] { choice.choose(dialog.place(), dialog.remembers()); });
}

void QueuePage::look_up_again() {
  if (!window_.session.settings.exact) return;
  window_.run({}, [this] { window_.session.processor.take_again({item_}, true); });
}

}  // namespace quorvel::ui
