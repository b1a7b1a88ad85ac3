#include "ui/rule_list.h"

#include <wx/settings.h>
#include <wx/wupdlock.h>

#include <algorithm>

#include "ui/text.h"

namespace quorvel::ui {

RuleList::RuleList(wxWindow* parent, const wxString& name, std::vector<RuleColumn> columns)
    : wxListCtrl(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxLC_REPORT | wxLC_SINGLE_SEL, wxDefaultValidator,
                 name),
      columns_(std::move(columns)) {
  for (const RuleColumn& column : columns_) AppendColumn(column.title);
  Bind(wxEVT_SIZE, [this](wxSizeEvent& event) {
    event.Skip();
    lay_out();
  });
}

void RuleList::lay_out() {
  const int width = GetClientSize().x - wxSystemSettings::GetMetric(wxSYS_VSCROLL_X, this);
  if (columns_are_set_ || width < FromDIP(200)) return;  // from now on they are the user's
  columns_are_set_ = true;
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    SetColumnWidth(static_cast<int>(i), width * columns_[i].share / 100);
  }
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

int RuleList::selected() const {
  return static_cast<int>(GetNextItem(-1, wxLIST_NEXT_ALL, wxLIST_STATE_SELECTED)) + 1;
}

void RuleList::select(int index) {
  const long row = std::min(index, GetItemCount()) - 1;
  if (row < 0) return;
  constexpr long chosen = wxLIST_STATE_SELECTED | wxLIST_STATE_FOCUSED;
  SetItemState(row, chosen, chosen);
  EnsureVisible(row);
}

}  // namespace quorvel::ui
