#include "shell/past_sheet.h"

#include <algorithm>
#include <limits>

#include "naming/file_names.h"
#include "platform/native.h"
#include "shell/past_text.h"

namespace quorvel {
namespace {

/// Of a word of the program itself.
std::string capitalised(std::string text) {
  text.front() = static_cast<char>(text.front() - 'a' + 'A');
  return text;
}

}  // namespace

void PastSheet::read() {
  passes_ = session_.history.passes(std::numeric_limits<int>::max());
  collect();
}

void PastSheet::collect() {
  files_.clear();
  for (const PastPass& pass : passes_) {
    if (chosen_.contains(pass.id)) files_.insert(files_.end(), pass.operations.begin(), pass.operations.end());
  }
}

std::vector<ListRow> PastSheet::passes() const {
  std::vector<ListRow> rows;
  for (const PastPass& pass : passes_) {
    rows.push_back(
        {"", {time_text(session_.ports.clock, pass.time), (pass.is_undoing ? "Undoing: " : "") + counts_text(pass)}});
  }
  return rows;
}

void PastSheet::choose(const std::vector<int>& passes) {
  chosen_.clear();
  for (const int row : passes) chosen_.insert(passes_.at(static_cast<std::size_t>(row) - 1).id);
  collect();
}

std::vector<int> PastSheet::chosen() const {
  std::vector<int> rows;
  for (std::size_t i = 0; i < passes_.size(); ++i) {
    if (chosen_.contains(passes_[i].id)) rows.push_back(static_cast<int>(i) + 1);
  }
  return rows;
}

std::string PastSheet::outcome(const PastOperation& operation) const {
  const std::string refusal = undoing_.refusal(operation);
  if (!refusal.empty()) return "Not undone: " + refusal;
  const std::string word = capitalised(outcome_word(operation));
  return operation.reason.empty() ? word : word + ": " + operation.reason;
}

std::vector<ListRow> PastSheet::files() const {
  std::vector<ListRow> rows;
  for (const PastOperation& each : files_) {
    const std::string deed =
        each.outcome == PastOperation::Done ? deed_words(each.deed).participle : deed_words(each.deed).infinitive;
    const std::string new_name = each.new_path.empty() ? std::string(native::trash_name) : getfname(each.new_path);
    rows.push_back({"", {capitalised(deed), getfname(each.old_path), new_name, outcome(each)}});
  }
  return rows;
}

std::string PastSheet::details(const std::vector<int>& files) const {
  if (files.size() == 1) {
    const PastOperation& only = file(files.front());
    return "From: " + only.old_path +
           "\nTo: " + (only.new_path.empty() ? std::string(native::trash_name) : only.new_path) + "\n" + outcome(only);
  }
  const std::size_t count = files.empty() ? files_.size() : files.size();
  const int can = files.empty() ? undoable() : undoable(files);
  return std::to_string(count) + (count == 1 ? " file, " : " files, ") + std::to_string(can) + " can be undone";
}

std::string PastSheet::folder_of(const std::vector<int>& files) const {
  std::set<std::string> folders;
  for (const int row : files) {
    const PastOperation& each = file(row);
    folders.insert(getpath(each.is_undoable() && !each.new_path.empty() ? each.new_path : each.old_path, 0));
  }
  return folders.size() == 1 ? *folders.begin() : "";
}

int PastSheet::undoable(const std::vector<int>& files) const {
  return static_cast<int>(std::ranges::count_if(files, [this](int row) { return file(row).is_undoable(); }));
}

int PastSheet::undoable() const {
  return static_cast<int>(std::ranges::count_if(files_, &PastOperation::is_undoable));
}

PastUndoing::Result PastSheet::undo(const std::vector<int>& files, const GoesOn& goes_on) {
  std::vector<PastOperation> operations;
  operations.reserve(files.size());
  for (const int row : files) operations.push_back(file(row));
  return undo(operations, goes_on);
}

PastUndoing::Result PastSheet::undo_all(const GoesOn& goes_on) {
  return undo(files_, goes_on);
}

PastUndoing::Result PastSheet::undo(const std::vector<PastOperation>& operations, const GoesOn& goes_on) {
  const PastUndoing::Result result = undoing_.undo(operations, goes_on);
  read();
  return result;
}

}  // namespace quorvel
