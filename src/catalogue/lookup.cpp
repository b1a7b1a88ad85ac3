#include "catalogue/lookup.h"

#include <algorithm>
#include <cstdlib>
#include <optional>

#include "catalogue/name_match.h"
#include "naming/reader/reading_text.h"
#include "text/case.h"
#include "text/failure.h"
#include "text/numbers.h"
#include "text/percent.h"
#include "text/unicode_forms.h"

namespace quorvel {
namespace {

constexpr std::string_view id_prefix = "tvmaze:";
constexpr int least_score = 60;  // of a show that may be meant
constexpr int clear_lead = 15;   // by which a winner is ahead of all others
constexpr int full_score = 100;  // of a name that is the same
constexpr int same_name = 90;    // the likeness of names that are spelt in one way
constexpr int hint_in_name = 30;
constexpr std::size_t max_listed = 5, max_compared = 4;

/// The list has no such episode.
class NoSuchEpisode : public Failure {
 public:
  using Failure::Failure;
};

/// It has several, of which none is meant more than another.
class SeveralEpisodes : public Failure {
 public:
  using Failure::Failure;
};

std::optional<int> id_in(const std::string& name) {
  if (!name.starts_with(id_prefix)) return {};
  const int id = leading_number(std::string_view(name).substr(id_prefix.size()));
  if (id <= 0) throw Failure("\"" + name + "\" is no show; what stands behind \"tvmaze:\" is a show's number");
  return id;
}

/// The reading with what its figures may mean as well in place of what they mean first.
Reading other_meaning(const Reading& reading) {
  Reading meaning = reading;
  meaning.season = reading.other->season;
  meaning.episodes = reading.other->episodes;
  meaning.absolute = reading.other->absolute;
  meaning.date = reading.other->date;
  meaning.other.reset();
  return meaning;
}

/// Where people write another code than the service.
std::string country_code(const std::string& country) {
  return country == "UK" ? "GB" : country;
}

}  // namespace

/// What a show is searched by.
struct Lookup::Wanted {
  std::string name, key;  // the key in the form in which names are compared
  std::optional<int> year;
  std::string country;

  Wanted(const std::string& given, const Reading& reading)
      : name(reading.show), year(reading.year), country(reading.country) {
    if (given != name) {
      // What the user wants instead may say year and country as files do.
      const Reading meant = read_name(given + " S01E01.mkv");
      name = meant.show.empty() ? given : meant.show;
      if (meant.year) year = meant.year;
      if (!meant.country.empty()) country = meant.country;
    }
    key = match_key(name);
  }

  /// The names of which the year or the country is a part: "Space 1999".
  std::vector<std::string> longer_names() const {
    std::vector<std::string> names;
    if (year) names.push_back(name + " " + std::to_string(*year));
    if (!country.empty()) names.push_back(name + " " + country);
    return names;
  }

  /// What a show's year and country, where both sides know them, add to the likeness of its name.
  int hints(const CatalogueShow& show) const {
    int points = 0;
    if (year && show.year != 0) {
      const int apart = std::abs(*year - show.year);
      points += apart == 0 ? 30 : apart == 1 ? 10 : -40;
    }
    if (!country.empty() && !show.country.empty()) points += country_code(country) == show.country ? 30 : -30;
    return points;
  }
};

struct Lookup::Scored {
  CatalogueShow show;
  int score = 0;
  int likeness = 0;  // of its name, up to 100
  std::string other_name = {};

