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

struct Scored {
  CatalogueShow show;
  int score = 0;
};

/// Where people write another code than the service.
std::string country_code(const std::string& country) {
  return country == "UK" ? "GB" : country;
}

/// A name counts up to 100; what stands behind it in a file's name can decide between names that are alike.
int score(const CatalogueShow& show, const std::string& key, const Reading& reading) {
  int score = likeness(match_key(show.name), key);
  if (score == 0) return 0;
  if (reading.year && show.year != 0) {
    const int apart = std::abs(*reading.year - show.year);
    score += apart == 0 ? 30 : apart == 1 ? 10 : -40;
  }
  if (!reading.country.empty() && !show.country.empty()) {
    score += country_code(reading.country) == show.country ? 30 : -30;
  }
  return score;
}

std::string description(const CatalogueShow& show) {
  std::string text = show.name + " (";
  if (show.year != 0) text += std::to_string(show.year) + ", ";
  if (!show.country.empty()) text += show.country + ", ";
  return text + std::string(id_prefix) + std::to_string(show.id) + ")";
}

std::string listed(const std::vector<Scored>& shows) {
  std::string text;
  for (std::size_t i = 0; i < std::min(shows.size(), max_listed); ++i) {
    text.append(i == 0 ? "" : ", ").append(description(shows[i].show));
  }
  return text;
}

/// Name, year and country, for they are what was chosen by.
std::string choice_key(const Reading& reading) {
  return match_key(reading.show) + "|" + (reading.year ? std::to_string(*reading.year) : "") + "|" + reading.country;
}

}  // namespace

void Lookup::begin_pass(bool anew) {
  service_.begin_pass();
  usual_ = anew ? Age::Newest : Age::Any;
  found_.clear();
  lists_.clear();
}

std::vector<CatalogueShow> Lookup::candidates(const std::string& name, bool again) {
  const std::string wanted = lower_case(composed(name));
  const auto known = found_.find(wanted);
  if (known != found_.end() && !again) return known->second;
  const std::string answer = service_.get("/search/shows?q=" + query_encoded(wanted), again ? Age::ADay : usual_);
  return found_[wanted] = answer.empty() ? std::vector<CatalogueShow>() : found_shows_of(answer);
}

CatalogueShow Lookup::show(const std::string& name, const Reading& reading) {
  std::optional<int> id;
  if (name.starts_with(id_prefix)) {
    id = to_number(std::string_view(name).substr(id_prefix.size()));
  } else if (name == reading.show) {
    id = store_.choice(choice_key(reading));
  }
  if (id) return show_of_id(*id);
  try {
    return clear_winner(name, reading, false);
  } catch (const Failure&) {
    return clear_winner(name, reading, true);  // the service may know more by now
  }
}

CatalogueShow Lookup::show_of_id(int id) {
  const std::string request = "/shows/" + std::to_string(id);
  std::string answer = service_.get(request, usual_);
  if (answer.empty()) answer = service_.get(request, Age::ADay);
  if (answer.empty()) throw Failure("There is no show with the number " + std::to_string(id));
  return show_of(answer);
}

CatalogueShow Lookup::clear_winner(const std::string& name, const Reading& reading, bool again) {
  const std::string key = match_key(name);
  std::vector<Scored> fitting;
  for (CatalogueShow& each : candidates(name, again)) {
    const int points = score(each, key, reading);
    fitting.push_back({std::move(each), points});
  }
  if (fitting.empty()) throw Failure("The service knows no show \"" + name + "\"");
  std::ranges::stable_sort(fitting, std::greater(), &Scored::score);
  const int best = fitting.front().score;
  if (best < least_score) throw Failure("No show clearly fits \"" + name + "\": " + listed(fitting));
  std::erase_if(fitting,
                [best](const Scored& each) { return each.score < least_score || each.score <= best - clear_lead; });
  if (fitting.size() > 1 && fitting.size() <= max_compared) {
    const std::vector<Scored> all = fitting;
    std::erase_if(fitting, [&](const Scored& each) { return !has_episodes(each.show, reading); });
    if (fitting.empty()) fitting = all;
  }
  if (fitting.size() > 1) throw Failure("More than one show fits: " + listed(fitting));
  return fitting.front().show;
}

/// `again`: when the list is older than a day.
const Lookup::List& Lookup::list(int show_id, bool with_specials, bool again) {
  const std::string request = "/shows/" + std::to_string(show_id) + "/episodes" + (with_specials ? "?specials=1" : "");
  const auto known = lists_.find(request);
  if (known != lists_.end() && !again) return known->second;
  const std::string answer = service_.get(request, again ? Age::ADay : usual_);
  List list;
  if (!answer.empty()) list.all = episodes_of(answer);
  for (std::size_t i = 0; i < list.all.size(); ++i) {
    if (list.all[i].number) list.numbered.try_emplace({list.all[i].season, *list.all[i].number}, i);
  }
  return lists_[request] = std::move(list);
}

std::vector<CatalogueEpisode> Lookup::episodes(const CatalogueShow& show, const Reading& reading) {
  try {
    return in_list(show, reading, false);
  } catch (const Failure&) {
    return in_list(show, reading, true);
  }
}

bool Lookup::has_episodes(const CatalogueShow& show, const Reading& reading) {
  try {
    return !in_list(show, reading, false).empty();
  } catch (const NoSuchEpisode&) {
    return false;
  } catch (const SeveralEpisodes&) {
    return true;
  }
}

std::vector<CatalogueEpisode> Lookup::in_list(const CatalogueShow& show, const Reading& reading, bool again) {
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
    found.push_back(on_date(known, reading));
  } else {
    for (const int number : reading.absolute) {
      int count = 0;
      const auto at = std::ranges::find_if(
          known.all, [&](const CatalogueEpisode& each) { return each.number && each.season > 0 && ++count == number; });
      if (at == known.all.end()) throw missing("episode " + std::to_string(number));
      found.push_back(*at);
    }
  }
  return found;
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

void Lookup::choose(const Reading& reading, int show_id) {
  store_.keep_choice(choice_key(reading), show_id);
}

void Lookup::forget(const Reading& reading) {
  store_.forget_choice(choice_key(reading));
}

}  // namespace quorvel
