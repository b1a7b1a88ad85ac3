#include "listings/show_search.h"

#include <algorithm>

#include "naming/service_names.h"
#include "text/characters.h"
#include "text/code_page.h"
#include "text/cut.h"
#include "text/failure.h"
#include "text/numbers.h"
#include "text/title.h"
#include "transport/no_answer.h"

namespace quorvel {

std::optional<Show> ShowSearch::checkqcache(const std::string& search_name) const {
  return cached_show(cache_, cache_.file(search_name, ".qc"));
}

std::optional<Show> ShowSearch::searchtv(const std::string& search_name, bool use_cache) {
  if (use_cache) {
    if (std::optional<Show> cached = checkqcache(search_name)) {
      log_.debug_log("Found query in cache", LogLevel::Verbose);
      return cached;
    }
    log_.debug_log("Query not in cache", LogLevel::Verbose);
  } else {
    log_.debug_log("Query cache disabled", LogLevel::Verbose);
  }
  std::optional<Show> show = unfound_.unless_known(search_name, [&] { return search_service(search_name); });
  if (show) known_.add(*show);
  if (show && use_cache) {
    log_.debug_log("Updating query cache", LogLevel::Verbose);
    if (fits_cache_field(show->url) && fits_cache_field(show->name)) {
      cache_.store(cache_.file(search_name, ".qc"), std::to_string(show->id) + "\t" + show->url + "\t" + show->name);
    }
  }
  return show;
}

bool ShowSearch::has_lost_characters(const Show& show) const {
  // Letters beyond ASCII stand there as the two or three bytes that they were, which a cached name shows as well.
  const std::string bytes = to_code_page(show.name);
  const bool is_utf8 = std::ranges::none_of(
      decode(bytes), [](char32_t each) { return each >= stray_byte_base && each <= stray_byte_base + 0xFF; });
  return lossy_.contains(show.id) || (bytes != show.name && is_utf8);
}

std::optional<Show> ShowSearch::search_service(const std::string& search_name) {
  std::string url = api_base_ + "/search/shows?q=" + HttpClient::URLEncode(search_name);
  const std::string answer = http_.GetData(url, "");
  if (answer.empty()) throw NoAnswer(http_.trouble());
  if (answer == "[]") {
    log_.debug_log("Site reports no results for: \"" + search_name + "\"", LogLevel::Normal);
    return {};
  }
  if (answer.find("\"show\"") == std::string::npos || !is_whole_list(answer)) {
    log_.debug_log("Error parsing results (Err 2)", LogLevel::Normal);
    return {};
  }
  const std::string_view page = textbetween(answer, "\"url\":", ",");
  if (page.size() > max_title_size) throw Failure("the address of the show's page is too long");
  // The first occurrence of each key belongs to the service's best match.
  const std::string_view name = textbetween(answer, "\"name\":\"", "\",");
  Show show{to_number(textbetween(answer, "\"id\":", ",")), cleantitle(name), std::string(page)};
  if (lacks_characters(show.name, to_code_page(name))) lossy_.insert(show.id);
  return show;
}

}  // namespace quorvel
