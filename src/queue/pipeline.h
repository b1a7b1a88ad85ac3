#pragma once

#include "fileops/file_job.h"
#include "platform/files.h"
#include "platform/log.h"
#include "platform/user_interface.h"
#include "queue/companions.h"
#include "queue/duplicates.h"
#include "queue/queue_item.h"
#include "queue/settings.h"
#include "queue/tidying.h"
#include "rules/filters.h"

namespace quorvel {

/// The stages that take an item whose episode is known to the file operation. Each reads and fills in the item's fields
/// and returns whether the item may go on; when it may not, the log says why. Any of them may throw Failure.
class Pipeline {
 public:
  struct Parts {
    const Settings& settings;
    const FilterList& filters;
    Companions& companions;
    Tidying& tidying;
    Duplicates& duplicates;
    FileJobs& jobs;
    Files& files;
    UserInterface& ui;
    Log& log;
  };

  explicit Pipeline(Parts parts) : parts_(parts) {}

  void begin_pass() { parts_.companions.begin_pass(); }
  void end_pass() { parts_.tidying.end_pass(); }

  /// filter_index, action, new_name, dest_path and companions. Throws Failure when a rule fits but its folder or the
  /// new name would not be what the system takes it for.
  bool dofilter(QueueItem& item);

  /// What the rule wants where another file has the new name; error_text when that is to leave the item's file.
  bool duplicates(QueueItem& item);

  /// The operation is to wait for the user's word: what the file is now.
  void plan(QueueItem& item);

  /// Whether the operation may go on: asks the user when the settings say so.
  bool confirm(QueueItem& item);

  /// Renames, moves, copies or links; error_text when that fails.
  bool fileops(QueueItem& item);
  /// How the item's operation has ended.
  void note(QueueItem& item, const FileJobResult& result);

 private:
  Parts parts_;
};

}  // namespace quorvel
