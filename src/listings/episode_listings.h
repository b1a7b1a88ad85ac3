#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <tuple>
#include <unordered_map>
#include <vector>

#include "listings/cache_folder.h"
#include "listings/known_shows.h"
#include "listings/unfound.h"
#include "platform/clock.h"
#include "platform/log.h"
#include "transport/http_client.h"

namespace quorvel {

struct Episode {
  std::string airdate;  // year-month-day as the service gives it, perhaps empty
  int season = 0;
  int number = 0;
  std::string url;    // of its web page, in the double quotes that surround it in the answer
  std::string title;  // cleaned, its UTF-8 bytes not yet decoded
};

/// The episodes of one show, in the order of the service's answer.
class EpisodeList {
 public:
  void clear();
  void append(Episode episode);
  const std::vector<Episode>& all() const { return episodes_; }

  /// The first with these numbers, found in constant time; null when there is none.
  const Episode* find(int season, int number) const;

 private:
  std::vector<Episode> episodes_;
  std::unordered_map<std::uint64_t, std::size_t> first_;  // by season and number
};

/// What a look-up of an episode gives.
struct FoundEpisode {
  std::string title;
  std::string url;
  bool operator==(const FoundEpisode&) const = default;
};

/// Finds episodes in the listings of their show, cached or fetched.
class EpisodeListings {
 public:
  struct Options {
    bool use_cache = true;
    bool decode_utf8 = true;
  };

  EpisodeListings(HttpClient& http, CacheFolder& cache, KnownShows& known, Log& log, Clock& clock, std::string api_base)
      : http_(http), cache_(cache), known_(known), log_(log), clock_(clock), api_base_(std::move(api_base)) {}

  /// `search_name` is what was searched for, for the log. Empty when the show has no such episode or the service's
  /// answer is no list of episodes. Throws Failure when there is no answer, when one of the fetched episodes lacks a
  /// number, or when there are more of them than any show has: a list that cannot be read to its end is not trusted.
  std::optional<FoundEpisode> getlistings(const Show& show, const std::string& search_name, int season, int episode,
                                          Options options);

  /// Whether the title is known to lack characters that the service gave.
  bool has_lost_characters(int show_id, int season, int episode) const {
    return lossy_.contains({show_id, season, episode});
  }

  /// The service is asked again for what it has not found.
  void forget_unfound() { unfound_.forget(); }

  /// Makes the cache file's episodes of the show the episode list; false when there is no file, when it is damaged, or
  /// when it may be another show's of the same name.
  bool checkepcache(const std::string& show_name);

  /// Whether an episode of that date has been aired, so that its title will not change any more; empty for everything
  /// that is not a date.
  std::optional<bool> is_aired(std::string_view airdate) const;

 private:
  const Episode* fetch(const Show& show, const std::string& search_name, int season, int episode, bool use_cache);
  bool accept_answer(const std::string& answer, const Show& show, const std::string& search_name);
  void read_answer(std::string_view answer, int show_id);
  void update_cache(const std::string& show_name);
  void load_cache(const std::string& text);
  FoundEpisode finish(const Episode& episode, bool decode_utf8);

  HttpClient& http_;
  CacheFolder& cache_;
  KnownShows& known_;
  Log& log_;
  Clock& clock_;
  std::string api_base_;
  Unfound unfound_;
  std::set<std::tuple<int, int, int>>
      lossy_;  // show, season and number of titles that were fetched with more characters
  EpisodeList list_;
  // The cache file that list_ was loaded from, so that each further file of a show need not load it again.
  std::string loaded_file_;
  std::optional<FileStamp> loaded_stamp_;
};

}  // namespace quorvel
