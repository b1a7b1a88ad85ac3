#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "naming/reader/reading.h"

/// What the listings service's answers say, in JSON.
namespace quorvel {

struct CatalogueShow {
  int id = 0;
  std::string name, url, network;
  std::string country;  // its code, such as "GB"; empty where none is said
  int year = 0;         // of the first broadcast; 0 when unknown
};

struct CatalogueEpisode {
  int season = 0;
  std::optional<int> number;  // none of specials
  std::string title, url;
  std::optional<Date> date;
  int absolute = 0;  // counted over all seasons, where the whole list is known; 0 of specials
};

// Each throws Failure when the text is no such answer. What a show or an episode lacks is left empty; one without an id
// or a name is left out.
std::vector<CatalogueShow> found_shows_of(std::string_view json);
CatalogueShow show_of(std::string_view json);
std::vector<CatalogueEpisode> episodes_of(std::string_view json);
std::vector<std::string> other_names_of(std::string_view json);

}  // namespace quorvel
