#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>

#include "listings/cache_folder.h"

namespace quorvel {

/// A show as the listings service knows it.
struct Show {
  int id = 0;
  std::string name;
  std::string url;  // of its web page, in the double quotes that surround it in the answer
  bool operator==(const Show&) const = default;
};

/// The show in a query cache's file; empty when there is no such file, when it is damaged, and when
/// the show's name is none that the service's answers give.
std::optional<Show> cached_show(const CacheFolder& cache, const std::string& file);

/// Which shows there are in the query caches. An episode cache is named after its show, and two shows of one name must
/// not get each other's episodes.
class KnownShows {
 public:
  explicit KnownShows(const CacheFolder& cache) : cache_(cache) {}

  /// A show that was found just now, whether or not it is in a cache.
  void add(const Show& show);

  /// Whether more than one show would have the same episode cache as `show_name`.
  bool share_cache(const std::string& show_name);

 private:
  void refresh();
  std::set<int>& ids(const std::string& show_name);

  const CacheFolder& cache_;
  std::optional<FileStamp> folder_stamp_;  // when its files were last looked at
  std::set<std::string> files_read_;
  std::map<std::string, std::set<int>> ids_;  // by the name of the episode cache, which may not depend on case
};

}  // namespace quorvel
