#include "queue/classic_identification.h"

#include "naming/episode_patterns.h"
#include "naming/reader/reading_text.h"
#include "naming/service_names.h"
#include "queue/stage.h"
#include "text/case.h"

namespace quorvel {
namespace {

constexpr const char* listings_site = "tvmaze.com";

}  // namespace

void ClassicIdentification::begin_pass() {
  parts_.search.forget_unfound();
  parts_.listings.forget_unfound();
}

Identified ClassicIdentification::identify(QueueItem& item, const Reached& reached) {
  const auto names_an_episode = [&](bool parent_folder) {
    return run_stage(log_, "Error getting filename filter: ", [&] { return getbits(item, parent_folder); });
  };
  reached(QueueState::Scanning);
  if (!names_an_episode(true) && !names_an_episode(false) && !(item.corrected && reads_show(item))) {
    return {Identified::Failed, "Unable to find filename filter for: " + item.filename,
            "Unable to find filename filter"};
  }

  log_.debug_log("Found filename filter for: " + item.filename, LogLevel::Verbose);
  const Reading reading = read_name(item.path);
  item.facts = facts_in(reading);
  if (item.corrected) {
    // Given while exact names were on.
    if (!item.corrected->season || item.corrected->episodes.size() != 1) {
      return {Identified::Failed, {}, "Its corrected number needs exact names"};
    }
    item.season = *item.corrected->season;
    item.episode = item.corrected->episodes.front();
  } else if (!is_trusted(item, reading)) {
    return {Identified::Failed, {}, item.doubts.front()};
  }
  if (!reached(QueueState::Searching)) return {Identified::Interrupted};
  log_.debug_log("Checking exceptions", LogLevel::Verbose);
  checkex(item);
  log_.debug_log("Searching for: " + item.search_name, LogLevel::Verbose);
  const std::string searched = "\r\nSearched for: " + item.search_name;
  const StageResult search = run_stage(log_, "Error searching for show: ", [&] { return searchtv(item); });
  if (!search) {
    return {Identified::Failed, "Unable to find show page for: " + item.search_name,
            std::string("Unable to find show on ") + listings_site + searched + search.line(), search.no_answer};
  }

  if (!reached(QueueState::FetchingListings)) return {Identified::Interrupted};
  const StageResult listings = run_stage(log_, "Error getting listings: ", [&] { return getlistings(item); });
  if (!listings) {
    return {Identified::Failed, "Unable to find listings for: " + item.episode_text(),
            std::string("Unable to find listings on ") + listings_site + searched +
                "\r\nDetected as: " + item.episode_text() + listings.line(),
            listings.no_answer};
  }
  return {};
}

bool ClassicIdentification::getbits(QueueItem& item, bool parentFolder) {
  const std::string subject = lower_case(parentFolder ? parent_folder_name(item.path) : item.filename);
  log_.debug_log("Looking up filename filter for: " + subject + (parentFolder ? " (p=1)" : " (p=0)"),
                 LogLevel::Verbose);
  const std::optional<Detection> found = parentFolder ? detect_in_folder(subject) : detect_in_file(subject);
  if (!found) {
    log_.debug_log("No filter found", LogLevel::Verbose);
    return false;
  }
  if (found->is_refused) return false;
  item.search_name = found->show;
  item.season = found->season;
  item.episode = found->episode;
  log_.debug_log("Found filename filter with id: " + std::to_string(found->id), LogLevel::Verbose);
  return true;
}

bool ClassicIdentification::reads_show(QueueItem& item) {
  item.search_name = lower_case(read_name(item.path).show);
  return !item.search_name.empty();
}

bool ClassicIdentification::is_trusted(QueueItem& item, const Reading& reading) {
  if (!reading.certain || !reading.has_numbers()) return true;
  const bool is_same = reading.season == item.season && reading.episodes == std::vector<int>{item.episode};
  // Where a name only counts, or tells its number without a season, the patterns have made a season of it.
  if (is_same || (reading.episodes.empty() && !reading.date && reading.absolute == std::vector<int>{item.episode})) {
    return true;
  }
  return may_go_on_with(item, "The name seems to say " + number_text(reading) + ", and was read as season " +
                                  std::to_string(item.season) + ", episode " + std::to_string(item.episode));
}

void ClassicIdentification::checkex(QueueItem& item) {
  if (const auto name = parts_.exceptions.replacement(item.search_name)) item.search_name = *name;
}

bool ClassicIdentification::searchtv(QueueItem& item) {
  const std::optional<Show> show = parts_.search.searchtv(item.search_name, !settings_.nocache);
  if (!show) return false;
  item.show_id = show->id;
  item.show_name = without_control_characters(show->name, log_);
  if (item.show_name.empty()) throw Failure("The show has no name that a file can have");
  item.show_url = show->url;
  item.lost_characters = parts_.search.has_lost_characters(*show);
  return true;
}

bool ClassicIdentification::getlistings(QueueItem& item) {
  const std::optional<FoundEpisode> episode =
      parts_.listings.getlistings({item.show_id, item.show_name, item.show_url}, item.search_name, item.season,
                                  item.episode, {.use_cache = !settings_.nocache, .decode_utf8 = !settings_.noutf8});
  if (!episode) return false;
  item.episode_title = without_control_characters(episode->title, log_);
  if (item.episode_title.empty()) {
    log_.debug_log("The episode has no title that a file can have", LogLevel::Normal);
  }
  item.episode_url = episode->url;
  if (parts_.listings.has_lost_characters(item.show_id, item.season, item.episode)) item.lost_characters = true;
  return true;
}

}  // namespace quorvel