  void take(int like, int hints, const std::string& by = {}) {
    if (like == 0 || like + hints <= score) return;
    score = like + hints;
    likeness = like;
    other_name = by;
  }
};

namespace {

template <typename Shows>
std::string listed(const Shows& shows) {
  std::string text;
  for (std::size_t i = 0; i < std::min(shows.size(), max_listed); ++i) {
    text.append(i == 0 ? "" : ", ").append(description(shows[i].show));
  }
  return text;
}

template <typename Shows>
UnclearShow unclear(const std::string& what, const Shows& shows) {
  std::vector<CatalogueShow> candidates;
  candidates.reserve(shows.size());
  for (const auto& each : shows) candidates.push_back(each.show);
  return {what + listed(shows), std::move(candidates)};
}

}  // namespace

std::string description(const CatalogueShow& show) {
  std::string text = show.name + " (";
  if (show.year != 0) text += std::to_string(show.year) + ", ";
  if (!show.country.empty()) text += show.country + ", ";
  return text + name_of_show(show.id) + ")";
}

std::string name_of_show(int id) {
  return std::string(id_prefix) + std::to_string(id);
}

bool says_title(const Reading& reading, const CatalogueEpisode& episode) {
  return !reading.episode_title.empty() && match_key(reading.episode_title) == match_key(episode.title);
}

void Lookup::begin_pass() {
  service_.begin_pass();
  remembered_.clear();
  found_.clear();
  lists_.clear();
}

void Lookup::begin_item(bool anew) {
  const Age usual = anew ? Age::Newest : Age::Any;
  if (usual == usual_) return;
  usual_ = usual;
  found_.clear();
  lists_.clear();
}

std::vector<CatalogueShow> Lookup::candidates(const std::string& name, bool again) {
  if (const std::optional<int> id = id_in(name)) return {show_of_id(*id)};
  const std::string wanted = lower_case(composed(name));
  const auto known = found_.find(wanted);
  if (known != found_.end() && !again) return known->second;
  const std::string answer = service_.get("/search/shows?q=" + query_encoded(wanted), again ? Age::ADay : usual_).text;
  return found_[wanted] = answer.empty() ? std::vector<CatalogueShow>() : found_shows_of(answer);
}

FoundShow Lookup::show(const std::string& name, const Reading& reading) {
  if (const std::optional<int> id = choice(choice_key(name, reading))) return {show_of_id(*id), "as it was chosen"};
  if (const std::optional<int> id = id_in(name)) return {show_of_id(*id), "by its number"};
  const Wanted wanted(name, reading);
  try {
    return clear_winner(wanted, reading, false);
  } catch (const Failure&) {
    return clear_winner(wanted, reading, true);  // the service may know more by now
  }
}

CatalogueShow Lookup::show_of_id(int id) {
  const std::string request = "/shows/" + std::to_string(id);
  std::string answer = service_.get(request, usual_).text;
  if (answer.empty()) answer = service_.get(request, Age::ADay).text;
  if (answer.empty()) throw Failure("There is no show with the number " + std::to_string(id));
  return show_of(answer);
}

/// The shows that the service gives, the best first.
std::vector<Lookup::Scored> Lookup::scored(const Wanted& wanted, bool again) {
  std::vector<Scored> shows;
  const auto search = [&](const std::string& name) {
    for (CatalogueShow& each : candidates(name, again)) {
      const auto has_its_id = [&each](const Scored& known) { return known.show.id == each.id; };
      if (std::ranges::none_of(shows, has_its_id)) shows.push_back({std::move(each)});
    }
    for (Scored& each : shows) {
      const std::string key = match_key(each.show.name);
      each.take(likeness(key, wanted.key), wanted.hints(each.show));
      for (const std::string& longer : wanted.longer_names()) {
        const int like = likeness(key, match_key(longer));
        if (like >= same_name) each.take(like, hint_in_name);
      }
    }
    std::ranges::stable_sort(shows, std::greater(), &Scored::score);
    return !shows.empty() && shows.front().score >= full_score;
  };
  bool is_found = search(wanted.name);
  for (const std::string& longer : wanted.longer_names()) is_found = is_found || search(longer);
  if (shows.empty() || shows.front().score < least_score) compare_other_names(shows, wanted);
  return shows;
}

/// The service finds shows by what they are called elsewhere as well.
void Lookup::compare_other_names(std::vector<Scored>& shows, const Wanted& wanted) {
  for (std::size_t i = 0; i < std::min(shows.size(), max_compared); ++i) {
    const std::string request = "/shows/" + std::to_string(shows[i].show.id) + "/akas";
    const std::string answer = service_.get(request, usual_).text;
    if (answer.empty()) continue;
    for (const std::string& name : other_names_of(answer)) {
      const int like = likeness(match_key(name), wanted.key);
      if (like >= same_name) shows[i].take(like, wanted.hints(shows[i].show), name);
    }
  }
  std::ranges::stable_sort(shows, std::greater(), &Scored::score);
}

FoundShow Lookup::clear_winner(const Wanted& wanted, const Reading& reading, bool again) {
  std::vector<Scored> fitting = scored(wanted, again);
  if (fitting.empty()) throw UnclearShow("The service knows no show \"" + wanted.name + "\"", {});
  const int best = fitting.front().score;
  if (best < least_score) throw unclear("No show clearly fits \"" + wanted.name + "\": ", fitting);
  std::erase_if(fitting,
                [best](const Scored& each) { return each.score < least_score || each.score <= best - clear_lead; });
  std::string why = "by its name";
  if (fitting.size() > 1 && fitting.size() <= max_compared) {
    const std::vector<Scored> all = fitting;
    std::erase_if(fitting, [&](const Scored& each) { return !has_episodes(each.show, reading); });
    why = "by its name, as the only one that has the episode";
    if (fitting.empty()) fitting = all;
  }
  if (fitting.size() > 1) throw unclear("More than one show fits: ", fitting);
  const Scored& winner = fitting.front();
  if (!winner.other_name.empty()) why = "by its other name \"" + winner.other_name + "\"";
  return {winner.show, why, winner.likeness < same_name};
}

/// `again`: when the list is older than a day.
const Lookup::List& Lookup::list(int show_id, bool with_specials, bool again) {
  const std::string request = "/shows/" + std::to_string(show_id) + "/episodes" + (with_specials ? "?specials=1" : "");
  const auto known = lists_.find(request);
  if (known != lists_.end() && !again) return known->second;
  const StoredAnswer answer = service_.get(request, again ? Age::ADay : usual_);
  List list;
  list.told = answer.fetched;
  if (!answer.text.empty()) list.all = episodes_of(answer.text);
  int count = 0;
  for (std::size_t i = 0; i < list.all.size(); ++i) {
    CatalogueEpisode& each = list.all[i];
    if (!each.number) continue;
    if (each.season > 0) each.absolute = ++count;
    list.numbered.try_emplace({each.season, *each.number}, i);
  }
  return lists_[request] = std::move(list);
}

FoundEpisodes Lookup::episodes(const CatalogueShow& show, const Reading& reading) {
  const auto found_as = [&](const Reading& meaning) {
    try {
      return in_list(show, meaning, false);
    } catch (const Failure&) {
      return in_list(show, meaning, true);
    }
  };
  if (!reading.other) return found_as(reading);
  const Reading other = other_meaning(reading);
  std::optional<FoundEpisodes> first, second;
  std::string trouble;
  try {
    first = found_as(reading);
  } catch (const NoSuchEpisode& missing) {
    trouble = missing.what();
  }
  try {
    second = found_as(other);
  } catch (const NoSuchEpisode& missing) {
    if (!first) throw NoSuchEpisode(trouble + ", and no " + number_text(other));
  }
  if (!first || (second && says_title(other, second->episodes.front()))) return *second;
  const auto numbers = [](const CatalogueEpisode& each) { return std::pair(each.season, each.number); };
  const bool is_one = second && std::ranges::equal(first->episodes, second->episodes, {}, numbers, numbers);
  if (second && !is_one && !says_title(reading, first->episodes.front())) {
    first->other_title = second->episodes.front().title;
  }
  return *first;
}

bool Lookup::has_episodes(const CatalogueShow& show, const Reading& reading) {
  try {
    return !in_list(show, reading, false).episodes.empty();
  } catch (const NoSuchEpisode&) {
    return reading.other && has_episodes(show, other_meaning(reading));
  } catch (const SeveralEpisodes&) {
    return true;
  }
}

FoundEpisodes Lookup::in_list(const CatalogueShow& show, const Reading& reading, bool again) {
  const bool is_special = reading.special || (reading.season == 0 && !reading.episodes.empty());
  const List& known = list(show.id, is_special, again);
  std::vector<CatalogueEpisode> found;
  const auto missing = [&show](const std::string& what) {
    return NoSuchEpisode("The listings of " + show.name + " have no " + what);
  };
  if (is_special) {
    for (const int number : reading.episodes) found.push_back(special(known, reading, number));
    if (reading.episodes.empty()) found.push_back(special(known, reading, 0));
  } else if (!reading.episodes.empty()) {
    const int season = reading.season.value_or(1);
    for (const int number : reading.episodes) {
      const auto at = known.numbered.find({season, number});
      if (at == known.numbered.end()) throw missing("episode " + std::to_string(season) + "x" + std::to_string(number));
      found.push_back(known.all[at->second]);
    }
  } else if (reading.date) {
    const bool is_known = std::ranges::find(known.all, reading.date, &CatalogueEpisode::date) != known.all.end();
    found.push_back(on_date(is_known ? known : list(show.id, true, again), reading));  // or a special's
  } else {
    for (const int number : reading.absolute) {
      const auto at = std::ranges::find(known.all, number, &CatalogueEpisode::absolute);
      const bool fits = number > 0 && at != known.all.end() && at->season == reading.season.value_or(at->season);
      if (!fits) throw missing("episode " + std::to_string(number) + (reading.season ? " in this season" : ""));
      found.push_back(*at);
    }
  }
  const auto behind = known.numbered.lower_bound({found.front().season + 1, 0});
  const int last_episode = behind == known.numbered.begin() ? 0 : std::prev(behind)->first.second;
  const int last_season = known.numbered.empty() ? 0 : known.numbered.rbegin()->first.first;
  return {std::move(found), known.told, reading, {}, last_season, last_episode};
}

/// By its title where the name tells one, by the date, or else as the one of that number in the list.
CatalogueEpisode Lookup::special(const List& list, const Reading& reading, int number) const {
  const std::string title = match_key(reading.episode_title);
  const CatalogueEpisode* counted = nullptr;
  int count = 0;
  for (const CatalogueEpisode& each : list.all) {
    if (each.number && each.season != 0) continue;
    if (!title.empty() && match_key(each.title) == title) return each;
    if (reading.date && each.date == reading.date) return each;
    if (++count == number) counted = &each;
  }
  if (counted == nullptr) {
    throw NoSuchEpisode("The listings have no special " + (number > 0 ? std::to_string(number) : "of this title"));
  }
  return *counted;
}

CatalogueEpisode Lookup::on_date(const List& list, const Reading& reading) const {
  std::vector<const CatalogueEpisode*> shown;
  for (const CatalogueEpisode& each : list.all) {
    if (each.date == reading.date) shown.push_back(&each);
  }
  if (shown.empty()) throw NoSuchEpisode("The listings have no episode of " + date_text(*reading.date));
  const std::string title = match_key(reading.episode_title);
  const auto of_title = std::ranges::find_if(shown, [&](const auto* each) { return match_key(each->title) == title; });
  if (of_title != shown.end()) return **of_title;
  if (shown.size() > 1) throw SeveralEpisodes("More than one episode was shown on " + date_text(*reading.date));
  return *shown.front();
}

std::string Lookup::choice_key(const std::string& name, const Reading& reading) {
  return match_key(name) + "|" + (reading.year ? std::to_string(*reading.year) : "") + "|" + reading.country;
}

void Lookup::choose(const std::string& key, int show_id, bool remember) {
  chosen_[key] = show_id;
  remembered_.erase(key);
  if (remember) store_.keep_choice(key, show_id);
}

std::optional<int> Lookup::choice(const std::string& key) {
  const auto known = chosen_.find(key);
  if (known != chosen_.end()) return known->second;
  const auto asked = remembered_.find(key);
  return asked != remembered_.end() ? asked->second : remembered_[key] = store_.choice(key);
}

void Lookup::forget(const std::string& key) {
  chosen_.erase(key);
  remembered_.erase(key);
  store_.forget_choice(key);
}

}  // namespace quorvel
