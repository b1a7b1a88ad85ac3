#include "ui/lists.h"

#include <wx/settings.h>
#include <wx/sizer.h>

#include <algorithm>
#include <utility>

#include "text/failure.h"
#include "text/restored.h"
#include "ui/desktop.h"
#include "ui/icons.h"
#include "ui/size.h"
#include "ui/text.h"

namespace quorvel::ui {

RowList::RowList(wxWindow* parent, const Looks& looks)
    // Some systems complain about a list without room for its titles, even before it is laid out.
    : wxPanel(parent, wxID_ANY, wxDefaultPosition, scaled(*parent, wxSize(200, 100)), wxTAB_TRAVERSAL | wxBORDER_NONE,
              looks.name),
      titles_(looks.titles) {
  wxWindow* const control = make_control(looks);
  set_spoken_name(*control, looks.spoken_name);
  auto* const sizer = new wxBoxSizer(wxVERTICAL);
  sizer->Add(control, wxSizerFlags(1).Expand());
  SetSizer(sizer);
  Bind(wxEVT_SIZE, [this](wxSizeEvent& event) {
    event.Skip();
    lay_out();
  });
}

void RowList::lay_out() {
  if (columns_are_set_) return;  // from now on they are the user's
  const std::vector<int> all = widths(GetClientSize().x - wxSystemSettings::GetMetric(wxSYS_VSCROLL_X, this));
  columns_are_set_ = !all.empty();
  if (columns_are_set_) set_widths(all);
}

void RowList::select(int row) {
  const int last = std::min(row, count());
  if (last < 1) return;
  scroll_to(last);
  mark(last);
}

void RowList::scroll_to_selected() {
  if (const std::vector<int> rows = selection(); rows.size() == 1) scroll_to(rows.front());
}

void RowList::select_all(const std::vector<int>& rows) {
  unmark();
  for (const int row : rows) {
    if (row >= 1 && row <= count()) mark_also(row);
  }
  on_select();  // some systems tell only what the user has selected
}

int RowList::menu_row(const wxContextMenuEvent& event, wxPoint& at) const {
  if (event.GetPosition() != wxDefaultPosition) {
    at = ScreenToClient(event.GetPosition());
    return row_at(at);
  }
  // By key: over the selected row.
  const int row = selected();
  const wxRect area = area_of(row);
  at = area.IsEmpty() ? wxPoint(0, 0) : wxPoint(area.x + area.height, area.GetBottom());
  return row;
}

/// 0 for the empty area. The toolkit's own test leaves the header out of account on some systems.
int RowList::row_at(const wxPoint& point) const {
  for (int row = top_row(); row >= 1 && row <= count(); ++row) {
    const wxRect area = area_of(row);
    if (area.IsEmpty() || point.y < area.y) break;
    if (point.y <= area.GetBottom()) return row;
  }
  return 0;
}

QueueList::QueueList(wxWindow* parent)
    : RowList(parent, {"ListView1", "File Queue", {"Filename", "New Name", "Status"}, icons::rows(*parent), true}) {}

void QueueList::set_hint(wxWindow& hint) {
  hint_ = &hint;
  Bind(wxEVT_SIZE, [this](wxSizeEvent& event) {
    event.Skip();
    const wxSize space = GetClientSize() - hint_->GetSize();
    hint_->SetPosition(wxPoint(space.x / 2, space.y / 2));
  });
}

std::vector<int> QueueList::widths(int area) const {
  const int status = scaled(*this, 150), names = area - status;
  if (names < status) return {};
  return {names / 2, names - names / 2, status};
}

void QueueList::add_row(const std::string& filename) {
  rows_.emplace_back().filename = filename;
  show_changes_later();
}

void QueueList::update_row(int index, const RowUpdate& update) {
  if (!holds(index)) throw Failure("no such row");
  Row& changed = row(index);
  changed.progress.clear();
  if (update.icon) changed.icon = *update.icon;
  if (update.new_name) changed.new_name = *update.new_name;
  if (update.status) changed.status = *update.status;
  if (update.scroll_into_view) row_to_show_ = index;
  if (update.select) row_to_select_ = index;
  changed_later(index);
}

void QueueList::set_progress(int index, const std::string& progress) {
  if (!holds(index)) return;
  if (std::exchange(row(index).progress, progress) != progress) changed_later(index);
}

/// A pass brings changes in much faster than they can be seen, and with each the system would measure, scroll and
/// paint.
void QueueList::show_changes_later() {
  if (!std::exchange(changes_wait_, true)) CallAfter(&QueueList::show_changes);
}

void QueueList::changed_later(int index) {
  if (changed_rows_.empty() || changed_rows_.back() != index) changed_rows_.push_back(index);
  show_changes_later();
}

void QueueList::show_changes() {
  changes_wait_ = false;
  for (const int row : std::exchange(changed_rows_, {})) {
    if (row <= count()) repaint(row);
  }
  set_count(static_cast<int>(rows_.size()));
  if (hint_ != nullptr && hint_->IsShown()) hint_->Hide();
  follow(std::exchange(row_to_show_, 0), std::exchange(row_to_select_, 0));
  on_change();
}

void QueueList::follow(int show, int select) {
  if (selection().size() > 1) return;  // the user is about to do something with these rows
  const Restored<bool> following(is_following_, true);
  if (show > 0) scroll_to(show);
  if (select > 0 && select != selected()) mark(select);
}

wxString QueueList::cell(int index, int column) const {
  if (!holds(index)) return {};
  const auto& [filename, new_name, status, progress, icon] = row(index);
  if (column == Filename) return to_wx(filename);
  if (column == NewName) return to_wx(new_name);
  return to_wx(progress.empty() ? status : status + " " + progress);
}

std::vector<int> PlainList::widths(int area) const {
  if (area < scaled(*this, 200)) return {};
  std::vector<int> all;
  for (const int share : shares_) all.push_back(area * share / 100);
  return all;
}

void PlainList::show(const std::vector<ListRow>& rows) {
  rows_ = rows;
  reset(static_cast<int>(rows.size()));
}

wxString PlainList::cell(int row, int column) const {
  const std::size_t index = static_cast<std::size_t>(row) - 1, cell = static_cast<std::size_t>(column);
  return index < rows_.size() && cell < rows_[index].cells.size() ? to_wx(rows_[index].cells[cell]) : wxString();
}

std::string PlainList::tip(int row) const {
  const std::size_t index = static_cast<std::size_t>(row) - 1;
  return index < rows_.size() ? rows_[index].tip : std::string();
}

}  // namespace quorvel::ui
