#include "catalogue/answers.h"

#include <simdjson.h>

#include <array>
#include <charconv>
#include <utility>

#include "text/cut.h"
#include "text/failure.h"

namespace quorvel {
namespace {

namespace dom = simdjson::dom;

constexpr std::size_t max_episodes = 100'000;

/// Names are plain text, but some were entered with the characters of web pages.
std::string plain(std::string_view text) {
  std::string decoded(text);
  static constexpr std::pair<const char*, const char*> entities[] = {
      {"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}, {"&#39;", "'"}, {"&amp;", "&"}};
  if (decoded.find('&') == std::string::npos) return decoded;
  for (const auto& [entity, character] : entities) replace_all(decoded, entity, character);
  return decoded;
}

/// Empty when the value is missing, null, or something else than a text.
std::string text_at(const dom::element& object, std::string_view path) {
  std::string_view text;
  return object.at_pointer(path).get(text) == simdjson::SUCCESS ? std::string(text) : std::string();
}

std::optional<int> number_at(const dom::element& object, std::string_view path) {
  std::int64_t number = 0;
  if (object.at_pointer(path).get(number) != simdjson::SUCCESS || !std::in_range<int>(number)) return {};
  return static_cast<int>(number);
}

/// "2011-04-18".
std::optional<Date> date_of(std::string_view text) {
  if (text.size() != 10 || text[4] != '-' || text[7] != '-') return {};
  Date date;
  const auto read = [&](std::size_t from, std::size_t size, int& number) {
    const char* const end = text.data() + from + size;
    return std::from_chars(text.data() + from, end, number).ptr == end && number >= 0;
  };
  return read(0, 4, date.year) && read(5, 2, date.month) && read(8, 2, date.day) ? std::optional(date) : std::nullopt;
}

std::optional<CatalogueShow> show_in(const dom::element& object) {
  CatalogueShow show;
  show.id = number_at(object, "/id").value_or(0);
  show.name = plain(text_at(object, "/name"));
  show.url = text_at(object, "/url");
  if (show.id <= 0 || show.name.empty()) return {};
  if (const auto premiered = date_of(text_at(object, "/premiered"))) show.year = premiered->year;
  for (const std::string channel : {"/network", "/webChannel"}) {
    if (show.network.empty()) show.network = plain(text_at(object, channel + "/name"));
    if (show.country.empty()) show.country = text_at(object, channel + "/country/code");
  }
  return show;
}

/// One parser serves all answers, for it keeps its memory; each answer is read to its end before the next.
dom::element parsed(dom::parser& parser, std::string_view json) {
  dom::element root;
  const auto error = parser.parse(json.data(), json.size()).get(root);
  if (error != simdjson::SUCCESS) {
    throw Failure(std::string("The listings service's answer cannot be understood: ") + simdjson::error_message(error));
  }
  return root;
}

dom::array list_of(const dom::element& root) {
  dom::array list;
  if (root.get(list) != simdjson::SUCCESS) throw Failure("The listings service's answer is no list");
  return list;
}

}  // namespace

std::vector<CatalogueShow> found_shows_of(std::string_view json) {
  dom::parser parser;
  std::vector<CatalogueShow> shows;
  for (const dom::element& entry : list_of(parsed(parser, json))) {
    dom::element object;
    if (entry.at_key("show").get(object) != simdjson::SUCCESS) continue;
    if (auto show = show_in(object)) shows.push_back(std::move(*show));
  }
  return shows;
}

CatalogueShow show_of(std::string_view json) {
  dom::parser parser;
  if (auto show = show_in(parsed(parser, json))) return std::move(*show);
  throw Failure("The listings service's answer is no show");
}

std::vector<CatalogueEpisode> episodes_of(std::string_view json) {
  dom::parser parser;
  std::vector<CatalogueEpisode> episodes;
  for (const dom::element& entry : list_of(parsed(parser, json))) {
    if (episodes.size() == max_episodes) throw Failure("The listings service's answer has more episodes than any show");
    CatalogueEpisode episode;
    const std::optional<int> season = number_at(entry, "/season");
    if (!season) continue;
    episode.season = *season;
    episode.number = number_at(entry, "/number");
    episode.title = plain(text_at(entry, "/name"));
    episode.url = text_at(entry, "/url");
    episode.date = date_of(text_at(entry, "/airdate"));
    episodes.push_back(std::move(episode));
  }
  return episodes;
}

std::vector<std::string> other_names_of(std::string_view json) {
  dom::parser parser;
  std::vector<std::string> names;
  for (const dom::element& entry : list_of(parsed(parser, json))) {
    if (std::string name = plain(text_at(entry, "/name")); !name.empty()) names.push_back(std::move(name));
  }
  return names;
}

}  // namespace quorvel
