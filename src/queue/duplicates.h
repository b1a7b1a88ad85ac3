#pragma once

#include <string>

#include "fileops/file_job.h"
#include "history/history.h"
#include "naming/quality.h"
#include "platform/files.h"
#include "platform/log.h"
#include "queue/companions.h"
#include "queue/queue_item.h"
#include "queue/settings.h"

namespace quorvel {

/// What a rule wants where another file has an item's new name already.
class Duplicates {
 public:
  Duplicates(const Settings& settings, Companions& companions, History& history, FileJobs& jobs, Files& files, Log& log)
      : settings_(settings), companions_(companions), history_(history), jobs_(jobs), files_(files), log_(log) {}

  /// Before the item's operation: gives it a name that is free, or lets it replace the other file. False when its file
  /// is to stay where it is, or has gone to the trash; error_text says why. In a review, and in the terminal's plans,
  /// names are numbered and all else is left to the user. What came by itself, was put there before and has been taken
  /// away since, is left where it is.
  bool settle(QueueItem& item);

 private:
  bool keep_both(QueueItem& item);
  bool keep_better(QueueItem& item);
  bool leave(QueueItem& item, std::string reason);
  bool has_gone(const FileJob& job) const;
  bool is_taken(const FileJob& job) const;
  bool is_copy_of_source(const FileJob& job) const;
  Quality quality_of_existing(const std::string& path);

  const Settings& settings_;
  Companions& companions_;
  History& history_;
  FileJobs& jobs_;
  Files& files_;
  Log& log_;
};

}  // namespace quorvel
