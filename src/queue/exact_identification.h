#pragma once

#include <functional>
#include <optional>
#include <set>
#include <string>

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
      : Identification(settings, log), exceptions_(exceptions), lookup_(lookup) {}

  void begin_pass() override { lookup_.begin_pass(); }
  Identified identify(QueueItem& item, const Reached& reached) override;

  /// The show that all files belong to, by its number at the service, whatever their names say.
  std::optional<int> show_of_all;

  /// Whether what was chosen for the names that are met is forgotten first.
  bool forgets_choices = false;

  /// Asks the user which show is meant by a name that none clearly fits, and remembers the answer; false when the item
  /// is to fail.
  std::function<bool(const QueueItem& item, const UnclearShow& unclear)> choose = [](const auto&, const auto&) {
    return false;
  };

 private:
  bool read(QueueItem& item);
  bool find_show(QueueItem& item);
  bool find_episodes(QueueItem& item);

  NameFacts facts_of(const FoundEpisodes& found) const;
  FoundShow chosen_show(QueueItem& item);

  const ExceptionList& exceptions_;
  Lookup& lookup_;
  std::set<std::string> forgotten_;  // keys of choices
  CatalogueShow show_;               // of the item that is being identified
};

}  // namespace quorvel
