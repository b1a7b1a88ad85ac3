#include "rules/rule_wizard.h"

#include "naming/file_names.h"
#include "rules/reach.h"
#include "text/case.h"
#include "text/characters.h"

namespace quorvel {
namespace {

constexpr std::size_t max_incomplete_path = 2;  // "D:"

}  // namespace

RuleForm rule_form(const AFilter& filter) {
  // A rule changed from one kind to the other has two conditions; its description tells which is the newer.
  const bool by_type = !filter.fileType.empty() &&
                       (filter.showName.empty() || filter.description.starts_with(field_names[RuleForm::FileType]));
  const std::string& pattern = by_type ? filter.fileType : filter.showName;
  const int comparison = by_type ? filter.fileTypeCondition : filter.showNameCondition;
  return {.field = by_type ? RuleForm::FileType : RuleForm::ShowName,
          .equals = pattern.empty() || comparison == Equals,
          .condition = pattern,
          .action = has_folder(filter.action) ? filter.action : int{Rename},
          .path = filter.path,
          .mask = filter.mask,
          .existing = filter.existing};
}

AFilter with_form(AFilter filter, const RuleForm& form) {
  const bool by_type = form.field == RuleForm::FileType;
  const std::string pattern = form.condition.empty() ? "*" : lower_case(form.condition);
  (by_type ? filter.fileType : filter.showName) = pattern;
  (by_type ? filter.fileTypeCondition : filter.showNameCondition) = form.equals ? Equals : DoesNotEqual;
  filter.action = form.action;
  filter.enabled = true;
  filter.path = form.action == Rename ? "" : with_separator(with_native_separators(form.path));
  filter.mask = form.mask;
  filter.existing = form.existing;
  filter.description = std::string(field_names[form.field]) + " " + comparison_names[form.equals ? 0 : 1] + " " +
                       (pattern == "*" ? "Anything" : form.condition);
  return filter;
}

void RuleWizard::setID(int index) {
  index_ = filters_.holds(index) ? index : 0;
  form = index_ > 0 ? rule_form(filters_.at(index_)) : RuleForm();
  step_ = Conditions;
}

bool RuleWizard::showstep(int step) {
  if (step_ == FilePath && step > FilePath && !has_path()) return false;
  if (step == FileName && form.mask.empty()) form.mask = default_mask;
  if (step == Summary && !store()) return false;
  step_ = step;
  return true;
}

RuleWizard::Texts RuleWizard::texts() const {
  const std::string done = index_ > 0 ? "edited" : "added";
  const ActionWords* const words = words_of(form.action);
  const std::string verb = words == nullptr ? "" : lower_case(words->verb),
                    participle(words == nullptr ? "" : words->participle);
  switch (step_) {
    case Conditions:
      return {"Step 1 - Filter Conditions", "Specify the critera of this filter", ""};
    case Options:
      return {"Step 2 - Filter Options", "Select what this filter will do", ""};
    case FilePath:
      if (is_link(form.action))
        return {"Step 3 - File Path", "Select where links will be made", "Directory for the links:"};
      return {"Step 3 - File Path", "Select where files will me " + participle + " to",
              "Directory to " + verb + " new files to:"};
    case FileName:
      return {form.action == Rename ? "Step 3 - File Name" : "Step 4 - File Name", "Specify the new file name format",
              ""};
    default:
      return {index_ > 0 ? "Filter Edited" : "Filter Added", "You have successfully " + done + " a filter",
              "The following filter has been successfully " + done + ":"};
  }
}

std::string RuleWizard::place_text() const {
  const std::string why = why_never_used(filters_.entries(), static_cast<std::size_t>(place_) - 1);
  if (!why.empty()) return "It is never used. " + why;
  if (index_ > 0 || place_ == filters_.count()) return {};
  return "It stands above \"" + filters_.at(place_ + 1).description + "\", which takes every file that is left.";
}

AFilter RuleWizard::draft() const {
  AFilter draft = with_form(index_ > 0 ? filters_.at(index_) : AFilter(), form);
  if (form.path.empty()) draft.path.clear();
  if (form.mask.empty()) draft.mask = default_mask;
  return draft;
}

void RuleWizard::use(const Preset& preset) {
  form.mask = preset.mask;
  if (has_folder(form.action))
    form.path = chosen_folder(form.path) + with_native_separators(std::string(preset.folder));
}

bool RuleWizard::has_complete_path() const {
  const bool is_complete = length(form.path) > max_incomplete_path || form.path == "~";
  return !has_folder(form.action) || (is_complete && is_full_path(form.path));
}

bool RuleWizard::has_path() const {
  if (has_complete_path()) return true;
  ui_.show_message(0, "Path not valid", "You must enter a complete path", MessageIcon::Warning);
  return false;
}

bool RuleWizard::store() {
  rule_ = with_form(index_ > 0 ? filters_.at(index_) : AFilter(), form);
  place_ = index_ > 0 ? index_ : place_for_new(filters_.entries());
  if (index_ > 0 ? filters_.store(index_, rule_) : filters_.insert(place_, rule_)) return true;
  ui_.show_message(0, "Unable to save filter", "The filter could not be saved. The log says why.", MessageIcon::Error);
  return false;
}

}  // namespace quorvel
