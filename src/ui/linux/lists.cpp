#include "ui/lists.h"

#include <wx/dataview.h>

// After the toolkit's, whose names it would otherwise take.
#include <gtk/gtk.h>

#include "text/case.h"
#include "ui/text.h"

namespace quorvel::ui {
namespace {

/// Hands the list's rows to the control, whose own rows count from 0.
class Rows : public wxDataViewVirtualListModel {
 public:
  Rows(const RowList& list, const wxVector<wxBitmapBundle>& icons) : list_(list), icons_(icons) {}

  bool has_icon(unsigned column) const { return column == 0 && !icons_.empty(); }

 private:
  unsigned GetColumnCount() const override { return static_cast<unsigned>(list_.titles().size()); }
  wxString GetColumnType(unsigned column) const override { return has_icon(column) ? "wxDataViewIconText" : "string"; }

  void GetValueByRow(wxVariant& value, unsigned row, unsigned column) const override {
    const int item = static_cast<int>(row) + 1;
    const wxString text = list_.cell(item, static_cast<int>(column));
    if (has_icon(column)) {
      value << wxDataViewIconText(text, icons_[static_cast<std::size_t>(list_.icon(item))]);
    } else {
      value = text;
    }
  }
  bool SetValueByRow(const wxVariant&, unsigned, unsigned) override { return false; }

  const RowList& list_;
  const wxVector<wxBitmapBundle> icons_;
};

class TreePath {
 public:
  explicit TreePath(int row) : path_(gtk_tree_path_new_from_indices(row - 1, -1)) {}
  ~TreePath() { gtk_tree_path_free(path_); }
  TreePath(const TreePath&) = delete;
  TreePath& operator=(const TreePath&) = delete;
  operator GtkTreePath*() const { return path_; }

 private:
  GtkTreePath* const path_;
};

/// What typing looks for: the first row that begins so. FALSE where it is this one.
gboolean is_other(GtkTreeModel* model, gint, const gchar* typed, GtkTreeIter* iter, gpointer list) {
  GtkTreePath* const path = gtk_tree_model_get_path(model, iter);
  const int row = gtk_tree_path_get_indices(path)[0] + 1;
  gtk_tree_path_free(path);
  return !lower_case(from_wx(static_cast<RowList*>(list)->cell(row, 0))).starts_with(lower_case(typed));
}

gboolean show_tip(GtkWidget* tree, gint x, gint y, gboolean by_key, GtkTooltip* tip, gpointer list) {
  GtkTreePath* path = nullptr;
  if (!gtk_tree_view_get_tooltip_context(GTK_TREE_VIEW(tree), &x, &y, by_key, nullptr, &path, nullptr)) return FALSE;
  const std::string text = static_cast<RowList*>(list)->tip(gtk_tree_path_get_indices(path)[0] + 1);
  gtk_tooltip_set_text(tip, to_wx(text).utf8_str());
  gtk_tree_view_set_tooltip_row(GTK_TREE_VIEW(tree), tip, path);
  gtk_tree_path_free(path);
  return text.empty() ? FALSE : TRUE;
}

/// The toolkit would select the first row whenever it gives a list the keyboard, and the next key could remove it.
gboolean may_select(GtkTreeSelection*, GtkTreeModel*, GtkTreePath*, gboolean is_selected, gpointer gets_keyboard) {
  return is_selected != FALSE || !*static_cast<bool*>(gets_keyboard);
}
void set(GtkWidget*, gpointer flag) {
  *static_cast<bool*>(flag) = true;
}
void clear(GtkWidget*, gpointer flag) {
  *static_cast<bool*>(flag) = false;
}

}  // namespace

/// The toolkit draws its other list by itself, so that nothing but the eye can see what is in it.
class RowList::Control : public wxDataViewCtrl {
 public:
  Control(RowList& owner, const Looks& looks)
      : wxDataViewCtrl(&owner, wxID_ANY, wxDefaultPosition, owner.GetSize(),
                       looks.several ? wxDV_MULTIPLE : wxDV_SINGLE),
        owner_(owner),
        rows_(new Rows(owner, looks.icons)) {
    AssociateModel(rows_.get());
    for (unsigned i = 0; i < looks.titles.size(); ++i) {
      wxDataViewRenderer* const renderer =
          rows_->has_icon(i) ? new wxDataViewIconTextRenderer() : new wxDataViewTextRenderer();
      renderer->EnableEllipsize(wxELLIPSIZE_END);
      // With a width of their own at once: else every row would be measured.
      AppendColumn(new wxDataViewColumn(looks.titles[i], renderer, i, wxDVC_DEFAULT_WIDTH, wxALIGN_LEFT,
                                        wxDATAVIEW_COL_RESIZABLE));
    }
    gtk_tree_selection_set_select_function(gtk_tree_view_get_selection(tree()), may_select, &gets_keyboard_, nullptr);
    g_signal_connect(tree(), "grab-focus", G_CALLBACK(set), &gets_keyboard_);
    g_signal_connect_after(tree(), "grab-focus", G_CALLBACK(clear), &gets_keyboard_);
    gtk_tree_view_set_search_column(tree(), 0);
    gtk_tree_view_set_search_equal_func(tree(), is_other, &owner, nullptr);
    gtk_widget_set_has_tooltip(GTK_WIDGET(tree()), TRUE);
    g_signal_connect(tree(), "query-tooltip", G_CALLBACK(show_tip), &owner);
    g_signal_connect_after(tree(), "size-allocate", G_CALLBACK(on_allocate), this);
    Bind(wxEVT_KEY_DOWN, [&owner](wxKeyEvent& event) {
      const int key = event.GetKeyCode();
      if (owner.selected() > 0 || (key != WXK_UP && key != WXK_DOWN)) return event.Skip();
      owner.select(1);  // the toolkit would go on from there
    });
    Bind(wxEVT_DATAVIEW_ITEM_ACTIVATED,
         [this, &owner](const wxDataViewEvent& event) { owner.on_activate(row_of(event.GetItem())); });
    Bind(wxEVT_DATAVIEW_SELECTION_CHANGED, [&owner](const wxDataViewEvent&) { owner.on_select(); });
    Bind(wxEVT_DATAVIEW_ITEM_CONTEXT_MENU, [this, &owner](const wxDataViewEvent& event) {
      wxContextMenuEvent menu(wxEVT_CONTEXT_MENU, owner.GetId(), ClientToScreen(event.GetPosition()));
      owner.ProcessWindowEvent(menu);
    });
  }

