#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "fileops/file_job.h"
#include "naming/mask.h"
#include "naming/reader/reading.h"
#include "rules/existing.h"

namespace quorvel {

/// How far an item has got. Below Scanning counts as not yet done.
enum class QueueState : std::int32_t {
  Cancelled = -2,
  Failed = -1,
  Inactive = 0,
  Scanning = 1,
  Searching = 2,
  FetchingListings = 3,
  CheckingFilters = 4,
  Processing = 5,
  Done = 6,
};

/// Whether an item is neither waiting nor being worked on.
constexpr bool has_ended(QueueState state) {
  return state == QueueState::Done || state < QueueState::Inactive;
}

/// One file that the user wants renamed.
struct QueueItem {
  QueueState state = QueueState::Inactive;
  QueueState failed_at = QueueState::Inactive;  // how far it had got when it failed last
  std::string path;                             // of the source, in full, as it was added
  std::string added;                            // the folder that it was added with; empty when it was added alone
  std::string filename;                         // its last component
  std::int32_t episode = 0;
  std::int32_t season = 0;
  std::vector<int> more_episodes;   // of the same season, when the file holds several
  std::optional<Reading> reading;   // what the name says, in the exact way
  std::string match;                // which show was found for it and why, for the user
  std::vector<std::string> doubts;  // what a person should look at
  // When the service told of the episodes, in the exact way.
  std::optional<std::chrono::sys_seconds> listings_told;
  bool look_up_anew = false;      // what is kept of the service's answers is not to be used
  bool lost_characters = false;   // of the names that the service gave
  bool is_right_already = false;  // it has failed because there was nothing to do
  bool is_left_by_rule = false;   // such a one, for the rule wants its file left alone or given up; error_text says why
  bool is_unclear = false;        // more than one show may be meant
  bool came_by_itself = false;    // from a watched folder; until its destination has been looked at
  bool no_answer = false;         // it has failed because the service gave none
  // In a review: it was taken for one; its operation waits for the user's word; the user's word, once there is one.
  bool is_under_review = false;
  bool is_planned = false;
  std::optional<bool> is_chosen;
  std::optional<Reading> corrected;  // the numbers that the user says the file has
  std::string search_name;           // detected in the name, perhaps replaced by an exception
  std::string show_name;             // as the listings service gives it
  std::int32_t show_id = 0;
  std::string show_url;  // in double quotes, as the service gives it
  std::string episode_title;
  NameFacts facts;  // for the new name
  std::string new_name;
  std::string dest_path;          // ends in a separator
  std::int32_t filter_index = 0;  // of the rule that fits
  // What that rule said when it was chosen: the user may change the rules before the file operation or its undoing, and
  // taking a move back as if it had been a copy would delete the only file.
  std::int32_t action = 0;
  Existing existing = Existing::Ask;
  bool replaces = false;  // the file that has its new name, which goes to the trash
  bool confirmed = false;
  std::optional<FileStamp> source_stamp;  // of the source before the operation
  std::optional<FileStamp> done_stamp;    // of the file that the operation has left at the destination
  std::int64_t past_id = 0;               // of that operation in the history
  std::vector<FileJob> companions;        // what goes along, or went
  std::string error_text;                 // why it failed or was cancelled; lines end in CR LF
  std::string episode_url;                // in double quotes, as the service gives it

  /// Before it is taken, perhaps not for the first time.
  void forget_findings() {
    error_text.clear();
    match.clear();
    doubts.clear();
    reading.reset();
    more_episodes.clear();
    facts = {};
    companions.clear();
    replaces = false;
    listings_told.reset();
    lost_characters = false;
    is_right_already = false;
    is_left_by_rule = false;
    is_unclear = false;
    no_answer = false;
    is_under_review = false;
    is_planned = false;
    is_chosen.reset();
  }

  /// What the item was found to be, for the log.
  std::string episode_text() const { return show_name + " " + std::to_string(season) + "x" + std::to_string(episode); }
};

/// Whether a person should do something about the item, or look at it at least.
inline bool needs_user(const QueueItem& item) {
  return item.state == QueueState::Done
             ? !item.doubts.empty()
             : (item.state == QueueState::Failed && !item.is_right_already) || item.is_planned;
}

/// The file operation that the item's fields describe.
inline FileJob job_of(const QueueItem& item) {
  return {.path = item.path,
          .filename = item.filename,
          .new_name = item.new_name,
          .dest_path = item.dest_path,
          .action = item.action,
          .done_stamp = item.done_stamp,
          .past_id = item.past_id,
          .replaces = item.replaces,
          .companions = item.companions};
}

}  // namespace quorvel
