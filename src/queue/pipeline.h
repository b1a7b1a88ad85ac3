#pragma once

#include "fileops/file_job.h"
#include "listings/episode_listings.h"
#include "listings/show_search.h"
#include "platform/log.h"
#include "platform/user_interface.h"
#include "queue/queue_item.h"
#include "queue/settings.h"
#include "rules/exceptions.h"
#include "rules/filters.h"

namespace quorvel {

/// The stages that take one item from its file name to the file operation. Each reads and fills in the item's fields
/// and returns whether the item may go on; when it may not, the log says why. Any of them may throw Failure.
class Pipeline {
 public:
  struct Parts {
    const Settings& settings;
    const FilterList& filters;
    const ExceptionList& exceptions;
    ShowSearch& search;
    EpisodeListings& listings;
    FileJobs& jobs;
    UserInterface& ui;
    Log& log;
  };

  explicit Pipeline(Parts parts) : parts_(parts) {}

  /// Before each pass.
  void begin_pass() {
    parts_.search.forget_unfound();
    parts_.listings.forget_unfound();
  }

  /// search_name, season and episode, from the name of the file's folder or from its own.
  bool getbits(QueueItem& item, bool parentFolder);

  /// search_name as the first exception for it says.
  void checkex(QueueItem& item);

  /// show_name, show_id and show_url.
  bool searchtv(QueueItem& item);

  /// episode_title and episode_url.
  bool getlistings(QueueItem& item);

  /// filter_index, action, new_name and dest_path. Throws Failure when a rule fits but its folder or the new name would
  /// not be what the system takes it for.
  bool dofilter(QueueItem& item);

  /// Whether the operation may go on: asks the user when the settings say so.
  bool confirm(QueueItem& item);

  /// Renames, moves or copies; error_text when that fails.
  bool fileops(QueueItem& item);

 private:
  Parts parts_;
};

}  // namespace quorvel
