#include "fileops/past_undo.h"

#include <algorithm>
#include <functional>

#include "naming/file_names.h"
#include "rules/action.h"
#include "text/failure.h"

namespace quorvel {
namespace {

FileJob job_between(const std::string& from, const std::string& to, int action, const PastOperation& past) {
  return {from, getfname(from), getfname(to), getpath(to, 0), action, past.stamp, past.id};
}

FileJob job_of(const PastOperation& past) {
  const int action = past.deed == Deed::SetAside ? int{Rename} : static_cast<int>(past.deed);
  return job_between(past.old_path, past.new_path, action, past);
}

bool has_stamp(const std::optional<FileStamp>& now, const std::optional<FileStamp>& then) {
  return now && then && now->same_contents(*then);
}

std::string what_was_done(const PastOperation& operation) {
  switch (operation.deed) {
    case Deed::Moved:
      return operation.old_path + " was moved to " + operation.new_path;
    case Deed::Copied:
      return operation.old_path + " was copied to " + operation.new_path;
    case Deed::HardLinked:
    case Deed::SymbolicLinked:
      return operation.old_path + " was linked as " + operation.new_path;
    case Deed::Trashed:
    case Deed::Tidied:
      return operation.old_path + " was put into the " + std::string(native::trash_name);
    case Deed::Made:
      return operation.old_path + " was made again";
    default:
      return operation.old_path + " was renamed to " + operation.new_path;
  }
}

}  // namespace

std::vector<PastUndo::Outcome> PastUndo::undo(std::vector<PastOperation> operations,
                                              const std::function<bool()>& goes_on) {
  const History::Pass pass(history_);
  std::ranges::sort(operations, std::greater(), &PastOperation::id);
  std::erase_if(operations, [](const PastOperation& each) { return !each.is_undoable(); });
  std::vector<Outcome> outcomes;
  for (auto first = operations.begin(), end = first; first != operations.end(); first = end) {
    const auto is_other = [&](const PastOperation& each) {
      return each.group != first->group || each.pass != first->pass;
    };
    end = first->group == 0 ? first + 1 : std::find_if(first, operations.end(), is_other);
    if (goes_on && !goes_on()) break;
    for (auto other = first + 1; goes_on && other != end; ++other) goes_on();
    for (Outcome& outcome : undo_group({first, end})) {
      if (!outcome.trouble.empty()) log_.debug_log("Unable to undo: " + outcome.trouble, LogLevel::Normal);
      outcomes.push_back(std::move(outcome));
    }
  }
  return outcomes;
}

/// All are looked at before the first is touched. What was the companion of another file may be gone by now; any other
/// trouble holds up all of them.
std::vector<PastUndo::Outcome> PastUndo::undo_group(std::vector<PastOperation> group) {
  if (group.size() == 1) return {undo_one(group.front())};
  std::ranges::stable_sort(group, std::greater(), &PastOperation::leads);
  std::string trouble;
  for (const PastOperation& each : group) {
    if (!each.leads && !each.new_path.empty() && !files_.exists(each.new_path)) continue;
    if (trouble.empty()) trouble = trouble_of(each);
  }
  std::vector<Outcome> outcomes;
  History::Group as_one(history_);
  for (const PastOperation& each : group) {
    as_one.leads(each.leads);
    if (trouble.empty()) {
      outcomes.push_back(undo_one(each));
      if (each.leads) trouble = outcomes.back().trouble;
    } else {
      outcomes.push_back({.operation = each, .from = each.new_path, .to = each.old_path, .trouble = trouble});
    }
  }
  return outcomes;
}

std::string PastUndo::trouble_of(const PastOperation& operation) const {
  if (operation.new_path.empty()) return {};
  const bool is_there = files_.exists(operation.new_path) ||
                        (operation.deed == Deed::SymbolicLinked && files_.is_link(operation.new_path));
  if (!is_there) return operation.new_path + " is not there any more";
  if (is_link(operation.deed)) return jobs_.link_refusal(job_of(operation));
  if (operation.deed != Deed::Copied && files_.exists(operation.old_path)) {
    return operation.old_path + " is there already";
  }
  const std::optional<FileStamp> now = files_.stamp(operation.new_path);
  return operation.stamp && now && !has_stamp(now, operation.stamp)
             ? operation.new_path + " has been changed or replaced since"
             : "";
}

PastUndo::Outcome PastUndo::undo_one(const PastOperation& operation) {
  Outcome outcome{.operation = operation, .from = operation.new_path, .to = operation.old_path, .trouble = {}};
  try {
    FileJobResult result;
    if (operation.deed == Deed::Tidied || operation.deed == Deed::Made) {
      result = undo_folder(operation);
      outcome.from = operation.deed == Deed::Made ? operation.old_path : std::string(native::trash_name);
      outcome.to = operation.deed == Deed::Made ? "" : operation.old_path;
    } else if (operation.deed == Deed::Trashed) {
      if (operation.undoes == 0) {
        throw Failure(operation.old_path + " is in the " + std::string(native::trash_name) + ", to be taken out there");
      }
      const std::optional<PastOperation> copied = history_.operation(operation.undoes);
      if (!copied) throw Failure("it is not known any more what " + operation.old_path + " was made of");
      outcome.from = copied->old_path, outcome.to = copied->new_path;
      const std::optional<FileStamp> source = files_.stamp(outcome.from);
      if (!source || !operation.stamp ||
          (is_link(copied->deed) ? !source->same_file(*operation.stamp) : !source->may_be_copy_of(*operation.stamp))) {
        throw Failure(outcome.from + " is not what was " + (is_link(copied->deed) ? "linked" : "copied") + " any more");
      }
      if (files_.exists(outcome.to)) throw Failure(outcome.to + " is there already");
      result = jobs_.run(job_between(outcome.from, outcome.to, static_cast<int>(copied->deed), operation));
    } else {
      if (leaves_source(operation.deed)) outcome.to.clear();
      if (const std::string trouble = trouble_of(operation); !trouble.empty()) throw Failure(trouble);
      result = jobs_.undo(job_of(operation));
    }
    if (!result.done) throw Failure(outcome.from + ": " + result.error_text.value_or("the file was gone"));
    outcome.by = result.past_id;
    outcome.stamp = result.stamp;
  } catch (const Failure& failure) {
    outcome.trouble = failure.what();
  }
  return outcome;
}

FileJobResult PastUndo::undo_folder(const PastOperation& operation) {
  const std::string& folder = operation.old_path;
  if (operation.deed == Deed::Tidied) {
    FileJobResult result = jobs_.make_again(folder, operation.id);
    if (result.done && !operation.reason.empty()) {
      log_.debug_log(
          "What was in " + folder + " stays in the " + std::string(native::trash_name) + ". " + operation.reason,
          LogLevel::Normal);
    }
    return result;
  }
  bool is_empty = true;
  const bool is_read = files_.list(folder, [&](const FolderEntry&) { is_empty = false; });
  if (!is_read || !is_empty) throw Failure(folder + " is not empty");
  return jobs_.tidy(folder, {}, operation.id);
}

bool PastUndo::is_dead(const std::string& owner, const std::string& work_dir) {
  return owner.empty() || !files_.exists(work_dir + owner) || files_.hold(work_dir + owner) != nullptr;
}

void PastUndo::settle(const std::string& work_dir) {
  std::vector<std::pair<PastOperation, std::string>> cut_off = history_.under_way();
  std::erase_if(cut_off, [&](const auto& each) { return !is_dead(each.second, work_dir); });
  const auto is_under_way = [](const auto& each) { return each.first.outcome != PastOperation::Done; };
  const auto aside = std::stable_partition(cut_off.begin(), cut_off.end(), is_under_way);
  for (auto last = cut_off.begin(); last != aside; ++last) settle_one(last->first);
  for (auto each = aside; each != cut_off.end(); ++each) bring_back(each->first);
  for (auto last = cut_off.begin(); last != aside; ++last) settle_group(last->first);
}

/// Companions that have gone before a file which has not come after them are brought back.
void PastUndo::settle_group(const PastOperation& last) {
  const std::optional<PastPass> pass = last.group == 0 ? std::nullopt : history_.pass(last.pass);
  if (!pass || pass->is_undoing) return;
  std::vector<PastOperation> group = pass->operations;
  std::erase_if(group, [&](const PastOperation& each) { return each.group != last.group; });
  const auto is_or_may_be_done = [](const PastOperation& each) {
    return each.outcome == PastOperation::UnderWay || (each.leads && each.is_undoable());
  };
  if (std::ranges::any_of(group, is_or_may_be_done)) return;
  for (const Outcome& outcome : undo(group)) {
    if (!outcome.trouble.empty()) continue;
    log_.debug_log("A run was cut off before the file that it belongs to was done, so " + outcome.operation.old_path +
                       " is where it was",
                   LogLevel::Normal);
  }
}

/// A file that was set aside is still there when its circle was not closed. What came after it in its pass was that
/// circle's, for it was the last thing that the process did.
void PastUndo::bring_back(const PastOperation& aside) {
  if (!has_stamp(files_.stamp(aside.new_path), aside.stamp)) return;
  std::vector<PastOperation> circle = history_.pass(aside.pass)->operations;
  std::erase_if(circle, [&](const PastOperation& each) { return each.id < aside.id; });
  undo(std::move(circle));
  const bool is_back = !files_.exists(aside.new_path);
  log_.debug_log(
      "A run was cut off when files got each other's names; " +
          (is_back ? aside.old_path + " is where it was" : "what was " + aside.old_path + " is " + aside.new_path),
      LogLevel::Normal);
}

void PastUndo::settle_one(PastOperation operation) {
  const std::optional<FileStamp> source = files_.stamp(operation.old_path);
  std::optional<FileStamp> left = operation.new_path.empty() ? std::nullopt : files_.stamp(operation.new_path);
  const auto is_away = [this](const std::string& path) { return !path.empty() && !files_.exists(getpath(path, 0)); };
  if (!source && !left && (is_away(operation.old_path) || is_away(operation.new_path))) return;

  // What is there is looked at, for a name that was free may be somebody else's by now.
  const bool is_copy = operation.deed == Deed::Copied || operation.deed == Deed::Moved;  // perhaps
  const bool has_left =
      is_copy ? left && operation.stamp && left->may_be_copy_of(*operation.stamp) : has_stamp(left, operation.stamp);
  const bool takes_source = !leaves_source(operation.deed);
  const bool goes = operation.deed == Deed::Trashed || operation.deed == Deed::Tidied;
  if (goes ? !source : operation.deed == Deed::Made ? source.has_value() : has_left && (!takes_source || !source)) {
    operation.outcome = PastOperation::Done;
    if (left) operation.stamp = left;
    log_.debug_log("A run was cut off when " + what_was_done(operation) + "; that was still done", LogLevel::Normal);
  } else {
    operation.outcome = PastOperation::Failed;
    operation.reason = source && has_left ? "It was cut off; the file is there under both names"
                       : source           ? "It was cut off; the file is where it was"
                                          : "It was cut off; the file is at neither place";
    log_.debug_log("A run was cut off before " + what_was_done(operation) + ". " + operation.reason, LogLevel::Normal);
  }
  history_.end(operation);
}

}  // namespace quorvel
