#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "rules/action.h"
#include "rules/entry_list.h"
#include "rules/existing.h"

namespace quorvel {

enum Condition { Equals = 1, DoesNotEqual = 2 };

/// What a new rule's mask is when the user gives none.
inline constexpr std::string_view default_mask = "[show] - [s]x[ee] - [title]";

/// One filter rule: what to do with which files. Patterns are wildcards in lower case; an empty one is no condition.
struct AFilter {
  std::string description;
  int action = 0;        // an Action; other values do nothing
  bool enabled = false;  // a rule that is not never fits
  std::string path;      // the destination folder of a move or copy, ending in a separator
  std::string mask;
  std::string showName;
  int showNameCondition = 0;  // Equals, or anything else for its opposite
  std::string fileType;
  int fileTypeCondition = 0;
  bool deleted = false;               // never written
  Existing existing = Existing::Ask;  // where another file has the new name; the file of rules has it only when not Ask
};

/// Whether the rule is for such files: either of its conditions fits, and it is enabled. `extension` is in lower case,
/// without a dot, and so is `show_name`, which is as the listings service gives it apart from that.
bool fits(const AFilter& filter, std::string_view extension, std::string_view show_name);

struct FilterFormat {
  static constexpr std::string_view file_name = "filters.dat";
  static constexpr std::string_view plural = "afilters";
  static constexpr std::size_t field_count = 9;
  static constexpr auto show = &UserInterface::show_filters;
  static RecordFile::Fields fields(const AFilter& filter);
  static AFilter entry(const std::vector<std::string_view>& fields);
  static ListRow row(const std::vector<AFilter>& filters, std::size_t at);
  static std::vector<AFilter> defaults();  // what there is while the user has made no rule
};

/// The filter rules; their order is their priority.
class FilterList : private EntryList<AFilter, FilterFormat> {
 public:
  using EntryList::append, EntryList::at, EntryList::count, EntryList::EntryList, EntryList::entries,
      EntryList::exchange, EntryList::holds, EntryList::insert, EntryList::store, EntryList::use_only;

  bool loadfilters() { return load(); }
  bool savefilters() { return save(); }
  void refresh_lv2() { refresh(); }

  /// As EntryList::remove, but the last rule stays, and a message says why.
  bool remove(int index);

  /// The index of the first rule for files of this type and show; empty when there is none.
  std::optional<int> first_fitting(std::string_view extension, std::string_view show_name) const;
};

}  // namespace quorvel
