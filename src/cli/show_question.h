#pragma once

#include <set>
#include <string>

#include "catalogue/lookup.h"
#include "cli/terminal.h"
#include "queue/queue_item.h"

namespace quorvel::cli {

/// Asks in the terminal which show a name means, once for each name.
class ShowQuestion {
 public:
  ShowQuestion(Lookup& lookup, Terminal& terminal) : lookup_(lookup), terminal_(terminal) {}

  /// Whether the user has picked a show, which is then remembered for the name. Not where nobody can answer.
  bool ask(const QueueItem& item, const UnclearShow& unclear);

 private:
  void list(const std::vector<CatalogueShow>& shows);

  Lookup& lookup_;
  Terminal& terminal_;
  std::set<std::string> skipped_;  // keys of choices
};

}  // namespace quorvel::cli
