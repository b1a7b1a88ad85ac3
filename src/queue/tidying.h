#pragma once

#include <map>
#include <string>

#include "fileops/file_job.h"
#include "platform/files.h"
#include "platform/log.h"
#include "queue/queue_item.h"
#include "queue/settings.h"

namespace quorvel {

/// Folders that the last file was moved out of, or all but leftovers, go to the trash at the end of the pass: those
/// below the folder that the user has added, never that folder itself or one outside it.
class Tidying {
 public:
  Tidying(const Settings& settings, FileJobs& jobs, Files& files, Log& log)
      : settings_(settings), jobs_(jobs), files_(files), log_(log) {}

  /// The item's operation was done.
  void note(const QueueItem& item);
  void end_pass();

 private:
  bool is_leftover(const std::string& name) const;
  bool tidy(const std::string& folder);

  const Settings& settings_;
  FileJobs& jobs_;
  Files& files_;
  Log& log_;
  std::map<std::string, std::string> left_;  // the added folders, by those that files have left
};

}  // namespace quorvel
