#pragma once

#include "fileops/file_job.h"
#include "listings/episode_listings.h"
#include "listings/show_search.h"
#include "platform/log.h"
#include "platform/user_interface.h"
#include "queue/settings.h"
#include "queue/work_queue.h"
#include "rules/exceptions.h"
#include "rules/filters.h"

namespace quorvel {

/// The stages that take one item from its file name to the file operation. Each takes an index that the queue holds,
/// reads and fills in the item's fields, and answers whether the item may go on; when it may not, the log says why.
class Pipeline {
 public:
  struct Parts {
    WorkQueue& queue;
    const Settings& settings;
    FilterList& filters;
    ExceptionList& exceptions;
    ShowSearch& search;
    EpisodeListings& listings;
    FileJobs& jobs;
    UserInterface& ui;
    Log& log;
  };

  explicit Pipeline(Parts parts) : parts_(parts) {}

  /// search_name, season and episode, from the name of the file's folder or from its own.
  bool getbits(int index, bool parentFolder);

  /// search_name as the first exception for it says.
  void checkex(int index);

  /// show_name, show_id and show_url.
  bool searchtv(int index);

  /// episode_title and episode_url.
  bool getlistings(int index);

  /// filter_index, new_name and dest_path. Throws Failure when a rule fits but its folder or the new name
  /// would not be what the system takes it for.
  bool dofilter(int index);

  /// Whether the operation may go on: asks the user when the settings say so.
  bool confirm(int index);

  /// Renames, moves or copies; error_text when that fails.
  bool fileops(int index);

  /// Takes the file operation back; error_text when that fails.
  bool undofileops(int index);

 private:
  bool record(QueueItem& item, const FileJobResult& result);

  Parts parts_;
};

}  // namespace quorvel
