#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "rules/entry_list.h"

namespace quorvel {

/// One show-name exception: what to search for in place of what file names say.
struct EFilter {
  std::string detectedName;
  std::string newName;
  bool deleted = false;  // never written
};

struct ExceptionFormat {
  static constexpr std::string_view file_name = "man.dat";
  static constexpr std::string_view plural = "efilters";
  static constexpr std::size_t field_count = 2;
  static constexpr auto show = &UserInterface::show_exceptions;
  static RecordFile::Fields fields(const EFilter& exception);
  static EFilter entry(const std::vector<std::string_view>& fields);
  static ListRow row(const std::vector<EFilter>& exceptions, std::size_t at) {
    return {.cells = fields(exceptions[at])};
  }
  static std::vector<EFilter> defaults() { return {}; }
};

/// The show-name exceptions, in the user's order.
class ExceptionList : private EntryList<EFilter, ExceptionFormat> {
 public:
  using EntryList::append, EntryList::at, EntryList::count, EntryList::EntryList, EntryList::exchange, EntryList::holds,
      EntryList::remove, EntryList::store;

  bool loadefilters() { return load(); }
  bool saveefilters() { return save(); }
  void refresh_lv3() { refresh(); }

  /// The new name, in lower case, of the first exception for just this name, case ignored; empty when there is none.
  /// Exceptions do not chain.
  std::optional<std::string> replacement(std::string_view detected_name) const;
};

}  // namespace quorvel
