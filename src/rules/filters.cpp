#include "rules/filters.h"

#include "rules/reach.h"
#include "text/case.h"
#include "text/numbers.h"
#include "text/wildcard.h"

namespace quorvel {
namespace {

bool to_bool(std::string_view text) {
  const std::string word = lower_case(text);
  if (word != "true" && word != "false") throw Failure("\"" + std::string(text) + "\" is neither True nor False");
  return word == "true";
}

bool condition_fits(std::string_view subject, std::string_view pattern, int condition) {
  return !pattern.empty() && matches(subject, pattern) == (condition == Equals);
}

}  // namespace

bool fits(const AFilter& filter, std::string_view extension, std::string_view show_name) {
  // Either condition will do: a rule changed from one kind to the other keeps its old pattern beside the new one.
  return filter.enabled && (condition_fits(extension, filter.fileType, filter.fileTypeCondition) ||
                            condition_fits(show_name, filter.showName, filter.showNameCondition));
}

RecordFile::Fields FilterFormat::fields(const AFilter& filter) {
  RecordFile::Fields fields{std::to_string(filter.action),
                            filter.enabled ? "True" : "False",
                            filter.fileType,
                            filter.showName,
                            filter.path,
                            filter.mask,
                            filter.description,
                            std::to_string(filter.fileTypeCondition),
                            std::to_string(filter.showNameCondition)};
  if (filter.existing != Existing::Ask) fields.emplace_back(existing_word(filter.existing));
  return fields;
}

AFilter FilterFormat::entry(const std::vector<std::string_view>& fields) {
  AFilter filter;
  filter.action = to_number(fields[0]);
  filter.enabled = to_bool(fields[1]);
  filter.fileType = fields[2];
  filter.showName = fields[3];
  filter.path = fields[4];
  filter.mask = fields[5];
  filter.description = fields[6];
  filter.fileTypeCondition = to_number(fields[7]);
  filter.showNameCondition = to_number(fields[8]);
  if (fields.size() > FilterFormat::field_count) filter.existing = existing_named(fields[FilterFormat::field_count]);
  return filter;
}

ListRow FilterFormat::row(const std::vector<AFilter>& filters, std::size_t at) {
  const AFilter& filter = filters[at];
  const std::string why = why_never_used(filters, at);
  return {.cells = {(why.empty() ? "" : "Never used: ") + filter.description, std::string(action_name(filter.action)),
                    filter.mask, filter.path},
          .tip = why.empty() ? why : filter.description + ": " + why};
}

std::vector<AFilter> FilterFormat::defaults() {
  AFilter filter;
  filter.description = "Show Name Equals Anything";
  filter.action = Rename;
  filter.enabled = true;
  filter.showName = "*";
  filter.showNameCondition = Equals;
  filter.mask = default_mask;
  return {filter};
}

bool FilterList::remove(int index) {
  if (count() == 1) {
    ui().show_message(0, "Unable to remove filter", "You must have at least one filter", MessageIcon::Information);
    return false;
  }
  return EntryList::remove(index);
}

std::optional<int> FilterList::first_fitting(std::string_view extension, std::string_view show_name) const {
  const std::string name = lower_case(show_name);
  for (int i = 1; i <= count(); ++i) {
    if (fits(at(i), extension, name)) return i;
  }
  return {};
}

}  // namespace quorvel
