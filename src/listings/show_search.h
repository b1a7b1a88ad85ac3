#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "listings/cache_folder.h"
#include "listings/known_shows.h"
#include "listings/unfound.h"
#include "platform/log.h"
#include "transport/http_client.h"

namespace quorvel {

/// Finds shows by name, in the query cache or at the service.
class ShowSearch {
 public:
  /// `api_base` is the service's address without a trailing slash.
  ShowSearch(HttpClient& http, CacheFolder& cache, KnownShows& known, Log& log, std::string api_base)
      : http_(http), cache_(cache), known_(known), log_(log), api_base_(std::move(api_base)) {}

  /// The first show that the cache or the service gives for the name; empty when there is none or the answer is no
  /// list of shows. Throws Failure when there is no answer, or when a value of it is not what it must be.
  std::optional<Show> searchtv(const std::string& search_name, bool use_cache);

  /// Whether the show's name is known to lack characters that the service gave.
  bool has_lost_characters(const Show& show) const;

  /// The service is asked again for what it has not found.
  void forget_unfound() { unfound_.forget(); }

  /// The show in the cache file for the name; empty when there is no such file or it is damaged.
  std::optional<Show> checkqcache(const std::string& search_name) const;

 private:
  std::optional<Show> search_service(const std::string& search_name);

  HttpClient& http_;
  CacheFolder& cache_;
  KnownShows& known_;
  Log& log_;
  std::string api_base_;
  Unfound unfound_;
  std::set<int> lossy_;  // shows whose names have lost characters when they were fetched
};

}  // namespace quorvel
