#include "ui/review_page.h"

#include <wx/sizer.h>

#include <algorithm>
#include <utility>

#include "naming/file_names.h"
#include "shell/show_choice.h"
#include "text/cut.h"
#include "text/restored.h"
#include "ui/desktop.h"
#include "ui/menus.h"
#include "ui/size.h"
#include "ui/text.h"

namespace quorvel::ui {
namespace {

constexpr int detail_lines = 3;
constexpr std::chrono::milliseconds interval(300);
constexpr int rest = 8;  // of the time may go by for every part that a refresh takes

}  // namespace

ReviewPage::ReviewPage(wxWindow* parent, Window window)
    : wxPanel(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxTAB_TRAVERSAL | wxBORDER_NONE, "review"),
      window_(std::move(window)),
      sheet_({window_.session.settings, window_.session.queue, window_.session.processor, window_.session.batch,
              window_.session.view}),
      refresh_(this) {
  Hide();
  auto* const sizer = new wxBoxSizer(wxVERTICAL);
  const wxSizerFlags part = wxSizerFlags().Expand().Border(wxTOP, scaled(*this, 5));
  sizer->Add(top_row(), wxSizerFlags().Expand());
  tree_ = new ReviewTree(this, sheet_,
                         {[this] { on_select(); }, [this](const std::vector<int>& items, bool on) { tick(items, on); },
                          [this](int item, ReviewModel::Column column) { edit(item, column); },
                          [this](const wxPoint& at) { open_menu(at); }, [this](int item) { return tip(item); }});
  tree_->on_edited = [this] { refresh(); };
  sizer->Add(tree_, wxSizerFlags(part).Proportion(1));
  details_ = new wxTextCtrl(this, wxID_ANY, wxString(), wxDefaultPosition, wxDefaultSize,
                            wxTE_MULTILINE | wxTE_READONLY, wxDefaultValidator, "review_details");
  details_->SetMinSize(wxSize(-1, detail_lines * details_->GetCharHeight() + scaled(*this, 10)));
  set_spoken_name(*details_, "About the Selected File");
  sizer->Add(details_, part);
  sizer->Add(buttons(), part);
  SetSizer(sizer);
  Bind(wxEVT_TIMER, [this](wxTimerEvent&) { refresh(); });
  Bind(wxEVT_CHAR_HOOK, &ReviewPage::on_key, this);
}

wxSizer* ReviewPage::top_row() {
  auto* const row = new wxBoxSizer(wxHORIZONTAL);
  heading_ = new wxStaticText(this, wxID_ANY, "", wxDefaultPosition, wxDefaultSize, wxST_ELLIPSIZE_END, "heading");
  row->Add(heading_, wxSizerFlags(1).CenterVertical());
  filter_ = new wxChoice(this, wxID_ANY, wxDefaultPosition, wxDefaultSize, 0, nullptr, 0, wxDefaultValidator, "filter");
  for (const char* const choice : {"All Files", "Needs a Decision", "Problems"}) filter_->Append(choice);
  filter_->SetSelection(0);
  set_spoken_name(*filter_, "Show");
  filter_->Bind(wxEVT_CHOICE, [this](wxCommandEvent&) {
    if (tree_->editor().commit()) show_rows();
  });
  row->Add(filter_, wxSizerFlags().CenterVertical().Border(wxLEFT));
  button(*row, wxLEFT, "Show Li&st", [this] {
    if (tree_->editor().commit()) window_.show(false);
  });
  return row;
}

wxSizer* ReviewPage::buttons() {
  auto* const row = new wxBoxSizer(wxHORIZONTAL);
  choose_ = button(*row, wxRIGHT, "&Choose Show\u2026", [this] { send(mnuChoose); });
  exception_ = button(*row, wxRIGHT, "Add E&xception\u2026", [this] { send(mnuSpecify); });
  look_up_ = button(*row, wxRIGHT, "&Look Up Again", [this] { look_up_again(); });
  folder_ = button(*row, wxRIGHT, "Open Fol&der", [this] { send(mnuFolder); });
  row->AddStretchSpacer();
  all_ready_ = button(*row, wxLEFT, "Select All &Ready", [this] {
    sheet_.tick_all_ready();
    show_rows();
  });
  button(*row, wxLEFT, "Ca&ncel", [this] { cancel(); });
  apply_ = button(*row, wxLEFT, "&Apply", [this] { apply(); });
  choose_->SetName("review_choose");
  exception_->SetName("review_exception");
  apply_->SetName("review_apply");
  return row;
}

wxButton* ReviewPage::button(wxSizer& row, int side, const char* label, const std::function<void()>& press) {
  auto* const made = new wxButton(this, wxID_ANY, to_wx(label));
  made->Bind(wxEVT_BUTTON, [press](wxCommandEvent&) { press(); });
  row.Add(made, wxSizerFlags().CenterVertical().Border(side, scaled(*this, 5)));
  return made;
}

/// Of the frame's, for what is selected here.
void ReviewPage::send(int command) {
  if (!tree_->editor().commit()) return;
  window_.choose(tree_->selection());
  wxCommandEvent event(wxEVT_MENU, command);
  ProcessWindowEvent(event);
}

void ReviewPage::look_up_again() {
  send(window_.session.settings.exact ? mnuLookUp : mnuRetryThis);
}

// What is shown.

void ReviewPage::shown(bool is_shown) {
  auto* const frame = dynamic_cast<wxTopLevelWindow*>(wxGetTopLevelParent(this));
  if (!is_shown) {
    tree_->editor().close();
    frame->SetDefaultItem(nullptr);
    return;
  }
  apply_->SetDefault();
  refresh();
}

void ReviewPage::changed() {
  if (!window_.session.settings.review && sheet_.is_empty()) return;
  if (!refresh_.IsRunning()) refresh_.StartOnce(static_cast<int>(std::max(interval, rest * cost_).count()));
}

void ReviewPage::pass_ended() {
  if (is_applying_) return;
  if (std::exchange(cancels_, false)) return cancel();
  refresh();
  window_.show(has_work());
}

void ReviewPage::refresh() {
  if (is_applying_) return;
  // What is edited stays where it is until that has ended.
  if (tree_->editor().is_open()) return update();
  const auto start = std::chrono::steady_clock::now();
  sheet_.refresh();
  std::erase_if(edited_, [this](int item) { return !sheet_.holds(item); });
  IsShown() ? show_rows() : update();
  cost_ = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);
}

