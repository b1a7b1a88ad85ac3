#include "listings/episode_listings.h"

#include <chrono>

#include "listings/answer.h"
#include "naming/service_names.h"
#include "text/code_page.h"
#include "text/cut.h"
#include "text/failure.h"
#include "text/numbers.h"
#include "text/title.h"
#include "transport/no_answer.h"

namespace quorvel {
namespace {

std::uint64_t key(int season, int number) {
  return static_cast<std::uint64_t>(static_cast<std::uint32_t>(season)) << 32 | static_cast<std::uint32_t>(number);
}

std::chrono::sys_days to_day(std::string_view year, std::string_view month, std::string_view day) {
  const int year_number = to_number(year), month_number = to_number(month), day_number = to_number(day);
  const std::chrono::year_month_day date{std::chrono::year(year_number),
                                         std::chrono::month(static_cast<unsigned>(month_number)),
                                         std::chrono::day(static_cast<unsigned>(day_number))};
  // chrono keeps only the low bits of larger numbers.
  const bool in_range = year_number > 0 && year_number <= 9999 && month_number > 0 && month_number <= 12 &&
                        day_number > 0 && day_number <= 31;
  if (!in_range || !date.ok()) throw Failure("no such day");
  return date;
}

// Far above every show there is, so that no list can exhaust the memory.
constexpr std::size_t max_episodes = 100'000;
constexpr std::size_t max_text = std::size_t{8} << 20U;

std::size_t text_size(const Episode& episode) {
  return episode.airdate.size() + episode.url.size() + episode.title.size();
}

std::string_view title_in(std::string_view piece) {
  return textbetween(piece, "\"name\":\"", "\",");
}

Episode episode_in(std::string_view piece) {
  Episode episode;
  episode.season = to_number(textbetween(piece, "\"season\":", ","));
  episode.title = cleantitle(title_in(piece));
  episode.number = to_number(textbetween(piece, "\"number\":", ","));
  episode.url = textbetween(piece, "\"url\":", ",");
  episode.airdate = textbetween(piece, "\"airdate\":\"", "\",");
  return episode;
}

}  // namespace

void EpisodeList::clear() {
  episodes_.clear();
  first_.clear();
}

void EpisodeList::append(Episode episode) {
  first_.try_emplace(key(episode.season, episode.number), episodes_.size());
  episodes_.push_back(std::move(episode));
}

const Episode* EpisodeList::find(int season, int number) const {
  const auto found = first_.find(key(season, number));
  return found == first_.end() ? nullptr : &episodes_[found->second];
}

std::optional<FoundEpisode> EpisodeListings::getlistings(const Show& show, const std::string& search_name, int season,
                                                         int episode, Options options) {
  if (!options.use_cache) {
    log_.debug_log("Ep cache disabled", LogLevel::Verbose);
  } else {
    const Episode* cached = checkepcache(show.name) ? list_.find(season, episode) : nullptr;
    if (cached != nullptr) {
      log_.debug_log("Found episode in cache", LogLevel::Verbose);
      return finish(*cached, options.decode_utf8);
    }
    log_.debug_log("No matches found in ep cache", LogLevel::Verbose);
  }
  const std::string key = std::to_string(show.id) + " " + std::to_string(season) + "x" + std::to_string(episode);
  const Episode* fetched =
      unfound_.unless_known(key, [&] { return fetch(show, search_name, season, episode, options.use_cache); });
  if (fetched == nullptr) return {};
  log_.debug_log("Found episode in listings", LogLevel::Verbose);
  return finish(*fetched, options.decode_utf8);
}

FoundEpisode EpisodeListings::finish(const Episode& episode, bool decode_utf8) {
  return {decode_utf8 ? UTF8Decode(episode.title, log_) : episode.title, episode.url};
}

bool EpisodeListings::checkepcache(const std::string& show_name) {
  if (known_.share_cache(show_name)) return false;
  const std::string file = cache_.file(show_name, ".epc");
  const std::optional<FileStamp> stamp = cache_.stamp(file);
  if (!stamp) return false;
  if (stamp == loaded_stamp_ && file == loaded_file_) return true;
  const std::string text = cache_.load(file);
  if (text.find("\r\n") == std::string::npos) return false;
  try {
    load_cache(text);
  } catch (const Failure& failure) {
    log_.debug_log(std::string("Error checking ep cache: ") + failure.what(), LogLevel::Normal);
    return false;
  }
  loaded_file_ = file;
  loaded_stamp_ = stamp;
  return true;
}

void EpisodeListings::load_cache(const std::string& text) {
  list_.clear();
  loaded_stamp_.reset();
  const std::vector<std::string_view> lines = split(text, "\r\n");
  for (std::size_t i = 0; i + 1 < lines.size(); ++i) {
    const std::vector<std::string_view> fields = split(lines[i], "\t");
    if (fields.size() < 5) {
      throw Failure("line " + std::to_string(i + 1) + " has " + std::to_string(fields.size()) + " of 5 fields");
    }
    if (!is_clean(fields[4])) throw Failure("line " + std::to_string(i + 1) + " has a title that is none");
    list_.append({std::string(fields[0]), to_number(fields[1]), to_number(fields[2]), std::string(fields[3]),
                  std::string(fields[4])});
  }
}

const Episode* EpisodeListings::fetch(const Show& show, const std::string& search_name, int season, int episode,
                                      bool use_cache) {
  log_.debug_log("Getting listings for: " + show.name, LogLevel::Verbose);
  std::string url = api_base_ + "/shows/" + std::to_string(show.id) + "/episodes";
  if (!accept_answer(http_.GetData(url, ""), show, search_name)) return nullptr;
  if (use_cache) update_cache(show.name);
  return list_.find(season, episode);
}

/// By the time the cache is written the answer has been freed: a long one takes much memory.
bool EpisodeListings::accept_answer(const std::string& answer, const Show& show, const std::string& search_name) {
  if (answer.empty()) throw NoAnswer(http_.trouble());
  if (answer == "[]") {
    log_.debug_log("Site reports no episodes for: \"" + search_name + "\"", LogLevel::Normal);
    return false;
  }
  if (answer.find("\"id\"") == std::string::npos || !is_whole_list(answer)) {
    log_.debug_log("Error parsing listings (Err 5)", LogLevel::Normal);
    return false;
  }
  read_answer(answer, show.id);
  return true;
}

void EpisodeListings::read_answer(std::string_view answer, int show_id) {
  constexpr std::string_view mark = "\"id\":";
  list_.clear();
  loaded_stamp_.reset();
  std::size_t text = 0;
  for (std::size_t at = answer.find(mark), next = 0; at != std::string_view::npos; at = next) {
    at += mark.size();
    next = answer.find(mark, at);
    const std::string_view piece = answer.substr(at, next - at);
    Episode episode = episode_in(piece);
    if (lacks_characters(to_code_page(episode.title), to_code_page(title_in(piece)))) {
      lossy_.insert({show_id, episode.season, episode.number});
    }
    text += text_size(episode);
    if (list_.all().size() == max_episodes || text > max_text) {
      list_.clear();
      throw Failure("the service lists more episodes than any show has");
    }
    list_.append(std::move(episode));
  }
}

void EpisodeListings::update_cache(const std::string& show_name) {
  log_.debug_log("Updating ep cache", LogLevel::Verbose);
  std::string text;
  bool all_dated = true;
  for (const Episode& episode : list_.all()) {
    // is_aired ignores what follows a date's third part, and tabs there would split it into further fields.
    const bool fits =
        fits_cache_field(episode.airdate) && fits_cache_field(episode.url) && fits_cache_field(episode.title);
    const std::optional<bool> aired = is_aired(episode.airdate);
    all_dated = all_dated && aired;
    if (!fits || !aired.value_or(false)) continue;
    text += episode.airdate + "\t" + std::to_string(episode.season) + "\t" + std::to_string(episode.number) + "\t" +
            episode.url + "\t" + episode.title + "\r\n";
  }
  if (!all_dated) log_.debug_log("Error checking date", LogLevel::Normal);
  cache_.store(cache_.file(show_name, ".epc"), text);
}

std::optional<bool> EpisodeListings::is_aired(std::string_view airdate) const {
  if (airdate == "0000-00-00" || airdate == "0-0-0") return false;
  try {
    const std::vector<std::string_view> parts = split(airdate, "-");
    if (parts.size() < 3) throw Failure("a part is missing");
    if (parts[1] == "00" || parts[2] == "00") return false;
    return to_day(parts[0], parts[1], parts[2]) <= std::chrono::sys_days(clock_.today());
  } catch (const Failure&) {
    return {};
  }
}

}  // namespace quorvel