  GtkTreeView* tree() { return GTK_TREE_VIEW(GtkGetTreeView()); }
  Rows& rows() const { return *rows_; }
  /// 0 for none.
  int row_of(const wxDataViewItem& item) const { return item.IsOk() ? static_cast<int>(rows_->GetRow(item)) + 1 : 0; }
  wxDataViewItem item(int row) const { return rows_->GetItem(static_cast<unsigned>(row) - 1); }

 private:
  /// Only now does scrolling lead where it should.
  static void on_allocate(GtkWidget*, GtkAllocation* area, gpointer data) {
    auto& self = *static_cast<Control*>(data);
    if (std::exchange(self.height_, area->height) != area->height) self.CallAfter([&self] { self.owner_.on_room(); });
  }

  RowList& owner_;
  const wxObjectDataPtr<Rows> rows_;
  bool gets_keyboard_ = false;
  int height_ = 0;
};

wxWindow* RowList::make_control(const Looks& looks) {
  return control_ = new Control(*this, looks);
}

int RowList::count() const {
  return static_cast<int>(control_->rows().GetCount());
}

std::vector<int> RowList::selection() const {
  wxDataViewItemArray items;
  control_->GetSelections(items);
  std::vector<int> rows;
  for (const wxDataViewItem& item : items) rows.push_back(control_->row_of(item));
  return rows;
}

int RowList::selected() const {
  const std::vector<int> rows = selection();
  return rows.empty() ? 0 : rows.front();
}

wxRect RowList::area_of(int row) const {
  if (row < 1 || row > count() || gtk_widget_get_realized(control_->GtkGetTreeView()) == FALSE) return {};
  return control_->GetItemRect(control_->item(row));
}

void RowList::set_count(int count) {
  while (this->count() < count) control_->rows().RowAppended();
}

void RowList::reset(int count) {
  control_->rows().Reset(static_cast<unsigned>(count));
}

void RowList::repaint(int row) {
  control_->rows().RowChanged(static_cast<unsigned>(row) - 1);
}

void RowList::scroll_to(int row) {
  gtk_tree_view_scroll_to_cell(control_->tree(), TreePath(row), nullptr, FALSE, 0, 0);
}

void RowList::mark(int row) {
  // With the keyboard's place, which would scroll a row that is out of sight.
  if (area_of(row).IsEmpty()) {
    unmark();
    return mark_also(row);
  }
  gtk_tree_view_set_cursor(control_->tree(), TreePath(row), nullptr, FALSE);
}

void RowList::mark_also(int row) {
  control_->Select(control_->item(row));
}

void RowList::unmark() {
  control_->UnselectAll();
}

int RowList::top_row() const {
  return control_->row_of(control_->GetTopItem());
}

void RowList::set_widths(const std::vector<int>& widths) {
  for (unsigned i = 0; i < widths.size(); ++i) control_->GetColumn(i)->SetWidth(widths[i]);
}

}  // namespace quorvel::ui
