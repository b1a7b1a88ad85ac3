#include "ui/review_tree.h"

#include <wx/settings.h>
#include <wx/sizer.h>
#include <wx/utils.h>

#include <algorithm>
#include <array>
#include <iterator>

#include "text/restored.h"
#include "ui/desktop.h"
#include "ui/icons.h"
#include "ui/size.h"
#include "ui/text.h"

namespace quorvel::ui {
namespace {

constexpr int follow_ms = 60;

struct Looks {
  const char* title;
  int width;  // of ordinary letters; what is left over goes to the names
  wxEllipsizeMode cut;
};
constexpr std::array<Looks, ReviewModel::Status + 1> columns = {{{"", 28, wxELLIPSIZE_NONE},
                                                                 {"Filename", 0, wxELLIPSIZE_MIDDLE},
                                                                 {"New Name", 0, wxELLIPSIZE_MIDDLE},
                                                                 {"Episode", 70, wxELLIPSIZE_END},
                                                                 {"Folder", 90, wxELLIPSIZE_START},
                                                                 {"Status", 150, wxELLIPSIZE_END}}};

wxDataViewRenderer* renderer_of(unsigned column) {
  if (column == ReviewModel::Tick) return new wxDataViewToggleRenderer("bool", wxDATAVIEW_CELL_ACTIVATABLE);
  if (column == ReviewModel::Status) return new wxDataViewIconTextRenderer;
  auto* const renderer = new wxDataViewTextRenderer;
  if (column == ReviewModel::NewName) renderer->EnableMarkup();
  return renderer;
}

}  // namespace

ReviewTree::ReviewTree(wxWindow* parent, const ReviewSheet& sheet, Actions actions)
    : wxPanel(parent, wxID_ANY, wxDefaultPosition, scaled(*parent, wxSize(200, 100)), wxTAB_TRAVERSAL | wxBORDER_NONE,
              "review_tree"),
      actions_(std::move(actions)),
      control_(new wxDataViewCtrl(this, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxDV_MULTIPLE | wxCLIP_SIBLINGS)),
      model_(new ReviewModel(sheet, icons::rows(*parent))),
      editor_(new CellEditor(this, *control_)),
      follow_(this) {
  model_->on_tick = actions_.tick;
  control_->AssociateModel(model_.get());
  add_columns();
  set_spoken_name(*control_, "Files to Review");
  auto* const sizer = new wxBoxSizer(wxVERTICAL);
  sizer->Add(control_, wxSizerFlags(1).Expand());
  SetSizer(sizer);
  Bind(wxEVT_SIZE, [this](wxSizeEvent& event) {
    event.Skip();
    lay_out();
  });
  Bind(wxEVT_CHAR_HOOK, &ReviewTree::on_key, this);
  Bind(wxEVT_TIMER, [this](wxTimerEvent&) {
    if (editor_->is_open()) return editor_->move(area_of_editor());
    follow_.Stop();
    on_edited();
  });
  control_->Bind(wxEVT_CONTEXT_MENU, &ReviewTree::on_context_menu, this);
  control_->Bind(wxEVT_DATAVIEW_ITEM_CONTEXT_MENU, [this](const wxDataViewEvent& event) {
    actions_.open_menu(ScreenToClient(control_->ClientToScreen(event.GetPosition())));
  });
  control_->Bind(wxEVT_DATAVIEW_ITEM_ACTIVATED, &ReviewTree::on_activated, this);
  control_->Bind(wxEVT_DATAVIEW_ITEM_EXPANDED,
                 [this](const wxDataViewEvent& event) { closed_.erase(event.GetItem().GetID()); });
  control_->Bind(wxEVT_DATAVIEW_ITEM_COLLAPSED, [this](const wxDataViewEvent& event) {
    if (!is_changing_) closed_.insert(event.GetItem().GetID());
  });
  control_->Bind(wxEVT_DATAVIEW_SELECTION_CHANGED, [this](const wxDataViewEvent&) {
    if (is_changing_) return;
    chosen_ = selected_rows();
    actions_.on_select();
  });
  control_->GetMainWindow()->Bind(wxEVT_MOTION, &ReviewTree::on_motion, this);
}

void ReviewTree::add_columns() {
  for (unsigned i = 0; i < columns.size(); ++i) {
    wxDataViewRenderer* const renderer = renderer_of(i);
    if (columns[i].cut != wxELLIPSIZE_NONE) renderer->EnableEllipsize(columns[i].cut);
    // With a width of their own at once: else every row would be measured.
    const int width = scaled(*this, std::max(columns[i].width, 100));
    control_->AppendColumn(new wxDataViewColumn(columns[i].title, renderer, i, width,
                                                i == ReviewModel::Tick ? wxALIGN_CENTRE : wxALIGN_LEFT,
                                                i == ReviewModel::Tick ? 0 : wxDATAVIEW_COL_RESIZABLE));
  }
  control_->SetExpanderColumn(control_->GetColumn(ReviewModel::OldName));
}

void ReviewTree::lay_out() {
  if (columns_are_set_) return;  // from now on they are the user's
  const auto shown = [this](unsigned column) { return !control_->GetColumn(column)->IsHidden(); };
  int names = GetClientSize().x - wxSystemSettings::GetMetric(wxSYS_VSCROLL_X, this) - scaled(*this, 4);
  for (unsigned i = 0; i < columns.size(); ++i) names -= shown(i) ? scaled(*this, columns[i].width) : 0;
  if (names < scaled(*this, 100)) return;
  columns_are_set_ = true;
  for (unsigned i = 0; i < columns.size(); ++i) {
    control_->GetColumn(i)->SetWidth(columns[i].width > 0 ? scaled(*this, columns[i].width) : names / 2);
  }
}

// What is shown.

void ReviewTree::show(ReviewSheet::Filter filter) {
  const Restored<bool> changing(is_changing_, true);
  const std::size_t known = model_->groups().size();
  const wxDataViewItem top = known > 0 ? control_->GetTopItem() : wxDataViewItem();
  if (model_->update(filter)) {
    const wxDataViewItemArray groups = model_->groups();
    for (std::size_t i = known; i < groups.size(); ++i) control_->ExpandChildren(groups[i]);
  } else {
    rebuild(top);
  }
  show_folders(model_->moves_files());
  actions_.on_select();
}

/// Where every file stays in its folder, the names have the room.
void ReviewTree::show_folders(bool on) {
  wxDataViewColumn* const folders = control_->GetColumn(ReviewModel::Folder);
  if (folders->IsHidden() != on) return;
  folders->SetHidden(!on);
  columns_are_set_ = false;
  lay_out();
}

/// The control has forgotten what was open, what was selected and how far it was scrolled.
void ReviewTree::rebuild(const wxDataViewItem& top) {
  const wxDataViewItemArray groups = model_->groups();
  if (groups.empty()) return;
  for (const wxDataViewItem& group : groups) {
    if (!closed_.contains(group.GetID())) control_->ExpandChildren(group);
  }
  const auto is_there = [&](const wxDataViewItem& row) {
    const int item = ReviewModel::item_of(row);
    return item > 0 ? model_->row_of(item).IsOk() : std::ranges::find(groups, row) != groups.end();
  };
  for (void* const closed : closed_) {
    if (const wxDataViewItem row(closed); is_there(row)) control_->Collapse(row);
  }
  wxDataViewItemArray rows;
  for (const wxDataViewItem& each : chosen_) {
    const wxDataViewItem row = ReviewModel::is_companion(each) ? model_->GetParent(each) : each;
    if (is_there(row)) rows.push_back(row);
  }
  if (rows.empty()) rows.push_back(groups.front());  // where the keyboard begins
  control_->SetCurrentItem(rows.front());
  control_->SetSelections(rows);
  control_->EnsureVisible(groups.back());
  control_->EnsureVisible(top.IsOk() && is_there(top) ? top : groups.front());
}

wxDataViewItemArray ReviewTree::selected_rows() const {
  wxDataViewItemArray rows;
  control_->GetSelections(rows);
  return rows;
}

std::vector<int> ReviewTree::selection() const {
  std::set<int> items;
  for (const wxDataViewItem& row : selected_rows()) {
    for (const int item : ReviewModel::files_of(row)) items.insert(item);
  }
  return {items.begin(), items.end()};
}

int ReviewTree::selected_file() const {
  const wxDataViewItemArray rows = selected_rows();
  return rows.size() == 1 ? ReviewModel::item_of(rows.front()) : 0;
}

void ReviewTree::select(const std::vector<int>& items) {
  wxDataViewItemArray rows;
  for (const int item : items) {
    if (const wxDataViewItem row = model_->row_of(item); row.IsOk()) rows.push_back(row);
  }
  if (!rows.empty()) choose(rows);
}

void ReviewTree::choose(const wxDataViewItemArray& rows) {
  control_->EnsureVisible(rows.front());
  control_->SetCurrentItem(rows.front());
  control_->SetSelections(rows);
  chosen_ = rows;
  actions_.on_select();  // some systems tell only what the user has selected
}

// Editing.

wxRect ReviewTree::area_of_editor() const {
  const wxDataViewItem row = model_->row_of(edited_item_);
  if (!row.IsOk()) return {};
  wxRect area = control_->GetItemRect(row, control_->GetColumn(edited_column_));
  // Names are long, and what stands beside them is not needed now.
  if (edited_column_ == ReviewModel::NewName) area.SetRight(GetClientSize().x - scaled(*this, 4));
  return area;
}

void ReviewTree::edit(int item, ReviewModel::Column column, const std::string& text,
                      std::function<bool(const std::string&)> accept) {
  const wxDataViewItem row = model_->row_of(item);
  if (!row.IsOk()) return;
  control_->EnsureVisible(row, control_->GetColumn(column));
  edited_item_ = item;
  edited_column_ = column;
  editor_->open(area_of_editor(), text, column == ReviewModel::NewName ? "New Name" : "Season and Episode",
                std::move(accept));
  follow_.Start(follow_ms);
}

// What the user does.

void ReviewTree::on_activated(const wxDataViewEvent& event) {
  const wxDataViewItem row = event.GetItem();
  if (const int item = ReviewModel::item_of(row); item > 0) {
    const wxDataViewColumn* const column = event.GetDataViewColumn();
    const bool is_of_numbers = column != nullptr && column->GetModelColumn() == ReviewModel::Numbers;
    return actions_.edit(item, is_of_numbers ? ReviewModel::Numbers : ReviewModel::NewName);
  }
  control_->IsExpanded(row) ? control_->Collapse(row) : control_->Expand(row);
}

void ReviewTree::on_context_menu(const wxContextMenuEvent& event) {
  if (event.GetPosition() != wxDefaultPosition) return;  // a click comes by another way, with its row
  const wxDataViewItemArray rows = selected_rows();
  if (rows.empty()) return;
  const wxRect area = control_->GetItemRect(rows.front(), control_->GetColumn(ReviewModel::OldName));
  actions_.open_menu(area.IsEmpty() ? wxPoint(0, 0) : wxPoint(area.x + area.height, area.GetBottom()));
}

void ReviewTree::on_key(wxKeyEvent& event) {
  if (editor_->is_open() && editor_->IsDescendant(FindFocus())) return event.Skip();
  const int key = event.GetKeyCode(), modifiers = event.GetModifiers();
  const int file = selected_file();
  if (key == WXK_F2 && file > 0) {
    return actions_.edit(file, modifiers == wxMOD_SHIFT ? ReviewModel::Numbers : ReviewModel::NewName);
  }
  if ((key == WXK_LEFT || key == WXK_RIGHT) && modifiers == wxMOD_NONE) return open_group(key == WXK_RIGHT);
  if (key == 'A' && modifiers == wxMOD_CONTROL) return select_all();
  if (key == WXK_SPACE && modifiers == wxMOD_NONE) return tick_selected();
  // Else the toolkit searches, for what is no text in any column that it knows.
  if (modifiers == wxMOD_NONE && key > WXK_SPACE && key < WXK_DELETE && wxIsalnum(key)) return;
  event.Skip();
}

/// The groups stand for all that is in them.
void ReviewTree::select_all() {
  control_->SetSelections(model_->groups());
  chosen_ = selected_rows();
  actions_.on_select();
}

/// Opens or closes the row that the keyboard is in, or goes to the one above it; systems differ in the keys for that.
void ReviewTree::open_group(bool on) {
  const wxDataViewItem row = control_->GetCurrentItem();
  if (!row.IsOk()) return;
  const bool is_open = model_->IsContainer(row) && control_->IsExpanded(row);
  if (on) return control_->Expand(row);
  if (is_open || ReviewModel::item_of(row) == 0) return control_->Collapse(row);
  wxDataViewItemArray group;
  group.push_back(model_->GetParent(row));
  choose(group);
}

void ReviewTree::tick_selected() {
  const std::vector<int> items = selection();
  wxVariant is_ticked;
  const auto is_open = [&](int item) {
    const wxDataViewItem row = model_->row_of(item);
    if (!model_->IsEnabled(row, ReviewModel::Tick)) return false;
    model_->GetValue(is_ticked, row, ReviewModel::Tick);
    return !is_ticked.GetBool();
  };
  actions_.tick(items, std::ranges::any_of(items, is_open));
}

void ReviewTree::on_motion(wxMouseEvent& event) {
  event.Skip();
  wxDataViewItem row;
  wxDataViewColumn* column = nullptr;
  // The event's own place leaves out the header on some systems.
  control_->HitTest(ScreenToClient(wxGetMousePosition()), row, column);
  const int item = ReviewModel::item_of(row);
  if (std::exchange(tipped_, item) == item) return;
  const std::string tip = item > 0 ? actions_.tip(item) : std::string();
  control_->GetMainWindow()->SetToolTip(to_wx(tip));
}

}  // namespace quorvel::ui
