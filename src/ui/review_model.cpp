#include "ui/review_model.h"

#include <algorithm>

#include "naming/file_names.h"
#include "platform/user_interface.h"
#include "review/changes.h"
#include "ui/text.h"

namespace quorvel::ui {
namespace {

wxString escaped(wxString text) {
  text.Replace("&", "&amp;");
  text.Replace("<", "&lt;");
  text.Replace(">", "&gt;");
  return text;
}

/// What the old name lacks is bold, which is seen in every theme.
wxString marked_changes(const std::string& old_name, const std::string& new_name) {
  wxString markup;
  for (const NamePart& part : changes(old_name, new_name)) {
    const wxString text = escaped(to_wx(part.text));
    markup += part.is_new ? "<b>" + text + "</b>" : text;
  }
  return markup;
}

wxString counted(std::size_t count) {
  return std::to_string(count) + (count == 1 ? " file" : " files");
}

}  // namespace

// What is shown.

bool ReviewModel::update(ReviewSheet::Filter filter) {
  const Tree tree = wanted(filter);
  const bool goes_on = extends(tree);
  goes_on ? append(tree) : replace(tree);
  if (goes_on) tell_changes();
  return goes_on;
}

ReviewModel::Tree ReviewModel::wanted(ReviewSheet::Filter filter) {
  Tree tree;
  for (const ReviewSheet::Group& group : sheet_.groups()) {
    Nodes files;
    for (const int item : group.items) {
      if (!sheet_.shows(item, filter)) continue;
      Node& file = file_nodes_[item];
      file.item = item;
      files.push_back(&file);
    }
    if (files.empty()) continue;
    Node& node = group_nodes_[group.key];
    node.read_as = group.read_as;
    node.found = group.found;
    tree.emplace_back(&node, std::move(files));
  }
  return tree;
}

ReviewModel::Nodes ReviewModel::companions_of(Node& file) {
  Nodes nodes;
  const int count = static_cast<int>(sheet_.companions(file.item).size());
  for (int i = 0; i < count; ++i) {
    Node& node = companion_nodes_[{file.item, i}];
    node.item = file.item;
    node.companion = i;
    node.parent = &file;
    nodes.push_back(&node);
  }
  return nodes;
}

void ReviewModel::show(Node& file, Node& group) {
  file.parent = &group;
  file.looks = looks_of(file);
  file.children = companions_of(file);
  for (Node* const companion : file.children) companion->looks = looks_of(*companion);
}

/// Whether what is shown is a beginning of it, in each group and as a whole.
bool ReviewModel::extends(const Tree& tree) const {
  if (shown_.children.empty() || shown_.children.size() > tree.size()) return false;
  for (std::size_t i = 0; i < shown_.children.size(); ++i) {
    const auto& [group, files] = tree[i];
    const Nodes& known = group->children;
    if (shown_.children[i] != group || known.size() > files.size()) return false;
    if (!std::equal(known.begin(), known.end(), files.begin())) return false;
    const auto is_as_before = [this](const Node* file) {
      return file->children.size() == sheet_.companions(file->item).size();
    };
    if (!std::ranges::all_of(known, is_as_before)) return false;
  }
  return true;
}

void ReviewModel::append(const Tree& tree) {
  for (std::size_t i = 0; i < tree.size(); ++i) {
    const auto& [group, files] = tree[i];
    if (i >= shown_.children.size()) {
      group->children.clear();
      shown_.children.push_back(group);
      ItemAdded(wxDataViewItem(), row_of(group));
    }
    for (std::size_t at = group->children.size(); at < files.size(); ++at) {
      show(*files[at], *group);
      group->children.push_back(files[at]);
      ItemAdded(row_of(group), row_of(files[at]));
      if (!files[at]->children.empty()) ItemsAdded(row_of(files[at]), items_of(files[at]->children));
    }
  }
}

void ReviewModel::replace(const Tree& tree) {
  for (Node* const group : shown_.children) group->children.clear();
  shown_.children.clear();
  for (const auto& [group, files] : tree) {
    shown_.children.push_back(group);
    group->children = files;
    for (Node* const file : files) show(*file, *group);
    group->looks = looks_of(*group);
  }
  Cleared();
}

void ReviewModel::tell_changes() {
  wxDataViewItemArray changed;
  const auto look_at = [&](Node* node) {
    std::string looks = looks_of(*node);
    if (looks == node->looks) return;
    node->looks = std::move(looks);
    changed.push_back(row_of(node));
  };
  for (Node* const group : shown_.children) {
    look_at(group);
    for (Node* const file : group->children) {
      look_at(file);
      for (Node* const companion : file->children) look_at(companion);
    }
  }
  if (!changed.empty()) ItemsChanged(changed);
}

std::string ReviewModel::looks_of(const Node& node) const {
  constexpr char separator = '\n';
  if (node.item == 0) {
    const std::vector<int> items = tickable(node);
    return node.read_as + separator + node.found + separator + std::to_string(ticked(items)) + separator +
           std::to_string(items.size());
  }
  if (!sheet_.holds(node.item)) return {};
  if (node.companion >= 0)
    return companion_text(node, NewName).utf8_string() + companion_text(node, Folder).utf8_string();
  return sheet_.new_name(node.item) + separator + sheet_.folder(node.item) + separator + sheet_.numbers(node.item) +
         separator + sheet_.mark_text(node.item) + (sheet_.is_ticked(node.item) ? "x" : "o");
}

bool ReviewModel::moves_files() const {
  const auto moves = [this](const Node* file) { return sheet_.holds(file->item) && sheet_.moves(file->item); };
  return std::ranges::any_of(shown_.children,
                             [&](const Node* group) { return std::ranges::any_of(group->children, moves); });
}

// Rows.

wxDataViewItemArray ReviewModel::items_of(const Nodes& nodes) {
  wxDataViewItemArray items;
  for (Node* const node : nodes) items.push_back(row_of(node));
  return items;
}

wxDataViewItem ReviewModel::row_of(int item) const {
  const auto at = file_nodes_.find(item);
  if (at == file_nodes_.end() || at->second.parent == nullptr) return {};
  const Nodes& shown = at->second.parent->children;
  const auto found = std::ranges::find(shown, &at->second);
  return found == shown.end() ? wxDataViewItem() : row_of(*found);
}

std::vector<int> ReviewModel::files_of(const wxDataViewItem& row) {
  if (const int item = item_of(row); item > 0) return {item};
  std::vector<int> items;
  for (const Node* const file : node_of(row).children) items.push_back(file->item);
  return items;
}

std::vector<int> ReviewModel::tickable(const Node& node) const {
  std::vector<int> items;
  for (const Node* const file : node.children) {
    if (sheet_.holds(file->item) && sheet_.may_tick(file->item)) items.push_back(file->item);
  }
  return items;
}

int ReviewModel::ticked(const std::vector<int>& items) const {
  return static_cast<int>(std::ranges::count_if(items, [this](int item) { return sheet_.is_ticked(item); }));
}

// What the control asks for.

wxString ReviewModel::GetColumnType(unsigned column) const {
  return column == Tick ? "bool" : column == Status ? "wxDataViewIconText" : "string";
}

void ReviewModel::GetValue(wxVariant& value, const wxDataViewItem& row, unsigned column) const {
  const Node& node = node_of(row);
  const bool is_there = node.item == 0 || sheet_.holds(node.item);
  if (column == Tick) {
    const std::vector<int> items = node.item == 0 ? tickable(node) : std::vector<int>{};
    value = node.item == 0 ? !items.empty() && ticked(items) == static_cast<int>(items.size())
                           : is_there && sheet_.is_ticked(node.item);
    return;
  }
  const wxString cell = node.item == 0        ? group_text(node, column)
                        : !is_there           ? wxString()
                        : node.companion >= 0 ? companion_text(node, column)
                                              : text(node.item, column);
  if (column != Status) {
    value = cell;
    return;
  }
  wxDataViewIconText marked(cell);
  if (node.item > 0 && node.companion < 0 && is_there) marked.SetBitmapBundle(icon(node.item));
  value << marked;
}

bool ReviewModel::SetValue(const wxVariant& value, const wxDataViewItem& row, unsigned column) {
  if (column != Tick) return false;
  on_tick(files_of(row), value.GetBool());
  return true;
}

wxString ReviewModel::group_text(const Node& node, unsigned column) const {
  if (column == OldName) return node.read_as.empty() ? wxString("No show in the name") : to_wx(node.read_as);
  if (column == NewName) {
    return escaped(node.read_as.empty() || !node.found.empty() ? to_wx(node.found) : wxString("No show found"));
  }
  if (column != Status) return {};
  const std::vector<int> items = tickable(node);
  const int count = ticked(items);
  return count == static_cast<int>(node.children.size())
             ? counted(node.children.size())
             : std::to_string(count) + " of " + counted(node.children.size());
}

wxString ReviewModel::text(int item, unsigned column) const {
  switch (column) {
    case OldName:
      return to_wx(sheet_.old_name(item));
    case NewName:
      return marked_changes(sheet_.old_name(item), sheet_.new_name(item));
    case Numbers:
      return to_wx(sheet_.numbers(item));
    case Folder:
      return to_wx(sheet_.folder(item));
    default:
      return to_wx(sheet_.mark_text(item));
  }
}

wxString ReviewModel::companion_text(const Node& node, unsigned column) const {
  const std::vector<FileJob>& companions = sheet_.companions(node.item);
  if (node.companion >= static_cast<int>(companions.size())) return {};
  const FileJob& job = companions[static_cast<std::size_t>(node.companion)];
  switch (column) {
    case OldName:
      return to_wx(job.filename);
    case NewName:
      return marked_changes(job.filename, job.new_name);
    case Folder:
      return to_wx(job.dest_path);
    default:
      return {};
  }
}

const wxBitmapBundle& ReviewModel::icon(int item) const {
  const Need need = need_of(sheet_.mark(item));
  const RowUpdate::Icon icon = need == Need::Nothing    ? RowUpdate::DoneIcon
                               : need == Need::Decision ? RowUpdate::LookIcon
                                                        : RowUpdate::FailedIcon;
  return icons_[static_cast<std::size_t>(icon - RowUpdate::DoneIcon)];
}

bool ReviewModel::GetAttr(const wxDataViewItem& row, unsigned column, wxDataViewItemAttr& attributes) const {
  if (item_of(row) > 0 || column == NewName) return false;
  attributes.SetBold(true);
  return true;
}

/// What goes along has no box of its own.
bool ReviewModel::HasValue(const wxDataViewItem& row, unsigned column) const {
  return !is_companion(row) || column != Tick;
}

bool ReviewModel::IsEnabled(const wxDataViewItem& row, unsigned column) const {
  if (column != Tick) return true;
  const Node& node = node_of(row);
  return node.item == 0 ? !tickable(node).empty()
                        : node.companion < 0 && sheet_.holds(node.item) && sheet_.may_tick(node.item);
}

wxDataViewItem ReviewModel::GetParent(const wxDataViewItem& row) const {
  return row.IsOk() && node_of(row).parent != nullptr ? row_of(node_of(row).parent) : wxDataViewItem();
}

unsigned ReviewModel::GetChildren(const wxDataViewItem& row, wxDataViewItemArray& children) const {
  children = items_of(row.IsOk() ? node_of(row).children : shown_.children);
  return static_cast<unsigned>(children.size());
}

}  // namespace quorvel::ui