void ReviewPage::show_rows() {
  tree_->show(static_cast<ReviewSheet::Filter>(filter_->GetSelection()));
  update();
}

bool ReviewPage::is_looking_up() const {
  return window_.session.processor.queue_busy() || corrections_ > 0;
}

std::string ReviewPage::heading() const {
  std::string text = sheet_.heading();
  if (!is_looking_up()) return text;
  const int left = std::max(window_.session.processor.left(), 1);
  return text + ". Looking up " + std::to_string(left) + (sheet_.is_empty() ? "\u2026" : " more\u2026");
}

void ReviewPage::update() {
  const std::string text = heading();
  heading_->SetLabelText(to_wx(text));
  heading_->SetToolTip(to_wx(text));
  window_.tell(has_work() ? text : "");
  const int count = sheet_.ticked();
  const wxString label = "&Apply " + std::to_string(count);
  if (apply_->GetLabel() != label) {
    apply_->SetLabel(label);
    Layout();
  }
  apply_->Enable(count > 0 && !is_looking_up() && !window_.is_busy());
  all_ready_->Enable(!sheet_.is_empty());
  on_select();
}

void ReviewPage::on_select() {
  const Session& session = window_.session;
  const std::vector<int> items = tree_->selection();
  const auto any = [&](const auto& predicate) { return std::ranges::any_of(items, predicate); };
  folder_->Enable(!items.empty());
  look_up_->Enable(any([&](int item) { return session.processor.may_take_again(item); }));
  choose_->Enable(any([&](int item) { return ShowChoice::is_possible(session, item); }));
  exception_->Enable(!items.empty() && !session.queue.at(items.front()).search_name.empty());
  // The one that helps with the way of naming that is in force; the menu has both.
  choose_->Show(session.settings.exact);
  exception_->Show(!session.settings.exact);
  Layout();
  if (const std::string text = details(); from_wx(details_->GetValue()) != text) details_->ChangeValue(to_wx(text));
}

/// In full, for names are long.
std::string ReviewPage::tip(int item) const {
  if (!sheet_.holds(item)) return {};
  std::string text = sheet_.reason(item);
  replace_all(text, "\r\n", "\n");
  if (!text.empty()) text += "\n";
  text += sheet_.old_name(item);
  if (const std::string name = sheet_.new_name(item); !name.empty()) {
    text.append("\n").append(sheet_.folder(item)).append(name);
  }
  for (const FileJob& each : sheet_.companions(item)) text += "\nWith " + each.filename + " as " + each.new_name;
  return text;
}

