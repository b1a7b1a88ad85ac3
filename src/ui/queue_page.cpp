#include "ui/queue_page.h"

#include <wx/msgdlg.h>
#include <wx/sizer.h>

// After the header that it needs.
#include <wx/generic/msgdlgg.h>

#include <algorithm>
#include <set>
#include <utility>

#include "shell/dialogs.h"
#include "shell/past_text.h"
#include "shell/preferences.h"
#include "text/restored.h"
#include "ui/dialogs.h"
#include "ui/history_dialog.h"
#include "ui/menus.h"
#include "ui/show_dialog.h"
#include "ui/text.h"
#include "ui/watch_dialog.h"

namespace quorvel::ui {
namespace {

constexpr std::size_t max_folders = 10;  // that are opened at once
constexpr int watch_interval_ms = 1000;
constexpr auto watch_patience = std::chrono::milliseconds(20);  // more, and the window would be felt to halt

}  // namespace

QueuePage::QueuePage(wxWindow* parent, wxMenu& menu, wxMenu& review_menu, Window window)
    : wxPanel(parent),
      window_(std::move(window)),
      menu_(menu),
      list_(new QueueList(this)),
      hint_(new EmptyHint(
          list_, [this](bool on) { turn_exact_names(window_.session, on); },
          [this](bool on) {
            turn_review_first(window_.session, on);
            window_.show_settings();
          })),
      strip_(new MessageBar(this, *list_, *list_, "item_strip")),
      bar_(new MessageBar(this, *list_, *strip_, "message_bar")),
      review_strip_(new ReviewStrip(this, [this] { show_review(true); })),
      review_(make_review(review_menu)),
      past_undoing_(window_.session) {
  Session& session = window_.session;
  list_->set_hint(*hint_);
  auto* const sizer = new wxBoxSizer(wxVERTICAL);
  sizer->Add(list_, wxSizerFlags(1).Expand().Border());
  sizer->Add(review_, wxSizerFlags(1).Expand().Border());
  review_->MoveAfterInTabOrder(list_);
  for (MessageBar* const bar : {strip_, bar_}) {
    sizer->Add(bar, wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM));
  }
  sizer->Add(review_strip_, wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM));
  SetSizer(sizer);
  // The row where the pass has ended may lie where a strip is now.
  list_->on_room = [this] {
    if (strip_->IsShown() || bar_->IsShown()) list_->scroll_to_selected();
  };
  list_->Bind(wxEVT_CONTEXT_MENU, &QueuePage::on_menu, this);
  list_->on_activate = [this](int row) {
    items_ = {row};
    show_info();
  };
  list_->tip_of = [&session](int row) { return session.queue.holds(row) ? reason_of(session.queue.at(row)) : ""; };
  item_strip_.emplace(session, *list_, *strip_, [this](Remedy remedy, int item) { apply(remedy, item); });
  report_.emplace(
      session, *bar_, window_.life,
      PassReport::Actions{[this, &session](std::int64_t operation) {
                            const std::optional<PastOperation> past = session.history.operation(operation);
                            undo_pass([&] { return past ? session.history.pass(past->pass) : std::nullopt; });
                          },
                          [this] { give(mnuRetry); },
                          [this, &session] {
                            turn_exact_names(session, true);
                            show_settings();
                          },
                          [this] { return review_->has_work() ? review_->heading() : ""; }});
  list_->on_change = [this] {
    report_->show_progress();
    item_strip_->look();
  };
  report_->on_pass_ended = [this] {
    review_->pass_ended();
    CallAfter([this] { item_strip_->look(); });
  };
  show_settings();
  if (window_.session.ports.folder_watch == nullptr) return;
  watching_.emplace(window_.session);
  watch_timer_.Bind(wxEVT_TIMER, [this](wxTimerEvent&) { watch(); });
  watch_timer_.Start(watch_interval_ms);
}

/// What a dialog is open for may be about the very files.
void QueuePage::watch() {
  if (window_.life.is_unloading() || window_.stack.has_dialog() || has_no_time()) return;
  const bool was_on = watching_->is_on();
  const std::vector<int> again = watching_->tick(watch_patience);
  if (watching_->is_on() != was_on) show_settings();
  if (!again.empty()) window_.run({}, [&] { window_.session.processor.take_again(again, false); });
}

