#include "shell/show_choice.h"

#include <algorithm>

#include "naming/reader/reading_text.h"
#include "text/failure.h"
#include "text/restored.h"

namespace quorvel {
/// Read anew, for the item may not have been taken in the exact way yet, and exceptions may have come since.
ShowChoice::Name ShowChoice::name_of(const Session& session, int item) {
  const Reading reading = read_name(session.queue.at(item).path);
  return {session.exceptions.replacement(reading.show).value_or(reading.show), reading};
}

bool ShowChoice::is_possible(const Session& session, int item) {
  if (!session.settings.exact || !session.processor.may_take_again(item)) return false;
  const Reading reading = read_name(session.queue.at(item).path);
  return (reading.names_episode() || session.queue.at(item).corrected) && !reading.show.empty();
}

ShowChoice::ShowChoice(Session& session, int item) : session_(session), filename_(session.queue.at(item).filename) {
  const Name name = name_of(session, item);
  name_ = name.text;
  key_ = name.key();
  reading_ = name.reading;
}

std::string ShowChoice::read_as() const {
  return show_text(reading_) + ", " + number_text(reading_);
}

std::vector<int> ShowChoice::items() const {
  std::vector<int> items;
  for (int item = 1; item <= session_.queue.count(); ++item) {
    if (is_possible(session_, item) && name_of(session_, item).key() == key_) items.push_back(item);
  }
  return items;
}

std::string ShowChoice::others() const {
  const std::size_t count = items().size();
  if (count < 2) return {};
  const std::string others = std::to_string(count - 1);
  return "The choice is also for " + others + (count == 2 ? " other file" : " other files") + " of this show.";
}

std::vector<CatalogueShow> ShowChoice::shows_for(const std::string& name) {
  // A request that had trouble is made again only in a new pass; but one that runs still needs what it knows.
  if (!session_.processor.queue_busy()) session_.lookup.begin_pass();
  return session_.lookup.candidates(name, true);
}

std::string ShowChoice::search(const std::string& name) {
  found_.clear();
  if (name.find_first_not_of(' ') == std::string::npos) return "Enter the name of a show.";
  const Restored<bool> searching(is_searching_, true);
  std::string result;
  try {
    found_ = shows_for(name);
    const std::size_t count = found_.size();
    result = count == 0   ? "TVmaze knows no show called \"" + name + "\". Try another spelling, or fewer words."
             : count == 1 ? "1 show found"
                          : std::to_string(count) + " shows found";
  } catch (const Failure& failure) {
    result = std::string("The search has failed. ") + failure.what() + ".";
  }
  earlier_.clear();
  if (const std::optional<int> id = session_.lookup.choice(key_)) {
    earlier_ = name_of_show(*id);
    try {
      earlier_ = description(session_.lookup.show_of_id(*id));
    } catch (const Failure&) {
      return result;  // then its number tells which it is
    }
  }
  return result;
}

/// With a pass in progress the service's answer is waited for, because that pass's own request would end too.
void ShowChoice::give_up() {
  if (is_searching_ && !session_.processor.queue_busy()) session_.catalogue.cancel();
}

std::vector<ListRow> ShowChoice::rows() const {
  std::vector<ListRow> rows;
  for (const CatalogueShow& show : found_) {
    rows.push_back({"", {show.name, show.year == 0 ? "" : std::to_string(show.year), show.country, show.network}});
  }
  return rows;
}

std::string ShowChoice::earlier_choice() const {
  return earlier_.empty() ? "" : "Chosen for this name: " + earlier_;
}

std::optional<std::size_t> ShowChoice::place_of_earlier_choice() const {
  const std::optional<int> id = session_.lookup.choice(key_);
  const auto at = std::ranges::find_if(found_, [&id](const CatalogueShow& show) { return show.id == id; });
  if (at == found_.end()) return {};
  return static_cast<std::size_t>(at - found_.begin());
}

void ShowChoice::forget() {
  session_.lookup.forget(key_);
  earlier_.clear();
}

void ShowChoice::choose(std::size_t place, bool remember) {
  session_.lookup.choose(key_, found_.at(place).id, remember);
  session_.processor.take_again(items(), false);
}

}  // namespace quorvel
