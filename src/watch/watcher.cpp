#include "watch/watcher.h"

#include <algorithm>
#include <array>
#include <tuple>

#include "naming/file_names.h"
#include "platform/native.h"
#include "queue/intake.h"
#include "text/natural_order.h"
#include "watch/downloads.h"

namespace quorvel {
namespace {

using namespace std::chrono_literals;
using Duration = Watcher::Duration;

using Patience = Watcher::Patience;
constexpr int no_end = std::numeric_limits<int>::max();
constexpr Patience none{Duration::zero(), Duration::zero(), 0};
constexpr Patience until_it_passes{1min, 1h, no_end};      // a service or a drive that is away, a disk that is full
constexpr Patience while_the_service_learns{1h, 24h, 11};  // about a week

Patience patience_with(const QueueItem& item, const Files& files) {
  if (item.state != QueueState::Failed || item.is_right_already) return none;
  if (item.no_answer) return until_it_passes;
  switch (item.failed_at) {
    case QueueState::Processing:
      return files.exists(job_of(item).destination()) ? while_the_service_learns : until_it_passes;
    case QueueState::Searching:
    case QueueState::FetchingListings:
      return while_the_service_learns;
    default:
      return none;
  }
}

Duration pause_before(int tries, const Patience& patience) {
  Duration pause = patience.first;
  for (int i = 0; i < tries && pause < patience.longest; ++i) pause *= 2;
  return std::min(pause, patience.longest);
}

}  // namespace

Watcher::Watcher(Parts parts, const std::vector<std::string>& folders) : parts_(parts) {
  for (const std::string& folder : folders) {
    const std::string path = with_separator(folder);
    if (std::ranges::find(folders_, path) == folders_.end()) folders_.push_back(path);
  }
}

std::vector<ReadyFile> Watcher::ready(Time::duration patience) {
  take_notices();
  if (!is_in_round_ && parts_.clock.instant() >= next_round()) begin_round();
  look(patience);

  std::vector<std::tuple<std::string, std::string, std::uint16_t>> found;
  const Time now = parts_.clock.instant();
  while (!due_.empty() && due_.begin()->first <= now && found.size() < most_at_once) {
    const std::string path = due_.begin()->second;
    Known& known = known_.at(path);
    const std::optional<FileStamp> stamp = parts_.files.stamp(path);
    if (!stamp) {
      forget(path);
    } else if (!stamp->same_contents(known.stamp) || !is_whole(path, *stamp)) {
      if (!stamp->same_contents(known.stamp)) known.tries = 0;
      known.stamp = *stamp;
      set_due(path, known, after(settling()));
    } else {
      set_due(path, known, never);
      found.emplace_back(natural_key(path), path, known.folder);
    }
  }
  std::ranges::sort(found);
  std::vector<ReadyFile> files;
  files.reserve(found.size());
  for (auto& [key, path, folder] : found) files.push_back({std::move(path), folders_[folder]});
  return files;
}

Duration Watcher::pause() const {
  if (!folders_left_.empty() || !files_left_.empty()) return Duration::zero();
  const Time next = due_.empty() ? next_round() : std::min(next_round(), due_.begin()->first);
  return std::max(std::chrono::ceil<Duration>(next - parts_.clock.instant()), Duration::zero());
}

void Watcher::ended(const QueueItem& item) {
  if (item.state == QueueState::Done) {
    if (item.done_stamp) note_own(job_of(item).destination(), *item.done_stamp);
    for (const FileJob& each : item.companions) {
      if (each.done_stamp) note_own(each.destination(), *each.done_stamp);
    }
  }
  try_again(item.path, patience_with(item, parts_.files));
}

void Watcher::put_off(const std::string& path) {
  try_again(path, until_it_passes);
}

void Watcher::try_again(const std::string& path, const Patience& patience) {
  const auto found = known_.find(path);
  if (found == known_.end()) return;
  if (!parts_.files.exists(path)) return forget(path);
  Known& known = found->second;
  if (known.tries < patience.tries) set_due(path, known, after(pause_before(known.tries++, patience)));
}

void Watcher::take_notices() {
  const FolderWatch::Changes changes = parts_.notices.take();
  if (!changes.are_all) is_wanted_ = true;
  for (const std::string& path : changes.paths) {
    const auto folder = std::ranges::find_if(folders_, [&](const std::string& each) { return path.starts_with(each); });
    if (folder == folders_.end()) continue;
    const Place place{path, static_cast<std::uint16_t>(folder - folders_.begin())};
    const bool is_folder = parts_.files.kind(path) == Files::Kind::Folder && !parts_.files.is_link(path);
    if (!is_folder) {
      files_left_.push_back(place);
    } else if (!is_passed_over_as_folder(getfname(path))) {
      folders_left_.push_back({with_separator(path), place.folder});
    }
  }
}

void Watcher::begin_round() {
  is_in_round_ = true;
  is_wanted_ = is_blind_ = false;
  ++round_;
  took_ = {};
  unread_.clear();
  still_.clear();
  for (std::size_t i = 0; i < folders_.size(); ++i) {
    folders_left_.push_back({folders_[i], static_cast<std::uint16_t>(i)});
  }
}

void Watcher::look(Time::duration patience) {
  const Time began = parts_.clock.instant();
  while (!folders_left_.empty() || !files_left_.empty()) {
    if (parts_.clock.instant() - began >= patience) break;
    std::vector<Place>& left = files_left_.empty() ? folders_left_ : files_left_;
    const Place place = std::move(left.back());
    left.pop_back();
    &left == &files_left_ ? look_at(place) : look_through(place);
  }
  took_ += parts_.clock.instant() - began;
  if (is_in_round_ && folders_left_.empty() && files_left_.empty()) end_round();
}

/// Notices are asked for before the folder is listed, so that nothing is missed in between.
void Watcher::look_through(const Place& folder) {
  const std::optional<std::string> blind = parts_.notices.watch(folder.path);
  const bool is_listed = parts_.files.list(folder.path, [&](const FolderEntry& entry) {
    const Place place{folder.path + entry.name, folder.folder};
    if (!entry.is_folder) {
      files_left_.push_back(place);
    } else if (!entry.is_link && !is_passed_over_as_folder(entry.name)) {
      folders_left_.push_back({with_separator(place.path), place.folder});
    }
  });
  if (!is_listed) {
    // One that has just gone is no trouble, but for those that are to be watched.
    const bool is_top = folder.path == folders_[folder.folder];
    const bool is_gone = !parts_.files.exists(folder.path);
    if (is_gone && !is_top) return;
    unread_.push_back(folder.path);
    tell(folder.path, is_gone ? "is not there now" : "cannot be read");
  } else if (blind) {
    tell(folders_[folder.folder], "is looked through every few seconds, for " + *blind);
  }
  if (!is_listed || blind) is_blind_ = true;
}

void Watcher::tell(const std::string& folder, const std::string& trouble) {
  still_[folder] = trouble;
  if (std::exchange(told_[folder], trouble) == trouble) return;
  parts_.log.debug_log("The folder " + folder + " " + trouble, LogLevel::Normal);
}

/// What was not met is forgotten, unless it may be where nothing could be seen.
void Watcher::end_round() {
  is_in_round_ = false;
  std::vector<std::string> gone;
  for (const auto& each : known_) {
    if (each.second.round == round_) continue;
    const bool may_be_there =
        std::ranges::any_of(unread_, [&](const std::string& folder) { return each.first.starts_with(folder); });
    if (!may_be_there) gone.push_back(each.first);
  }
  for (const std::string& path : gone) forget(path);
  own_before_ = std::exchange(own_, {});
  parts_.notices.forget_others();
  for (const auto& [folder, trouble] : told_) {
    if (still_.contains(folder)) continue;
    parts_.log.debug_log("The folder " + folder + " is watched again", LogLevel::Normal);
  }
  told_ = still_;
  const auto round = is_blind_ ? blind_round : usual_round;
  const Time now = parts_.clock.instant();
  rested_ = now + took_ * rest;
  next_round_ = std::max(now + round, rested_);
}

void Watcher::look_at(const Place& file) {
  const bool may_be_wanted =
      known_.contains(file.path) ||
      (refusal_of_name(parts_.settings, file.path) == Refusal::None && !is_passed_over_as_file(getfname(file.path)));
  if (!may_be_wanted) return;
  const std::optional<FileStamp> stamp = parts_.files.stamp(file.path);
  if (!stamp) return forget(file.path);
  const auto [found, is_new] = known_.try_emplace(file.path);
  Known& known = found->second;
  known.round = round_;
  known.folder = file.folder;
  if (!is_new && known.stamp.same_contents(*stamp)) return;
  known.stamp = *stamp;
  known.tries = 0;
  set_due(file.path, known, is_new && is_own(file.path, *stamp) ? never : after(settling()));
}

bool Watcher::is_own(const std::string& path, const FileStamp& stamp) const {
  return std::ranges::any_of(std::array{&own_, &own_before_}, [&](const Own* own) {
    const auto named = own->by_path.find(path);
    if (named != own->by_path.end() && named->second.same_contents(stamp)) return true;
    const auto numbered = own->by_number.find({stamp.device, stamp.id});
    return numbered != own->by_number.end() && numbered->second.same_contents(stamp);
  });
}

void Watcher::note_own(const std::string& path, const FileStamp& stamp) {
  own_.by_path[path] = stamp;
  own_.by_number[{stamp.device, stamp.id}] = stamp;
  if (const auto known = known_.find(path); known != known_.end()) {
    known->second.stamp = stamp;
    set_due(path, known->second, never);
  }
}

/// An empty file is one that has only been begun.
bool Watcher::is_whole(const std::string& path, const FileStamp& stamp) const {
  return stamp.size > 0 && parts_.files.kind(path) == Files::Kind::File && !has_partial_beside(parts_.files, path) &&
         !parts_.files.is_being_written(path);
}

void Watcher::set_due(const std::string& path, Known& known, Time due) {
  if (known.due != never) due_.erase({known.due, path});
  known.due = due;
  if (due != never) due_.emplace(due, path);
}

void Watcher::forget(const std::string& path) {
  const auto found = known_.find(path);
  if (found == known_.end()) return;
  set_due(path, found->second, never);
  known_.erase(found);
}

}  // namespace quorvel
