#include "review/sheet.h"

#include <algorithm>
#include <array>
#include <utility>

#include "catalogue/lookup.h"
#include "naming/file_names.h"
#include "naming/reader/reading_text.h"
#include "naming/service_names.h"
#include "text/case.h"
#include "text/cut.h"

namespace quorvel {
namespace {

struct MarkFacts {
  Mark mark;
  Need need;
  const char* text;
};

constexpr auto marks = std::to_array<MarkFacts>({
    {Mark::Ready, Need::Nothing, "Ready"},
    {Mark::RightAlready, Need::Nothing, "Already right"},
    {Mark::Uncertain, Need::Decision, "Uncertain"},
    {Mark::TwoForOneName, Need::Decision, "Two files, one name"},
    {Mark::ShowUnclear, Need::Decision, "Show unclear"},
    {Mark::TargetExists, Need::Help, "Target exists"},
    {Mark::ShowUnknown, Need::Help, "Show unknown"},
    {Mark::EpisodeUnknown, Need::Help, "Episode unknown"},
    {Mark::Unfit, Need::Help, "No name"},
    {Mark::Changed, Need::Help, "Changed meanwhile"},
});

const MarkFacts& facts_of(Mark mark) {
  return marks.at(static_cast<std::size_t>(mark));
}

constexpr const char* enter_numbers = "Enter season and episode as in \"2x05\".";
constexpr const char* forbidden = "\\/:*?\"<>|";

std::string counted(int count, const char* one, const char* several) {
  return std::to_string(count) + (count == 1 ? one : several);
}

std::string in_season(int season, const std::vector<int>& episodes) {
  std::string text = std::to_string(season) + "x";
  for (const int episode : episodes) {
    text += std::string(text.ends_with('x') ? "" : "-") + (episode < 10 ? "0" : "") + std::to_string(episode);
  }
  return text;
}

std::string numbers_of(const Reading& reading) {
  if (reading.date) return date_text(*reading.date);
  if (!reading.episodes.empty()) return in_season(reading.season.value_or(1), reading.episodes);
  return reading.absolute.empty() ? "" : std::to_string(reading.absolute.front());
}

}  // namespace

Need need_of(Mark mark) {
  return facts_of(mark).need;
}

// What is in the sheet.

void ReviewSheet::refresh() {
  collect();
  weigh_all();
}

void ReviewSheet::collect() {
  groups_.clear();
  rows_.clear();
  std::map<std::string, std::size_t> places;
  for (int index = 1; index <= parts_.queue.count(); ++index) {
    const QueueItem& item = parts_.queue.at(index);
    const bool has_failed = item.is_under_review && item.state == QueueState::Failed;
    if (!item.is_planned && !has_failed) continue;
    rows_[index];
    const bool is_read = item.is_planned || item.failed_at > QueueState::Scanning;
    const std::string key = !is_read       ? ""
                            : item.reading ? Lookup::choice_key(item.search_name, *item.reading)
                                           : item.search_name;
    const auto [place, is_new] = places.try_emplace(key, groups_.size());
    if (is_new) {
      Group& group = groups_.emplace_back();
      group.key = key;
      if (is_read) group.read_as = item.reading ? show_text(*item.reading) : item.search_name;
      if (item.reading && is_read && item.reading->show != item.search_name) {
        group.read_as += ", searched for as \"" + item.search_name + "\"";
      }
    }
    Group& group = groups_[place->second];
    group.items.push_back(index);
    const bool is_found = item.is_planned || item.failed_at > QueueState::Searching;
    if (group.found.empty() && is_found) group.found = item.match.empty() ? item.show_name : item.match;
  }
}

std::vector<int> ReviewSheet::planned() const {
  std::vector<int> items;
  for (const auto& [item, row] : rows_) {
    if (parts_.queue.at(item).is_planned) items.push_back(item);
  }
  return items;
}

bool ReviewSheet::is_waiting() const {
  return std::ranges::any_of(rows_, [this](const auto& row) { return parts_.queue.at(row.first).is_planned; });
}

// The marks.

/// Those that have or want a name which another one has or wants.
void ReviewSheet::relate(const std::vector<int>& planned) {
  std::map<std::string, int> uses;
  const auto names_of = [this](int item) {
    const FileJob job = job_of(parts_.queue.at(item));
    std::vector<std::string> names;
    const auto add = [&names](const FileJob& each) {
      std::string path = lower_case(each.path), destination = lower_case(each.destination());
      if (path != destination) names.push_back(std::move(destination));
      names.push_back(std::move(path));
    };
    add(job);
    std::ranges::for_each(job.companions, add);
    return names;
  };
  for (const int item : planned) {
    for (const std::string& name : names_of(item)) ++uses[name];
  }
  for (const int item : planned) {
    rows_[item].is_related =
        std::ranges::any_of(names_of(item), [&](const std::string& name) { return uses[name] > 1; });
  }
}

/// What is not ticked is looked at as if all were; then what is ticked, alone.
void ReviewSheet::weigh_all() {
  const std::vector<int> items = planned();
  for (auto& [item, row] : rows_) {
    if (!parts_.queue.at(item).is_planned) row.mark = mark_of_failed(item);
  }
  relate(items);
  weigh(items);
  std::vector<int> chosen;
  bool are_related = false;
  for (const int item : items) {
    Row& row = rows_[item];
    row.is_ticked = may_tick(item) && parts_.queue.at(item).is_chosen.value_or(row.mark == Mark::Ready);
    if (row.is_ticked) chosen.push_back(item);
    are_related = are_related || (row.is_ticked && row.is_related);
  }
  if (are_related) weigh(chosen);
}

void ReviewSheet::weigh(const std::vector<int>& items) {
  std::vector<Batch::Entry> entries;
  entries.reserve(items.size());
  for (const int item : items) {
    const QueueItem& each = parts_.queue.at(item);
    entries.push_back({job_of(each), each.source_stamp});
  }
  const std::vector<Batch::Trouble> troubles = parts_.batch.troubles(entries);
  for (std::size_t i = 0; i < items.size(); ++i) {
    Row& row = rows_[items[i]];
    row.mark = mark_of_planned(items[i], troubles[i].kind);
    row.trouble = troubles[i].text;
  }
}

Mark ReviewSheet::mark_of_planned(int item, Batch::Trouble::Kind trouble) const {
  const QueueItem& each = parts_.queue.at(item);
  switch (trouble) {
    case Batch::Trouble::None:
      return each.doubts.empty() ? Mark::Ready : Mark::Uncertain;
    case Batch::Trouble::SameName:
      return each.path == job_of(each).destination() ? Mark::RightAlready : Mark::Unfit;
    case Batch::Trouble::TwoForOneName:
      return Mark::TwoForOneName;
    case Batch::Trouble::Taken:
      return Mark::TargetExists;
    default:
      return Mark::Changed;
  }
}

Mark ReviewSheet::mark_of_failed(int item) const {
  const QueueItem& each = parts_.queue.at(item);
  if (each.is_unclear) return Mark::ShowUnclear;
  if (each.failed_at == QueueState::Searching) return Mark::ShowUnknown;
  return each.failed_at < QueueState::CheckingFilters ? Mark::EpisodeUnknown : Mark::Unfit;
}

bool ReviewSheet::shows(int item, Filter filter) const {
  const Need need = need_of(mark(item));
  return filter == Filter::All || need == (filter == Filter::Decisions ? Need::Decision : Need::Help);
}

// What the user sees.

std::string ReviewSheet::mark_text(int item) const {
  const MarkFacts& facts = facts_of(mark(item));
  const std::size_t count = parts_.queue.at(item).companions.size();
  return facts.text + (count == 0 || mark(item) != Mark::Ready ? "" : ", with " + std::to_string(count) + " more");
}

std::string ReviewSheet::reason(int item) const {
  const QueueItem& each = parts_.queue.at(item);
  if (!each.is_planned) return each.error_text;
  std::string text = rows_.at(item).trouble;
  const auto add = [&text](const std::string& line) { text += (text.empty() ? "" : "\r\n") + line; };
  for (const std::string& doubt : each.doubts) add(doubt);
  if (each.lost_characters) add("The new name lacks characters that the service gave. Exact names keep them.");
  return text;
}

std::string ReviewSheet::new_name(int item) const {
  const QueueItem& each = parts_.queue.at(item);
  return each.is_planned ? each.new_name : "";
}

std::string ReviewSheet::name_to_edit(int item) const {
  return parts_.queue.at(item).is_planned ? remextension(parts_.queue.at(item).new_name) : "";
}

std::string ReviewSheet::folder(int item) const {
  return parts_.queue.at(item).is_planned ? parts_.queue.at(item).dest_path : "";
}

bool ReviewSheet::moves(int item) const {
  const QueueItem& each = parts_.queue.at(item);
  return each.is_planned && each.dest_path != with_separator(getpath(each.path, 0));
}

std::string ReviewSheet::numbers(int item) const {
  const QueueItem& each = parts_.queue.at(item);
  if (!each.is_planned && each.corrected) return numbers_of(*each.corrected);
  if (!each.is_planned && each.reading) return numbers_of(*each.reading);
  if (!each.is_planned && each.failed_at <= QueueState::Scanning) return {};
  std::vector<int> episodes{each.episode};
  episodes.insert(episodes.end(), each.more_episodes.begin(), each.more_episodes.end());
  return in_season(each.season, episodes);
}

std::string ReviewSheet::heading() const {
  int ready = 0, right = 0, decisions = 0, problems = 0;
  for (const auto& [item, row] : rows_) {
    ready += row.mark == Mark::Ready ? 1 : 0;
    right += row.mark == Mark::RightAlready ? 1 : 0;
    decisions += need_of(row.mark) == Need::Decision ? 1 : 0;
    problems += need_of(row.mark) == Need::Help ? 1 : 0;
  }
  std::string text =
      counted(static_cast<int>(rows_.size()), " file", " files") + ", " + std::to_string(ready) + " ready";
  if (right > 0) text += ", " + std::to_string(right) + " already right";
  if (decisions > 0) text += ", " + counted(decisions, " needs a decision", " need a decision");
  if (problems > 0) text += ", " + counted(problems, " problem", " problems");
  return text;
}

// What is to be done.

void ReviewSheet::tick(const std::vector<int>& items, bool on) {
  bool are_related = false;
  for (const int item : items) {
    if (!may_tick(item)) continue;
    parts_.queue.at(item).is_chosen = rows_[item].is_ticked = on;
    are_related = are_related || rows_[item].is_related;
  }
  if (are_related) weigh_all();
}

void ReviewSheet::tick_all_ready() {
  std::vector<int> ready;
  for (const auto& [item, row] : rows_) {
    if (row.mark == Mark::Ready) ready.push_back(item);
  }
  tick(ready, true);
}

int ReviewSheet::ticked() const {
  return static_cast<int>(std::ranges::count_if(rows_, [this](const auto& row) { return is_ticked(row.first); }));
}

std::string ReviewSheet::rename(int item, const std::string& name) {
  QueueItem& each = parts_.queue.at(item);
  if (!each.is_planned) return "There is no name to change yet.";
  const std::string stem(trim(name)), extension = getextension(each.new_name);
  if (stem.empty()) return "Enter a name.";
  const auto is_forbidden = [](char character) {
    return static_cast<unsigned char>(character) < ' ' ||
           std::string_view(forbidden).find(character) != std::string_view::npos;
  };
  if (std::ranges::any_of(stem, is_forbidden)) return std::string("A name cannot have any of ") + forbidden;
  const std::string new_name = stem + "." + extension;
  if (new_name.starts_with('.') && !each.filename.starts_with('.')) return "A dot in front would hide the file.";
  if (const auto trouble = name_trouble(new_name)) return "The new name " + *trouble;
  if (new_name == each.new_name) return {};
  const bool was_ready = mark(item) == Mark::Ready;
  for (FileJob& companion : each.companions) {
    companion.new_name = renamed_with(companion.new_name, each.new_name, new_name);
  }
  each.new_name = new_name;
  if (!was_ready) each.is_chosen.reset();
  weigh_all();
  parts_.view.update_lv(item);
  return {};
}

/// What the user's numbers say, or a sentence that says why they cannot be used.
std::variant<Reading, std::string> ReviewSheet::read_numbers(const std::string& numbers) const {
  const std::string text(trim(numbers));
  if (text.find_first_of(forbidden) != std::string::npos) return std::string(enter_numbers);
  const std::string show = "Show";
  const bool is_counted = text.find_first_not_of("0123456789") == std::string::npos;  // over all seasons
  const Reading reading = read_name(show + (is_counted ? " #" : " ") + text);
  if (reading.show != show || !reading.has_numbers() || !reading.certain) {
    return std::string(enter_numbers);
  }
  if (!parts_.settings.exact && (!reading.season || reading.episodes.size() != 1)) {
    return std::string("Enter one season and one episode, as in \"2x05\"; more needs exact names.");
  }
  return reading;
}

std::string ReviewSheet::refusal_of(const std::string& numbers) const {
  const auto read = read_numbers(numbers);
  const auto* const refusal = std::get_if<std::string>(&read);
  return refusal != nullptr ? *refusal : "";
}

std::string ReviewSheet::correct(int item, const std::string& numbers) {
  const auto read = read_numbers(numbers);
  if (const auto* const refusal = std::get_if<std::string>(&read)) return *refusal;
  parts_.queue.at(item).corrected = std::get<Reading>(read);
  parts_.processor.take_again({item}, false);
  refresh();
  return {};
}

/// Takes all out of the sheet; which of them were planned.
std::vector<int> ReviewSheet::leave() {
  std::vector<int> items = planned();
  for (const auto& [item, row] : rows_) parts_.queue.at(item).is_under_review = false;
  return items;
}

void ReviewSheet::apply() {
  std::vector<int> items, rest;
  for (const int item : leave()) {
    (is_ticked(item) || mark(item) == Mark::RightAlready ? items : rest).push_back(item);
  }
  parts_.processor.give_up(rest, "Not chosen in the review");
  parts_.processor.apply(items);
  refresh();
}

void ReviewSheet::cancel() {
  parts_.processor.give_up(leave(), "The review was cancelled");
  refresh();
}

}  // namespace quorvel