std::string ReviewPage::details() const {
  if (const int file = tree_->selected_file(); file > 0) return tip(file);
  const std::size_t count = tree_->selection().size();
  return count == 0 ? "" : count == 1 ? "1 file" : std::to_string(count) + " files";
}

void ReviewPage::open_menu(const wxPoint& at) {
  window_.choose(tree_->selection());
  wxMenu& menu = window_.menu;
  const int file = tree_->selected_file();
  menu.Enable(mnuEditName, file > 0 && window_.session.queue.at(file).is_planned);
  menu.Enable(mnuEditNumbers, file > 0);
  menu.Enable(mnuChoose, choose_->IsEnabled());
  menu.Enable(mnuSpecify, exception_->IsEnabled());
  menu.Enable(mnuReviewAgain, look_up_->IsEnabled());
  menu.Enable(mnuInfo, file > 0);
  menu.Enable(mnuFolder, folder_->IsEnabled());
  window_.pop_up(menu, ScreenToClient(tree_->ClientToScreen(at)));
}

// Corrections.

void ReviewPage::edit(int item, ReviewModel::Column column) {
  if (!tree_->editor().commit() || !sheet_.holds(item)) return;
  const bool is_name = column == ReviewModel::NewName && window_.session.queue.at(item).is_planned;
  tree_->edit(item, is_name ? column : ReviewModel::Numbers, is_name ? sheet_.name_to_edit(item) : sheet_.numbers(item),
              [this, item, is_name](const std::string& text) {
                return is_name ? accept_name(item, text) : accept_numbers(item, text);
              });
}

bool ReviewPage::accept_name(int item, const std::string& name) {
  if (name == sheet_.name_to_edit(item)) return true;
  if (refused(sheet_.rename(item, name))) return false;
  edited_.insert(item);
  return true;
}

bool ReviewPage::accept_numbers(int item, const std::string& numbers) {
  if (numbers == sheet_.numbers(item)) return true;
  if (refused(sheet_.refusal_of(numbers))) return false;
  ++corrections_;  // the box closes before the service is asked
  CallAfter([this, item, numbers] { correct(item, numbers); });
  return true;
}

void ReviewPage::correct(int item, const std::string& numbers) {
  --corrections_;
  edited_.insert(item);
  window_.run([&] { sheet_.correct(item, numbers); });
  refresh();
  // While it was looked up, it had no row that could stay selected.
  if (sheet_.holds(item) && tree_->selected_file() == 0) tree_->select({item});
}

bool ReviewPage::refused(const std::string& refusal) {
  if (refusal.empty()) return false;
  details_->ChangeValue(to_wx(refusal));
  return true;
}

void ReviewPage::tick(const std::vector<int>& items, bool on) {
  sheet_.tick(items, on);
  CallAfter([this] { show_rows(); });  // the control is in the middle of its own change
}

// The end.

void ReviewPage::on_key(wxKeyEvent& event) {
  const bool is_enter = event.GetKeyCode() == WXK_RETURN || event.GetKeyCode() == WXK_NUMPAD_ENTER;
  is_enter&& event.GetModifiers() == wxMOD_CONTROL ? apply() : event.Skip();
}

void ReviewPage::apply() {
  // A default button may be pressed from another tab; what is corrected is to be looked up first.
  if (!IsShownOnScreen() || !tree_->editor().commit()) return;
  update();
  if (!apply_->IsEnabled()) return;
  window_.show(false);
  {
    const Restored<bool> applying(is_applying_, true);
    edited_.clear();
    window_.run([this] { sheet_.apply(); });
  }
  refresh();
}

void ReviewPage::cancel() {
  const std::string count = std::to_string(edited_.size());
  const std::string what =
      edited_.size() == 1 ? "What you have corrected" : "The " + count + " files you have corrected";
  if (!edited_.empty() && !window_.ask(what + " would be lost. Cancel the review?")) return;
  if (window_.session.processor.queue_busy()) {
    cancels_ = true;
    edited_.clear();  // it is not asked twice
    return window_.stop();
  }
  edited_.clear();
  sheet_.cancel();
  window_.show(false);
  update();
}

}  // namespace quorvel::ui
