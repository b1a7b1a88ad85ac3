#pragma once

#include <string>
#include <vector>

#include "queue/queue_item.h"
#include "shell/pass_result.h"
#include "text/json_text.h"

/// What a run has done, for programs: an object of JSON a line.
namespace quorvel::cli {

/// "done", "failed", "cancelled", "right already" or "left by rule", of an item that has ended; in a dry run, what
/// would be done is "planned".
std::string state_word(const QueueItem& item, bool is_dry_run);

/// Those of the item's season; empty where they are not known.
std::vector<int> episodes_of(const QueueItem& item);

std::string json_of(const QueueItem& item, bool is_dry_run);

/// What goes along with a file.
std::vector<JsonObject> companions_of(const std::vector<FileJob>& companions);

/// The last line: how many items have ended in each state, and how many are left.
std::string json_of(const PassResult& result, int left, bool is_dry_run);

}  // namespace quorvel::cli
