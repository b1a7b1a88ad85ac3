#include "queue/exact_identification.h"

#include <algorithm>

#include "catalogue/name_match.h"
#include "naming/reader/reading_text.h"
#include "naming/service_names.h"
#include "queue/stage.h"

namespace quorvel {
namespace {

std::string reading_text(const Reading& reading) {
  return show_text(reading) + ", " + number_text(reading);
}

std::string quoted(const std::string& url) {
  return url.empty() ? url : "\"" + url + "\"";
}

/// Without the "(1)" or "(2)" at the end that tells the halves of one story apart.
std::string without_half(std::string title) {
  const std::size_t open = title.rfind(" (");
  if (open == std::string::npos || !title.ends_with(')')) return title;
  const std::string inner = title.substr(open + 2, title.size() - open - 3);
  if (!inner.empty() && inner.find_first_not_of("0123456789") == std::string::npos) title.resize(open);
  return title;
}

std::string joined_titles(const std::vector<CatalogueEpisode>& episodes) {
  if (episodes.size() == 1) return episodes.front().title;
  std::vector<std::string> titles;
  for (const CatalogueEpisode& episode : episodes) {
    const std::string title = without_half(episode.title);
    if (std::ranges::find(titles, title) == titles.end()) titles.push_back(title);
  }
  std::string joined;
  for (const std::string& title : titles) joined.append(joined.empty() || title.empty() ? "" : " & ").append(title);
  return joined;
}

/// The numbers that the user says a file has in place of those in its name.
void put_numbers(const Reading& numbers, Reading& reading) {
  reading.season = numbers.season;
  reading.episodes = numbers.episodes;
  reading.absolute = numbers.absolute;
  reading.date = numbers.date;
  reading.special = numbers.special;
  reading.part.reset();
  reading.other.reset();
  reading.certain = true;
}

/// "Show S3 - 15" hardly ever means anything but the season's fifteenth episode, where it has as many.
bool counts_in_season(const Reading& reading) {
  return reading.season && !reading.episodes.empty() && reading.other && reading.other->season == reading.season;
}

}  // namespace

Identified ExactIdentification::identify(QueueItem& item, const Reached& reached) {
  lookup_.begin_item(settings_.nocache || item.look_up_anew);
  const auto failed = [&](const std::string& what, const StageResult& stage) {
    const std::string read_as =
        item.reading && item.reading->names_episode() ? "\r\nRead as: " + reading_text(*item.reading) : "";
    return Identified{Identified::Failed, what + ": " + item.filename, what + read_as + stage.line(), stage.no_answer};
  };
  reached(QueueState::Scanning);
  const StageResult reading = run_stage(log_, "Error reading name: ", [&] { return read(item); });
  if (!reading) return failed("Unable to find an episode in the name", reading);

  if (!reached(QueueState::Searching)) return {Identified::Interrupted};
  const StageResult search = run_stage(log_, "Error searching for show: ", [&] { return find_show(item); });
  if (!search) return failed("Unable to choose a show", search);

  if (!reached(QueueState::FetchingListings)) return {Identified::Interrupted};
  const StageResult listings = run_stage(log_, "Error getting listings: ", [&] { return find_episodes(item); });
  if (!listings) return failed("Unable to find the episode", listings);
  return {};
}

/// Where the service knows more than the name, it counts.
NameFacts ExactIdentification::facts_of(const FoundEpisodes& found) const {
  const CatalogueEpisode& first = found.episodes.front();
  NameFacts facts = facts_in(found.as);
  if (show_.year > 0) facts.year = std::to_string(show_.year);
  if (!show_.country.empty()) facts.country = exact_name(show_.country);
  if (first.date) facts.date = date_text(*first.date);
  if (first.absolute > 0) facts.absolute = std::to_string(first.absolute);
  const auto digits = [](int number) { return std::max(2, static_cast<int>(std::to_string(number).size())); };
  facts.season_digits = digits(found.last_season);
  facts.episode_digits = digits(found.last_episode);
  return facts;
}

bool ExactIdentification::read(QueueItem& item) {
  item.reading = read_name(item.path);
  if (item.corrected) put_numbers(*item.corrected, *item.reading);
  const Reading& reading = *item.reading;
  if (!reading.names_episode() || (reading.show.empty() && !show_of_all)) return false;
  log_.debug_log("Read " + item.filename + " as " + reading_text(reading), LogLevel::Verbose);
  item.search_name = exceptions_.replacement(reading.show).value_or(reading.show);
  return true;
}

FoundShow ExactIdentification::chosen_show(QueueItem& item) {
  if (show_of_all) return {lookup_.show_of_id(*show_of_all), "as the show of all files"};
  const std::string key = Lookup::choice_key(item.search_name, *item.reading);
  if (forgets_choices && forgotten_.insert(key).second) lookup_.forget(key);
  try {
    return lookup_.show(item.search_name, *item.reading);
  } catch (const UnclearShow& unclear) {
    item.is_unclear = !choose(item, unclear);
    if (item.is_unclear) throw;
    return lookup_.show(item.search_name, *item.reading);
  }
}

bool ExactIdentification::find_show(QueueItem& item) {
  const FoundShow found = chosen_show(item);
  show_ = found.show;
  item.show_id = show_.id;
  item.show_name = exact_name(show_.name);
  item.show_url = quoted(show_.url);
  item.match = description(show_) + ", " + found.why;
  log_.debug_log("Found " + item.match, LogLevel::Verbose);
  if (item.show_name.empty()) throw Failure("The show has no name that a file can have");
  const std::string doubt = "The name says \"" + item.search_name + "\", and the show is called \"" + show_.name + "\"";
  if (found.is_alike && !may_go_on_with(item, doubt)) throw Failure(doubt);
  return true;
}

bool ExactIdentification::find_episodes(QueueItem& item) {
  const FoundEpisodes found = lookup_.episodes(show_, *item.reading);
  const std::vector<CatalogueEpisode>& episodes = found.episodes;
  const CatalogueEpisode& first = episodes.front();
  // What else an uncertain name may mean is ruled out by what the show has, or by the title where the name tells it.
  const bool is_sure =
      found.as.certain || says_title(found.as, first) || (item.reading->other && found.other_title.empty());
  if (!is_sure) {
    const std::string doubt = "The name can be read in more than one way; as this it would be \"" + first.title + "\"" +
                              (found.other_title.empty() ? "" : ", else \"" + found.other_title + "\"");
    if (!counts_in_season(*item.reading) || !may_go_on_with(item, doubt)) throw Failure(doubt);
  }
  item.reading = found.as;
  item.listings_told = found.told;
  const Reading& reading = *item.reading;
  const bool is_special = !first.number.has_value();
  item.season = is_special ? 0 : first.season;
  item.episode = first.number.value_or(reading.episodes.empty() ? 0 : reading.episodes.front());
  for (std::size_t i = 1; i < episodes.size(); ++i) {
    item.more_episodes.push_back(episodes[i].number.value_or(is_special ? reading.episodes[i] : 0));
  }
  item.episode_title = exact_name(joined_titles(episodes));
  item.facts = facts_of(found);
  item.episode_url = quoted(first.url);
  if (item.episode_title.empty()) {
    log_.debug_log("The episode has no title that a file can have", LogLevel::Normal);
  }
  return true;
}

}  // namespace quorvel
