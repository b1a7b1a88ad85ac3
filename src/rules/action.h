#pragma once

#include <string_view>

namespace quorvel {

/// What a rule does with a file. Rule files may hold other numbers, which do nothing.
enum Action { Rename = 1, MoveAndRename = 2, CopyAndRename = 3 };

/// "Rename", "Move & Rename" or "Copy & Rename"; empty for other values.
constexpr std::string_view action_name(int action) {
  switch (action) {
    case Rename:
      return "Rename";
    case MoveAndRename:
      return "Move & Rename";
    case CopyAndRename:
      return "Copy & Rename";
    default:
      return {};
  }
}

}  // namespace quorvel
