#pragma once

#include <string>

#include "queue/queue_item.h"
#include "rules/filters.h"

namespace quorvel {

/// Where a rule puts a file.
struct Placement {
  std::string new_name, dest_path;  // the latter ends in a separator
};

/// What the rule makes of an item whose episode is known. Throws Failure when its folder or the new name would not be
/// what the system takes it for.
Placement placement_by(const AFilter& rule, const QueueItem& item);

}  // namespace quorvel
