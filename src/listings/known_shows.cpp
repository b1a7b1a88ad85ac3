#include "listings/known_shows.h"

#include <string_view>
#include <vector>

#include "text/case.h"
#include "text/cut.h"
#include "text/failure.h"
#include "text/numbers.h"
#include "text/title.h"

namespace quorvel {

std::optional<Show> cached_show(const CacheFolder& cache, const std::string& file) {
  try {
    if (!cache.stamp(file)) return {};
    const std::string text = cache.load(file);
    const std::vector<std::string_view> fields = split(text, "\t");
    if (fields.size() < 3 || !is_clean(fields[2])) return {};
    return Show{to_number(fields[0]), std::string(fields[2]), std::string(fields[1])};
  } catch (const Failure&) {
    return {};  // the service is asked, and the file replaced
  }
}

void KnownShows::add(const Show& show) {
  ids(show.name).insert(show.id);
}

bool KnownShows::share_cache(const std::string& show_name) {
  refresh();
  return ids(show_name).size() > 1;
}

std::set<int>& KnownShows::ids(const std::string& show_name) {
  return ids_[lower_case(cache_.file(show_name, ".epc"))];
}

/// Other copies of the program write caches too.
void KnownShows::refresh() {
  const std::optional<FileStamp> stamp = cache_.stamp(cache_.path());
  if (!stamp || stamp == folder_stamp_) return;
  folder_stamp_ = stamp;
  for (const std::string& file : cache_.files(".qc")) {
    if (!files_read_.insert(file).second) continue;
    if (const std::optional<Show> show = cached_show(cache_, file)) add(*show);
  }
}

}  // namespace quorvel
