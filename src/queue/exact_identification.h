#pragma once

#include <optional>

#include "catalogue/lookup.h"
#include "platform/log.h"
#include "queue/identification.h"
#include "queue/settings.h"
#include "rules/exceptions.h"

namespace quorvel {

/// Reads names with the reader, chooses among the shows that the service knows, and keeps every character of the names
/// that a file can have. What is not clear fails, with what it might be.
class ExactIdentification : public Identification {
 public:
  ExactIdentification(const Settings& settings, const ExceptionList& exceptions, Lookup& lookup, Log& log)
      : settings_(settings), exceptions_(exceptions), lookup_(lookup), log_(log) {}

  void begin_pass() override { lookup_.begin_pass(settings_.nocache); }
  Identified identify(QueueItem& item, const Reached& reached) override;

  /// The show that all files belong to, by its number at the service, whatever their names say.
  std::optional<int> show_of_all;

 private:
  bool read(QueueItem& item);
  bool find_show(QueueItem& item);
  bool find_episodes(QueueItem& item);

  const Settings& settings_;
  const ExceptionList& exceptions_;
  Lookup& lookup_;
  Log& log_;
  CatalogueShow show_;  // of the item that is being identified
};

}  // namespace quorvel
