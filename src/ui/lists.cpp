#include "ui/lists.h"

#include <wx/settings.h>
#include <wx/sizer.h>
#include <wx/stattext.h>
#include <wx/wupdlock.h>

#include <algorithm>
#include <utility>

#include "text/failure.h"
#include "ui/icons.h"
#include "ui/size.h"
#include "ui/text.h"

namespace quorvel::ui {
namespace {

constexpr long chosen = wxLIST_STATE_SELECTED | wxLIST_STATE_FOCUSED;

}  // namespace

RowList::RowList(wxWindow* parent, const char* name, long style, const std::vector<const char*>& titles)
    : wxListCtrl(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxLC_REPORT | wxLC_SINGLE_SEL | style,
                 wxDefaultValidator, name) {
  for (const char* const title : titles) AppendColumn(title);
  Bind(wxEVT_SIZE, [this](wxSizeEvent& event) {
    event.Skip();
    lay_out();
  });
}

void RowList::lay_out() {
  if (columns_are_set_) return;  // from now on they are the user's
  const std::vector<int> all = widths(GetClientSize().x - wxSystemSettings::GetMetric(wxSYS_VSCROLL_X, this));
  columns_are_set_ = !all.empty();
  for (std::size_t i = 0; i < all.size(); ++i) SetColumnWidth(static_cast<int>(i), all[i]);
}

int RowList::selected() const {
  return static_cast<int>(GetNextItem(-1, wxLIST_NEXT_ALL, wxLIST_STATE_SELECTED)) + 1;
}

void RowList::select(int index) {
  const long row = std::min(index, GetItemCount()) - 1;
  if (row < 0) return;
  SetItemState(row, chosen, chosen);
  EnsureVisible(row);
}

int RowList::menu_row(const wxContextMenuEvent& event, wxPoint& at) const {
  if (event.GetPosition() != wxDefaultPosition) {
    at = ScreenToClient(event.GetPosition());
    return row_at(at);
  }
  // By key: over the selected row.
  const int row = selected();
  wxRect area;
  at = row > 0 && GetItemRect(row - 1, area) ? wxPoint(area.x + area.height, area.GetBottom()) : wxPoint(0, 0);
  return row;
}

/// 0 for the empty area. The toolkit's own test leaves the header out of account on some systems.
int RowList::row_at(const wxPoint& point) const {
  wxRect area;
  for (long row = GetTopItem(); row < GetItemCount() && GetItemRect(row, area); ++row) {
    if (point.y < area.y) break;
    if (point.y <= area.GetBottom()) return static_cast<int>(row) + 1;
  }
  return 0;
}

QueueList::QueueList(wxWindow* parent)
    : RowList(parent, "ListView1", wxLC_VIRTUAL, {"Filename", "New Name", "Status"}),
      // A window of its own, over the list's: the list paints its whole area.
      hint_(new wxPanel(this, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxBORDER_NONE)) {
  SetSmallImages(icons::rows(*this));
  auto* const text = new wxStaticText(hint_, wxID_ANY, "Drop files or folders here");
  const auto colour = [this, text] {
    hint_->SetBackgroundColour(wxSystemSettings::GetColour(wxSYS_COLOUR_LISTBOX));
    text->SetForegroundColour(wxSystemSettings::GetColour(wxSYS_COLOUR_GRAYTEXT));
  };
  colour();
  Bind(wxEVT_SYS_COLOUR_CHANGED, [colour](wxSysColourChangedEvent& event) {
    event.Skip();
    colour();
  });
  auto* const sizer = new wxBoxSizer(wxVERTICAL);
  sizer->Add(text);
  hint_->SetSizerAndFit(sizer);
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
  if (index <= GetItemCount()) RefreshItem(index - 1);
  show_changes_later();
}

void QueueList::set_progress(int index, const std::string& progress) {
  if (!holds(index)) return;
  if (std::exchange(row(index).progress, progress) != progress && index <= GetItemCount()) RefreshItem(index - 1);
}

/// A pass brings changes in much faster than they can be seen, and with each the system would measure, scroll and
/// paint.
void QueueList::show_changes_later() {
  if (!std::exchange(changes_wait_, true)) CallAfter(&QueueList::show_changes);
}

void QueueList::show_changes() {
  changes_wait_ = false;
  const int count = static_cast<int>(rows_.size());
  if (GetItemCount() != count) SetItemCount(count);
  if (hint_->IsShown()) hint_->Hide();
  const int show = std::exchange(row_to_show_, 0), row = std::exchange(row_to_select_, 0) - 1;
  if (show > 0) EnsureVisible(show - 1);
  if (row >= 0 && GetItemState(row, wxLIST_STATE_SELECTED) == 0) SetItemState(row, chosen, chosen);
}

wxString QueueList::OnGetItemText(long item, long column) const {
  const int index = static_cast<int>(item) + 1;
  if (!holds(index)) return {};
  const auto& [filename, new_name, status, progress, icon] = row(index);
  if (column == Filename) return to_wx(filename);
  if (column == NewName) return to_wx(new_name);
  return to_wx(progress.empty() ? status : status + " " + progress);
}

int QueueList::OnGetItemImage(long item) const {
  const int index = static_cast<int>(item) + 1;
  return holds(index) ? row(index).icon - RowUpdate::DoneIcon : -1;
}

RuleList::RuleList(wxWindow* parent, const char* name, const std::vector<RuleColumn>& columns)
    : RowList(parent, name, 0, {}) {
  for (const RuleColumn& column : columns) shares_.push_back(column.share);
  for (const RuleColumn& column : columns) AppendColumn(column.title);
}

std::vector<int> RuleList::widths(int area) const {
  if (area < scaled(*this, 200)) return {};
  std::vector<int> all;
  for (const int share : shares_) all.push_back(area * share / 100);
  return all;
}

void RuleList::show(const std::vector<ListRow>& rows) {
  const wxWindowUpdateLocker no_flicker(this);
  DeleteAllItems();
  for (std::size_t row = 0; row < rows.size(); ++row) {
    const auto item = static_cast<long>(row);
    InsertItem(item, wxString());
    for (std::size_t cell = 0; cell < rows[row].cells.size(); ++cell) {
      SetItem(item, static_cast<int>(cell), to_wx(rows[row].cells[cell]));
    }
  }
}

}  // namespace quorvel::ui
