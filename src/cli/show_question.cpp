#include "cli/show_question.h"

#include "naming/reader/reading_text.h"
#include "platform/console.h"
#include "text/cut.h"
#include "text/numbers.h"

namespace quorvel::cli {

bool ShowQuestion::ask(const QueueItem& item, const UnclearShow& unclear) {
  const std::string key = Lookup::choice_key(item.search_name, *item.reading);
  if (skipped_.contains(key)) return false;
  terminal_.set_progress({});
  terminal_.error_line(item.filename + ": which show is " + show_text(*item.reading) + "?");
  std::vector<CatalogueShow> shows = unclear.candidates;
  list(shows);
  while (true) {
    terminal_.ask("The number, another name to search for, or s to skip: ");
    const std::optional<std::string> line = console::read_line();
    if (!line) terminal_.error_line("");
    const std::string answer(trim(line.value_or("")));
    if (answer.empty() || answer == "s" || answer == "S") {
      skipped_.insert(key);
      return false;
    }
    const int number = leading_number(answer);
    if (std::to_string(number) == answer && number >= 1 && number <= static_cast<int>(shows.size())) {
      lookup_.choose(key, shows[static_cast<std::size_t>(number) - 1].id, true);
      return true;
    }
    try {
      shows = lookup_.candidates(answer);
      list(shows);
    } catch (const Failure& failure) {
      terminal_.error_line(std::string("  ") + failure.what());
    }
  }
}

void ShowQuestion::list(const std::vector<CatalogueShow>& shows) {
  if (shows.empty()) terminal_.error_line("  No show is known by that name");
  for (std::size_t i = 0; i < shows.size(); ++i) {
    const std::string network = shows[i].network.empty() ? "" : ", " + shows[i].network;
    terminal_.error_line("  " + std::to_string(i + 1) + "  " + description(shows[i]) + network);
  }
}

}  // namespace quorvel::cli