void QueuePage::show_watched() {
  WatchDialog dialog(window_.stack.dialog_parent(*this), window_.session,
                     [this](wxDialog& picker) { return window_.stack.show_modal(picker); });
  if (window_.stack.show_modal(dialog) == wxID_OK) window_.show_settings();
}

void QueuePage::show_settings() {
  const Settings& settings = window_.session.settings;
  hint_->show(settings.exact, settings.review, settings.watching);
  review_->update();
  if (window_.session.settings.exact) bar_->close();
  item_strip_->look();
}

ReviewPage* QueuePage::make_review(wxMenu& menu) {
  return new ReviewPage(
      this,
      {window_.session, menu, [this](const std::function<void()>& action) { window_.run({}, action); }, window_.stop,
       [this] { return is_undoing_; },
       [this](wxMenu& over, const wxPoint& at) { window_.stack.pop_up(*review_, over, at); },
       [this](const std::string& question) { return ask(question, "Cancel Review", "&Cancel Review", "&Go Back"); },
       [this](const std::vector<int>& items) { items_ = items; }, [this](bool on) { show_review(on); },
       [this](const std::string& heading) { review_strip_->tell(review_->IsShown() ? "" : heading); }});
}

/// The review in the list's place, or the list again.
void QueuePage::show_review(bool on) {
  if (!review_->has_work()) report_->forget();
  if (on == review_->IsShown()) return;
  const bool has_focus = IsDescendant(FindFocus());
  list_->Show(!on);
  review_->Show(on);
  review_->shown(on);
  review_strip_->tell(on || !review_->has_work() ? "" : review_->heading());
  Layout();
  item_strip_->look();
  if (has_focus) on ? review_->focus() : list_->SetFocus();
}

void QueuePage::exception_added() {
  if (review_->IsShown()) retry();
}

void QueuePage::give(int command) {
  wxCommandEvent event(wxEVT_MENU, command);
  ProcessWindowEvent(event);
}

void QueuePage::apply(Remedy remedy, int item) {
  items_ = {item};
  static constexpr int commands[] = {mnuChoose, mnuSpecify, mnuRetryThis, mnuUndo, mnuFolder};  // as Remedy has them
  give(commands[static_cast<int>(remedy)]);
}

void QueuePage::on_menu(const wxContextMenuEvent& event) {
  wxPoint at;
  const int row = list_->menu_row(event, at);
  if (!window_.session.queue.holds(row)) return;
  items_ = list_->selection();
  if (!std::ranges::binary_search(items_, row)) {
    list_->select(row);
    items_ = {row};
  }
  open_menu(at);
}

void QueuePage::open_menu(const wxPoint& at) {
  const Session& session = window_.session;
  const bool is_one = items_.size() == 1;
  const Undo::Entry undo = session.undo.entry(items_);
  const auto may_take_again = [&](int item) { return session.processor.may_take_again(item); };
  const bool may_retry = std::ranges::any_of(items_, may_take_again);
  menu_.Enable(mnuInfo, is_one);
  menu_.SetLabel(mnuUndo, "&" + to_wx(undo.caption));
  menu_.Enable(mnuUndo, undo.enabled);
  menu_.Enable(mnuSpecify, is_one);
  menu_.Enable(mnuChoose,
               std::ranges::any_of(items_, [&](int item) { return ShowChoice::is_possible(session, item); }));
  menu_.Enable(mnuLookUp, session.settings.exact && may_retry);
  menu_.SetLabel(mnuRetryThis, is_one ? "Re&try This File" : "Re&try These Files");
  menu_.Enable(mnuRetryThis, may_retry);
  window_.stack.pop_up(*list_, menu_, at);
}

void QueuePage::show_info() {
  if (!window_.session.queue.holds(menu_item())) return;
  ItemInfoDialog dialog(window_.stack.dialog_parent(*this), window_.session, window_.launcher);
  dialog.setQID(menu_item());
  window_.stack.show_modal(dialog);
}

