#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "queue/queue_item.h"

namespace quorvel {

/// What came out of a pass: its items, once they have ended, in numbers and in words.
struct PassResult {
  std::map<int, int> done_by_action;  // of the rules
  int doubtful = 0;                   // done, but a person should look at them
  int failed = 0, cancelled = 0;
  int right_already = 0;     // had their name and place, or nothing was to be done; they count as nothing else
  int left_by_rule = 0;      // of these, were left alone or given up because their new name was taken
  int lossy = 0;             // done, with names that have lost characters
  std::int64_t past_id = 0;  // of one of the operations in the history; 0 when there was none

  void add(const QueueItem& item);

  int done() const;
  int all() const { return done() + failed + cancelled + right_already; }
  bool needs_user() const { return failed + doubtful > 0; }

  /// "9 renamed, 1 of them uncertain, 2 already right, 3 need you"; empty where nothing has ended.
  std::string text() const;
};

}  // namespace quorvel
