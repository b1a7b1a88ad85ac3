#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "history/history.h"
#include "shell/session.h"

namespace quorvel {

/// What the user has undone from the history: the queue's rows show it as well.
class PastUndoing {
 public:
  explicit PastUndoing(Session& session) : session_(session) {}

  struct Result {
    int wanted = 0, undone = 0, refused = 0;
  };

  /// Takes back those that the history says can be, by now, the last one first. `goes_on` is called before each with
  /// its place and their number; false ends it.
  Result undo(const std::vector<PastOperation>& operations, const std::function<bool(int place, int count)>& goes_on);

  /// The last pass of which something can be taken back that was not refused in this run; the last one at all when all
  /// was. Empty when nothing can be taken back.
  std::optional<PastPass> last_pass();

  /// Why it could not be taken back when that was tried last, in this run; empty when it could.
  std::string refusal(const PastOperation& operation) const;

 private:
  Session& session_;
  std::map<std::int64_t, std::string> refusals_;
};

/// "12 undone", "9 of 12 undone, 3 left alone".
std::string text_of(const PastUndoing::Result& result);

}  // namespace quorvel
