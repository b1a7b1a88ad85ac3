#pragma once

#include <string>
#include <utility>

#include "rules/filters.h"
#include "rules/presets.h"

namespace quorvel {

/// What the user chooses for a filter rule.
struct RuleForm {
  enum Field { ShowName, FileType };

  int field = ShowName;
  bool equals = true;
  std::string condition;
  int action = Rename;  // an Action
  std::string path, mask;
  Existing existing = Existing::Ask;
  bool operator==(const RuleForm&) const = default;
};

inline constexpr const char* field_names[] = {"Show Name", "File Type"};  // by Field
inline constexpr const char* comparison_names[] = {"Equals", "Doesn't Equal"};

RuleForm rule_form(const AFilter& filter);

/// The rule, as the form has it; what the form does not show stays as it is.
AFilter with_form(AFilter filter, const RuleForm& form);

/// Adds a filter rule or changes one, a question a step: which step follows which, what each says, and the rule that
/// comes out. A new rule stands above the first that takes all that is left, else last. A face shows the step and keeps
/// `form` as the user fills it in.
class RuleWizard {
 public:
  enum Step { Conditions = 1, Options, FilePath, FileName, Summary, End };

  RuleWizard(FilterList& filters, UserInterface& ui) : filters_(filters), ui_(ui) {}

  /// The rule to change, at its first step; an index that the list does not hold adds a new one.
  void setID(int index);

  /// Goes to a step and does what leaving the one before it asks for. False, with a message and the step as it was,
  /// when the path is not complete or the rule cannot be saved.
  bool showstep(int step);
  bool next() { return showstep(step_ == Options && form.action == Rename ? int{FileName} : step_ + 1); }
  bool back() { return showstep(step_ == FileName && form.action == Rename ? int{Options} : step_ - 1); }

  /// What a step says: its heading, the line below, and what stands above the path or the stored rule.
  struct Texts {
    std::string heading, subheading, label;
    bool operator==(const Texts&) const = default;
  };
  Texts texts() const;
  const char* title() const { return index_ > 0 ? "Edit Filter Wizard" : "Add Filter Wizard"; }
  int step() const { return step_; }
  bool is_stored() const { return step_ >= Summary; }
  bool can_go_back() const { return step_ > Conditions && !is_stored(); }

  /// Whether the folder, if there is to be one, is what Next accepts.
  bool has_complete_path() const;

  /// The rule, as far as the form goes.
  AFilter draft() const;

  /// Fills in the mask, and the folder below what is chosen of it, if there is to be one.
  void use(const Preset& preset);

  /// What has been stored, where, and what is to be said of its place; empty for nothing.
  const AFilter& rule() const { return rule_; }
  int place() const { return place_; }
  std::string place_text() const;

  RuleForm form;

 private:
  bool has_path() const;
  bool store();

  FilterList& filters_;
  UserInterface& ui_;
  int index_ = 0, place_ = 0;
  int step_ = Conditions;
  AFilter rule_;
};

}  // namespace quorvel