void QueuePage::undo() {
  if (is_undoing_) return;  // the same file twice at once, perhaps
  run_undoing({menu_item(), true}, [this] {
    window_.session.undo.run(items_, [this](int item) {
      window_.session.ports.ui.update_row(item, {});  // where its progress is shown from now on
      return goes_on();
    });
  });
}

void QueuePage::choose_show() {
  Session& session = window_.session;
  std::set<int> done;
  for (const int item : std::vector(items_)) {
    if (done.contains(item) || !ShowChoice::is_possible(session, item)) continue;
    ShowChoice choice(session, item);
    const Restored<const ShowChoice*> open(choice_, &choice);
    ShowDialog dialog(window_.stack.dialog_parent(*this), choice, window_.launcher, session.ports.ui);
    if (window_.stack.show_modal(dialog) != wxID_OK) return;
    const std::vector<int> covered = choice.items();
    done.insert(covered.begin(), covered.end());
    window_.run({}, [&] { choice.choose(dialog.place(), dialog.remembers()); });
  }
}

void QueuePage::look_up_again() {
  if (window_.session.settings.exact) take_again(true);
}

void QueuePage::retry() {
  take_again(false);
}

void QueuePage::take_again(bool anew) {
  // The menu may come up over others meanwhile.
  window_.run({}, [&, items = items_] { window_.session.processor.take_again(items, anew); });
}

void QueuePage::open_folders() {
  Session& session = window_.session;
  std::set<std::string> folders;
  for (const int item : std::vector(items_)) {
    const std::string folder = folder_of(session.queue.at(item), session.ports.files);
    if (folders.size() < max_folders && folders.insert(folder).second) {
      open_folder(window_.launcher, session.ports.ui, session.ports.files, folder);
    }
  }
}

// The history's.

/// Why nothing of the history can be undone now.
std::string QueuePage::hindrance() const {
  if (window_.session.processor.queue_busy())
    return "Quorvel is at work on the queue. Close this, and undo when that has ended.";
  if (is_undoing_) return "Something is being undone already.";
  return {};
}

bool QueuePage::goes_on() const {
  window_.session.ports.ui.process_events();
  return !window_.is_stopped();
}

void QueuePage::run_undoing(const Work& work, const std::function<void()>& action) {
  const Restored<bool> undoing(is_undoing_, true);
  window_.run(work, action);
}

void QueuePage::show_history() {
  HistoryDialog dialog(window_.stack.dialog_parent(*this),
                       {window_.session, window_.launcher, past_undoing_, [this] { return hindrance(); },
                        [this](const std::function<void()>& action) {
                          run_undoing({0, true}, action);
                        },
                        [this] { return goes_on(); }, window_.stop});
  window_.stack.show_modal(dialog);
}

bool QueuePage::ask(const std::string& question, const char* title, const char* yes, const char* no) {
  wxGenericMessageDialog dialog(window_.stack.dialog_parent(*this), to_wx(question), title, wxYES_NO | wxICON_QUESTION);
  dialog.SetYesNoLabels(yes, no);
  return window_.stack.show_modal(dialog) == wxID_YES;
}

void QueuePage::undo_last_pass() {
  undo_pass([this] { return past_undoing_.last_pass(); });
}

void QueuePage::undo_pass(const std::function<std::optional<PastPass>()>& find) {
  Session& session = window_.session;
  const auto is_hindered = [&] {
    const std::string reason = hindrance();
    if (!reason.empty()) session.ports.ui.show_message(0, "Unable to undo", reason, MessageIcon::Information);
    return !reason.empty();
  };
  if (is_hindered()) return;
  const std::optional<PastPass> pass = find();
  if (!pass || pass->undoable() == 0) return bar_->show("There is nothing to undo.", {});
  // Events run while the question is open.
  if (pass->undoable() > 1 &&
      (!ask(undo_question(*pass, session.ports.clock), "Undo Last Pass", "&Undo", "&Cancel") || is_hindered()))
    return;
  PastUndoing::Result result;
  run_undoing({0, true},
              [&] { result = past_undoing_.undo(pass->operations, [this](int, int) { return goes_on(); }); });
  bar_->show(text_of(result) + ".", {{"&History\u2026", [this] { show_history(); }}});
}

}  // namespace quorvel::ui
