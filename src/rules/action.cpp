#include "rules/action.h"

namespace quorvel {

std::string_view action_name(int action) {
  switch (action) {
    case Rename:
      return "Rename";
    case MoveAndRename:
      return "Move & Rename";
    case CopyAndRename:
      return "Copy & Rename";
    default:
      return "";
  }
}

}  // namespace quorvel
