#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "platform/user_interface.h"
#include "shell/past_undoing.h"

namespace quorvel {

/// The history as it is looked at: the passes, and the files of those that are chosen. Rows count from 1.
class PastSheet {
 public:
  PastSheet(Session& session, PastUndoing& undoing) : session_(session), undoing_(undoing) { read(); }

  /// Reads the history anew; what was chosen stays chosen.
  void read();

  /// Time, what was done; the latest pass is the first.
  std::vector<ListRow> passes() const;
  void choose(const std::vector<int>& passes);
  /// The rows of the passes that are chosen.
  std::vector<int> chosen() const;

  /// What was done, old name, new name, what came of it.
  std::vector<ListRow> files() const;
  /// One of them in full, or how many they are.
  std::string details(const std::vector<int>& files) const;
  /// The folder where all of them are, as the history has it; empty when there are several.
  std::string folder_of(const std::vector<int>& files) const;
  int undoable(const std::vector<int>& files) const;
  /// Of all in the chosen passes.
  int undoable() const;

  using GoesOn = std::function<bool(int place, int count)>;
  PastUndoing::Result undo(const std::vector<int>& files, const GoesOn& goes_on);
  PastUndoing::Result undo_all(const GoesOn& goes_on);

 private:
  const PastOperation& file(int row) const { return files_.at(static_cast<std::size_t>(row) - 1); }
  PastUndoing::Result undo(const std::vector<PastOperation>& operations, const GoesOn& goes_on);
  std::string outcome(const PastOperation& operation) const;
  void collect();

  Session& session_;
  PastUndoing& undoing_;
  std::vector<PastPass> passes_;
  std::set<std::int64_t> chosen_;  // their numbers
  std::vector<PastOperation> files_;
};

}  // namespace quorvel
