#include "ui/lists.h"

#include <wx/listctrl.h>
#include <wx/msw/private.h>
#include <wx/wupdlock.h>

#include <commctrl.h>

#include <algorithm>
#include <string>

#include "ui/text.h"

namespace quorvel::ui {
namespace {

constexpr long chosen = wxLIST_STATE_SELECTED | wxLIST_STATE_FOCUSED;
constexpr long every_row = -1;

}  // namespace

class RowList::Control : public wxListCtrl {
 public:
  Control(RowList& owner, const Looks& looks)
      : wxListCtrl(&owner, wxID_ANY, wxDefaultPosition, wxDefaultSize,
                   // Else it would paint over what lies on it.
                   wxLC_REPORT | wxLC_VIRTUAL | wxCLIP_SIBLINGS | (looks.several ? 0 : wxLC_SINGLE_SEL)),
        owner_(owner) {
    for (const char* const title : looks.titles) AppendColumn(title);
    ListView_SetExtendedListViewStyleEx(GetHwndOf(this), LVS_EX_INFOTIP, LVS_EX_INFOTIP);
    if (!looks.icons.empty()) SetSmallImages(looks.icons);
    Bind(wxEVT_LIST_ITEM_ACTIVATED,
         [this](const wxListEvent& event) { owner_.on_activate(static_cast<int>(event.GetIndex()) + 1); });
    // A range that is selected at once is told by its last row alone, which gets the keyboard.
    for (const auto& event : {wxEVT_LIST_ITEM_SELECTED, wxEVT_LIST_ITEM_DESELECTED, wxEVT_LIST_ITEM_FOCUSED}) {
      Bind(event, [this](const wxListEvent&) { owner_.on_select(); });
    }
    Bind(wxEVT_SIZE, [this](wxSizeEvent& event) {
      event.Skip();
      CallAfter([this] { owner_.on_room(); });
    });
    if (!looks.several) return;
    Bind(wxEVT_KEY_DOWN, [this](wxKeyEvent& event) {
      if (event.GetKeyCode() != 'A' || event.GetModifiers() != wxMOD_CONTROL) return event.Skip();
      SetItemState(every_row, wxLIST_STATE_SELECTED, wxLIST_STATE_SELECTED);
    });
  }

 private:
  bool MSWOnNotify(int control, WXLPARAM param, WXLPARAM* result) override {
    auto& tip = *reinterpret_cast<NMLVGETINFOTIPW*>(param);
    const std::string text = tip.hdr.code == LVN_GETINFOTIPW ? owner_.tip(tip.iItem + 1) : "";
    if (text.empty()) return wxListCtrl::MSWOnNotify(control, param, result);
    std::wstring shown = to_wx(text).ToStdWstring();
    shown.resize(std::min(shown.size(), static_cast<std::size_t>(tip.cchTextMax) - 1));
    std::ranges::copy(shown + L'\0', tip.pszText);
    return true;
  }
  wxString OnGetItemText(long row, long column) const override {
    return owner_.cell(static_cast<int>(row) + 1, static_cast<int>(column));
  }
  int OnGetItemImage(long row) const override {
    const int item = static_cast<int>(row) + 1;
    return item <= owner_.count() ? owner_.icon(item) : -1;
  }

  RowList& owner_;
};

wxWindow* RowList::make_control(const Looks& looks) {
  return control_ = new Control(*this, looks);
}

int RowList::count() const {
  return control_->GetItemCount();
}

std::vector<int> RowList::selection() const {
  std::vector<int> rows;
  for (int row = selected(); row > 0;) {
    rows.push_back(row);
    row = static_cast<int>(control_->GetNextItem(row - 1, wxLIST_NEXT_ALL, wxLIST_STATE_SELECTED)) + 1;
  }
  return rows;
}

int RowList::selected() const {
  return static_cast<int>(control_->GetNextItem(-1, wxLIST_NEXT_ALL, wxLIST_STATE_SELECTED)) + 1;
}

wxRect RowList::area_of(int row) const {
  wxRect area;
  return row >= 1 && row <= count() && control_->GetItemRect(row - 1, area) ? area : wxRect();
}

void RowList::set_count(int count) {
  if (count != this->count()) control_->SetItemCount(count);
}

void RowList::reset(int count) {
  const wxWindowUpdateLocker no_flicker(control_);
  unmark();
  control_->SetItemCount(count);
  control_->Refresh();
}

void RowList::repaint(int row) {
  control_->RefreshItem(row - 1);
}

void RowList::scroll_to(int row) {
  control_->EnsureVisible(row - 1);
}

void RowList::mark(int row) {
  unmark();
  control_->SetItemState(row - 1, chosen, chosen);
}

void RowList::mark_also(int row) {
  control_->SetItemState(row - 1, wxLIST_STATE_SELECTED, wxLIST_STATE_SELECTED);
}

void RowList::unmark() {
  control_->SetItemState(every_row, 0, wxLIST_STATE_SELECTED);
}

int RowList::top_row() const {
  return static_cast<int>(control_->GetTopItem()) + 1;
}

void RowList::set_widths(const std::vector<int>& widths) {
  for (std::size_t i = 0; i < widths.size(); ++i) control_->SetColumnWidth(static_cast<int>(i), widths[i]);
}

}  // namespace quorvel::ui
