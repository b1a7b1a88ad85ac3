#include "shell/past_text.h"

#include <algorithm>
#include <array>
#include <map>
#include <vector>

#include "platform/native.h"

namespace quorvel {

DeedWords deed_words(Deed deed) {
  switch (deed) {
    case Deed::Moved:
      return {"move", "moved", "move", "moves"};
    case Deed::Copied:
      return {"copy", "copied", "copy", "copies"};
    case Deed::HardLinked:
      return {"hardlink", "linked", "link", "links"};
    case Deed::SymbolicLinked:
      return {"symlink", "linked", "link", "links"};
    case Deed::SetAside:
      return {"set aside", "set aside", "renaming", "renamings"};
    case Deed::Trashed:
      return {"trash", "removed", "removal", "removals"};
    case Deed::Tidied:
      return {"tidy away", "tidied away", "folder tidied away", "folders tidied away"};
    case Deed::Made:
      return {"make", "made again", "folder made again", "folders made again"};
    default:
      return {"rename", "renamed", "renaming", "renamings"};
  }
}

const char* outcome_word(const PastOperation& operation) {
  if (operation.undone) return "undone";
  return operation.outcome == PastOperation::Done     ? "done"
         : operation.outcome == PastOperation::Failed ? "failed"
                                                      : "under way";
}

std::string time_text(const Clock& clock, std::chrono::sys_seconds time) {
  const std::chrono::local_seconds local = clock.local(time);
  const auto day = std::chrono::floor<std::chrono::days>(local);
  const std::chrono::year_month_day date(day);
  const auto minutes = std::chrono::floor<std::chrono::minutes>(local - day).count();
  const auto padded = [](long long number) { return (number < 10 ? "0" : "") + std::to_string(number); };
  return std::to_string(static_cast<int>(date.year())) + "-" + padded(static_cast<unsigned>(date.month())) + "-" +
         padded(static_cast<unsigned>(date.day())) + " " + padded(minutes / 60) + ":" + padded(minutes % 60);
}

std::string short_time_text(const Clock& clock, std::chrono::sys_seconds time) {
  const std::string text = time_text(clock, time);
  const std::string today = time_text(clock, std::chrono::floor<std::chrono::seconds>(clock.utc()));
  const std::size_t date = text.find(' ');
  return text.substr(0, date) == today.substr(0, date) ? text.substr(date + 1) : text;
}

std::string undo_question(const PastPass& pass, const Clock& clock) {
  std::vector<std::string> parts;
  for (const Deed deed : {Deed::Renamed, Deed::Moved, Deed::Copied, Deed::HardLinked, Deed::SymbolicLinked,
                          Deed::Trashed, Deed::Tidied, Deed::Made}) {
    // What was only set aside for a moment is renamed right after, and counts once.
    const auto count = std::ranges::count_if(
        pass.operations, [deed](const PastOperation& each) { return each.deed == deed && each.is_undoable(); });
    const DeedWords words = deed_words(deed);
    if (count > 0) parts.push_back(std::to_string(count) + " " + (count == 1 ? words.noun : words.nouns));
  }
  std::string text = "Undo ";
  for (std::size_t i = 0; i < parts.size(); ++i) {
    if (i > 0) text += i + 1 == parts.size() ? " and " : ", ";
    text += parts[i];
  }
  return text + " of " + short_time_text(clock, pass.time) + "?";
}

std::string counts_text(const PastPass& pass) {
  std::map<std::string, int> counts;
  int undone = 0, done = 0;
  for (const PastOperation& each : pass.operations) {
    const bool is_done = each.outcome == PastOperation::Done;
    ++counts[is_done ? deed_words(each.deed).participle : outcome_word(each)];
    done += is_done ? 1 : 0;
    undone += each.undone ? 1 : 0;
  }
  std::string text;
  static constexpr std::array words = {"renamed", "moved",       "copied",     "linked", "set aside",
                                       "removed", "tidied away", "made again", "failed", "under way"};
  for (const char* const word : words) {
    if (counts[word] > 0) text.append(text.empty() ? "" : ", ").append(std::to_string(counts[word]) + " " + word);
  }
  if (undone > 0) text += undone == done ? ", all undone" : ", " + std::to_string(undone) + " undone";
  return text;
}

std::string summary(const PastPass& pass, const Clock& clock) {
  return "Pass " + std::to_string(pass.id) + ", " + time_text(clock, pass.time) +
         (pass.is_undoing ? ", undoing: " : ": ") + counts_text(pass);
}

std::string line_of(const PastOperation& operation) {
  std::string text = operation.outcome == PastOperation::Failed ? "not " : "";
  text += std::string(deed_words(operation.deed).participle) + " " + operation.old_path;
  if (!operation.new_path.empty()) text += " -> " + operation.new_path;
  if (operation.undone) text += " (undone)";
  if (operation.outcome == PastOperation::Failed) text += " (" + operation.reason + ")";
  if (operation.outcome == PastOperation::UnderWay) text += " (under way)";
  return text;
}

std::string undone_line(const PastUndo::Outcome& outcome) {
  if (is_link(outcome.operation.deed)) return outcome.from + ": the link is removed";
  return outcome.from + " -> " + (outcome.to.empty() ? std::string(native::trash_name) : outcome.to);
}

}  // namespace quorvel
