#include "ui/queue_list.h"

#include <wx/settings.h>
#include <wx/sizer.h>
#include <wx/stattext.h>

#include <utility>

#include "ui/icons.h"
#include "ui/text.h"

namespace quorvel::ui {

QueueList::QueueList(wxWindow* parent, const QueueListModel& model)
    : wxListCtrl(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxLC_REPORT | wxLC_VIRTUAL | wxLC_SINGLE_SEL,
                 wxDefaultValidator, "ListView1"),
      model_(model) {
  SetSmallImages(icons::rows());
  for (const char* const title : {"Filename", "New Name", "Status"}) AppendColumn(title);

  // A window of its own, over the list's: the list paints its whole area.
  hint_ = new wxPanel(this, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxBORDER_NONE);
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
    lay_out();
  });
}

void QueueList::lay_out() {
  const wxSize area = GetClientSize();
  hint_->SetPosition(wxPoint((area.x - hint_->GetSize().x) / 2, (area.y - hint_->GetSize().y) / 2));
  const int status = FromDIP(150);
  const int names = area.x - status - wxSystemSettings::GetMetric(wxSYS_VSCROLL_X, this);
  if (columns_are_set_ || names < status) return;  // from now on they are the user's
  columns_are_set_ = true;
  SetColumnWidth(QueueListModel::Filename, names / 2);
  SetColumnWidth(QueueListModel::NewName, names - names / 2);
  SetColumnWidth(QueueListModel::Status, status);
}

void QueueList::row_added() {
  change_later();
}

void QueueList::row_changed(int index, bool scroll_into_view, bool select) {
  if (scroll_into_view) row_to_show_ = index;
  if (select) row_to_select_ = index;
  if (index <= GetItemCount()) RefreshItem(index - 1);
  change_later();
}

/// A pass brings changes in much faster than they can be seen, and with each the system would measure, scroll and
/// paint.
void QueueList::change_later() {
  if (!std::exchange(changes_wait_, true)) CallAfter(&QueueList::change);
}

void QueueList::change() {
  changes_wait_ = false;
  if (GetItemCount() != model_.count()) SetItemCount(model_.count());
  if (hint_->IsShown()) hint_->Hide();
  const int show = std::exchange(row_to_show_, 0), row = std::exchange(row_to_select_, 0) - 1;
  if (show > 0) EnsureVisible(show - 1);
  constexpr long chosen = wxLIST_STATE_SELECTED | wxLIST_STATE_FOCUSED;
  if (row >= 0 && GetItemState(row, wxLIST_STATE_SELECTED) == 0) SetItemState(row, chosen, chosen);
}

int QueueList::selected() const {
  return static_cast<int>(GetNextItem(-1, wxLIST_NEXT_ALL, wxLIST_STATE_SELECTED)) + 1;
}

wxString QueueList::OnGetItemText(long row, long column) const {
  const int index = static_cast<int>(row) + 1;
  return model_.holds(index) ? to_wx(model_.text(index, static_cast<int>(column))) : wxString();
}

int QueueList::OnGetItemImage(long row) const {
  const int index = static_cast<int>(row) + 1;
  return model_.holds(index) ? model_.icon(index) - RowUpdate::DoneIcon : -1;
}

}  // namespace quorvel::ui
