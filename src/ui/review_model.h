#pragma once

#include <wx/bmpbndl.h>
#include <wx/dataview.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "review/sheet.h"

namespace quorvel::ui {

/// The review's sheet as a tree: a row for each show, below it one for each of its files, and below that what goes
/// along.
class ReviewModel : public wxDataViewModel {
 public:
  enum Column : std::uint8_t { Tick, OldName, NewName, Numbers, Folder, Status };

  /// `icons` are those of the queue list's rows.
  ReviewModel(const ReviewSheet& sheet, const wxVector<wxBitmapBundle>& icons) : sheet_(sheet), icons_(icons) {}

  /// Called when the user ticks or clears the box of some items.
  std::function<void(const std::vector<int>& items, bool on)> on_tick = [](const std::vector<int>&, bool) {};

  /// Shows what the sheet has by now. False when the rows were all made anew, for what looks at them to find its place
  /// again.
  bool update(ReviewSheet::Filter filter);

  /// Whether any of the files that are shown would go to another folder.
  bool moves_files() const;

  // Rows.

  wxDataViewItemArray groups() const { return items_of(shown_.children); }
  /// Not ok while the item is not shown.
  wxDataViewItem row_of(int item) const;
  /// 0 for a group's row; for that of a companion its file's.
  static int item_of(const wxDataViewItem& row) { return row.IsOk() ? node_of(row).item : 0; }
  static bool is_companion(const wxDataViewItem& row) { return row.IsOk() && node_of(row).companion >= 0; }
  /// The file's own, or those below the group; those that are shown.
  static std::vector<int> files_of(const wxDataViewItem& row);

  // What the control asks for.

  unsigned GetColumnCount() const override { return Status + 1; }
  wxString GetColumnType(unsigned column) const override;
  void GetValue(wxVariant& value, const wxDataViewItem& row, unsigned column) const override;
  bool SetValue(const wxVariant& value, const wxDataViewItem& row, unsigned column) override;
  bool GetAttr(const wxDataViewItem& row, unsigned column, wxDataViewItemAttr& attributes) const override;
  bool IsEnabled(const wxDataViewItem& row, unsigned column) const override;
  bool HasContainerColumns(const wxDataViewItem&) const override { return true; }
  bool HasValue(const wxDataViewItem& row, unsigned column) const override;
  bool HasDefaultCompare() const override { return false; }
  wxDataViewItem GetParent(const wxDataViewItem& row) const override;
  bool IsContainer(const wxDataViewItem& row) const override {
    return item_of(row) == 0 || !node_of(row).children.empty();
  }
  unsigned GetChildren(const wxDataViewItem& row, wxDataViewItemArray& children) const override;

 private:
  /// A row. They are kept for good, for the control may still ask for one that is gone.
  struct Node {
    int item = 0;
    int companion = -1;  // which of the item's, for that one's row
    Node* parent = nullptr;
    std::vector<Node*> children;  // that are shown
    std::string read_as, found;   // of a group
    std::string looks;            // what was last told to the control
  };
  using Nodes = std::vector<Node*>;

  static Node& node_of(const wxDataViewItem& row) { return *static_cast<Node*>(row.GetID()); }
  static wxDataViewItem row_of(Node* node) { return wxDataViewItem(node); }
  static wxDataViewItemArray items_of(const Nodes& nodes);

  using Tree = std::vector<std::pair<Node*, Nodes>>;
  Tree wanted(ReviewSheet::Filter filter);
  Nodes companions_of(Node& file);
  void show(Node& file, Node& group);
  bool extends(const Tree& tree) const;
  void append(const Tree& tree);
  void replace(const Tree& tree);
  void tell_changes();
  std::string looks_of(const Node& node) const;
  std::vector<int> tickable(const Node& node) const;
  int ticked(const std::vector<int>& items) const;
  wxString group_text(const Node& node, unsigned column) const;
  wxString text(int item, unsigned column) const;
  wxString companion_text(const Node& node, unsigned column) const;
  const wxBitmapBundle& icon(int item) const;

  const ReviewSheet& sheet_;
  const wxVector<wxBitmapBundle> icons_;
  std::map<std::string, Node> group_nodes_;
  std::map<int, Node> file_nodes_;
  std::map<std::pair<int, int>, Node> companion_nodes_;  // by file and number
  Node shown_;                                           // the groups' parent, which is no row
};

}  // namespace quorvel::ui
