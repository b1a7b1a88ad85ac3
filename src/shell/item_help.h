#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "shell/session.h"

namespace quorvel {

/// What the user can do about an item.
enum class Remedy : std::uint8_t { ChooseShow, AddException, Retry, Undo, OpenFolder };

/// Why an item is not as it should be, and what helps.
struct ItemHelp {
  std::string text;  // a line each; empty for an item that is well
  std::vector<Remedy> remedies;
  bool operator==(const ItemHelp&) const = default;
};

/// Of items that have failed, and of those that are done and should be looked at. What the user has cancelled is well.
ItemHelp help_for(const Session& session, int item);

/// Why an item has failed, was cancelled or should be looked at, a line each; empty when there is nothing to say.
std::string reason_of(const QueueItem& item);

}  // namespace quorvel
