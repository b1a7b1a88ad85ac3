#pragma once

#include <map>
#include <string>

#include "queue/queue_item.h"

/// What a run has done, for programs: an object of JSON a line.
namespace quorvel::cli {

/// `is_dry_run`: what would be done is "planned".
std::string json_of(const QueueItem& item, bool is_dry_run);

/// The last line: how many items have ended in each state, those apart that had their name and place already.
std::string json_of(const std::map<QueueState, int>& count, int right_already, bool is_dry_run);

}  // namespace quorvel::cli
