#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "fileops/file_job.h"
#include "history/history.h"
#include "platform/files.h"
#include "platform/log.h"

namespace quorvel {

/// Takes operations of the history back, those of earlier runs too. What an undoing has done is in the history as well,
/// and can be taken back like everything else.
class PastUndo {
 public:
  struct Outcome {
    PastOperation operation;
    std::string from, to;                 // the file's path before and after; no `to` for what goes to the trash
    std::string trouble;                  // why it was not taken back; empty when it was
    std::int64_t by = 0;                  // the operation that has taken it back
    std::optional<FileStamp> stamp = {};  // of the file since
  };

  PastUndo(History& history, FileJobs& jobs, Files& files, Log& log)
      : history_(history), jobs_(jobs), files_(files), log_(log) {}

  /// Takes them back, the last one first. Each only when the file is the one that the operation has left, and when
  /// nothing stands where it came from; the others stay as they are. Those of a
  /// group go together: all that are still there or none. `goes_on` is called before each; false ends it.
  std::vector<Outcome> undo(std::vector<PastOperation> operations, const std::function<bool()>& goes_on = {});

  /// Settles what was under way when a process died, by what is there now, and tells it. What lies on a drive that is
  /// not there is left for a later start. Call it after the journal has cleared up.
  void settle(const std::string& work_dir);

 private:
  /// Why it cannot be taken back.
  std::string trouble_of(const PastOperation& operation) const;
  Outcome undo_one(const PastOperation& operation);
  FileJobResult undo_folder(const PastOperation& operation);
  std::vector<Outcome> undo_group(std::vector<PastOperation> group);
  bool is_dead(const std::string& owner, const std::string& work_dir);
  void bring_back(const PastOperation& aside);
  void settle_one(PastOperation operation);
  void settle_group(const PastOperation& last);

  History& history_;
  FileJobs& jobs_;
  Files& files_;
  Log& log_;
};

}  // namespace quorvel
