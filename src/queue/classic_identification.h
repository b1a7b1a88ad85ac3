#pragma once

#include "listings/episode_listings.h"
#include "listings/show_search.h"
#include "platform/log.h"
#include "queue/identification.h"
#include "queue/settings.h"
#include "rules/exceptions.h"

namespace quorvel {

/// Reads names by the episode patterns and takes the first show that the service gives.
class ClassicIdentification : public Identification {
 public:
  struct Parts {
    const ExceptionList& exceptions;
    ShowSearch& search;
    EpisodeListings& listings;
  };

  ClassicIdentification(const Settings& settings, Log& log, Parts parts)
      : Identification(settings, log), parts_(parts) {}

  void begin_pass() override;
  Identified identify(QueueItem& item, const Reached& reached) override;

 private:
  // The steps. Each returns whether the item may go on; when it may not, the log says why. Any may throw Failure.

  /// search_name, season and episode, from the name of the file's folder or from its own.
  bool getbits(QueueItem& item, bool parentFolder);
  /// search_name, where no pattern fits but the user has told the numbers.
  bool reads_show(QueueItem& item);
  /// What the reader is sure of and the patterns have read otherwise, as a doubt of the item. False when such an item
  /// is to fail.
  bool is_trusted(QueueItem& item, const Reading& reading);
  /// search_name as the first exception for it says.
  void checkex(QueueItem& item);
  /// show_name, show_id and show_url.
  bool searchtv(QueueItem& item);
  /// episode_title and episode_url.
  bool getlistings(QueueItem& item);

  Parts parts_;
};

}  // namespace quorvel
