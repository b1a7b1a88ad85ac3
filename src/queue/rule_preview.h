#pragma once

#include <string>
#include <vector>

#include "queue/queue_item.h"
#include "rules/filters.h"

namespace quorvel {

/// What a rule that is being written would make of a file.
struct RulePreview {
  bool is_example = false;  // and no file of the user's
  std::string old_name;
  std::string new_name, folder;      // empty when the file would fail; the folder also when it is only renamed
  std::vector<std::string> remarks;  // sentences: why it would fail, and what is likely to be a mistake
};

/// Of the item, when its episode is known; else of an example, with as much as the exact way, or the classic one, finds
/// out.
RulePreview preview_of(const AFilter& rule, const QueueItem* item, bool exact);

/// That example.
QueueItem example_item(bool exact);

}  // namespace quorvel
