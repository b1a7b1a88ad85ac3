#include "shell/watching.h"

#include "naming/file_names.h"
#include "text/cut.h"

namespace quorvel {

std::vector<std::string> watched_folders(const Settings& settings) {
  std::vector<std::string> folders;
  for (const std::string_view line : split(settings.watched, "\n")) {
    if (!line.empty() && is_full_path(line)) folders.emplace_back(line);
  }
  return folders;
}

std::vector<int> Watching::tick(Watcher::Duration patience) {
  follow_settings();
  std::vector<int> again;
  if (!watcher_) return again;
  note_ended();
  for (const auto& [path, folder] : watcher_->ready(patience)) {
    const std::optional<int> held = item_of(path);
    const QueueState state = held ? session_.queue.at(*held).state : QueueState::Done;
    if (state == QueueState::Failed) {
      again.push_back(*held);
      given_.push_back(*held);
    } else if (state == QueueState::Done) {
      session_.queue.release(path);
      if (session_.intake.take_watched(path, folder, true)) given_.push_back(session_.queue.count());
    }  // else it waits for the user, who has stopped or undone it, or for its turn
  }
  return again;
}

/// What the user watches no longer is forgotten.
void Watching::follow_settings() {
  std::vector<std::string> wanted;
  if (session_.settings.watching) wanted = watched_folders(session_.settings);
  if (wanted == folders_) return;
  folders_ = wanted;
  given_.clear();
  watcher_.reset();
  FolderWatch& notices = *session_.ports.folder_watch;
  if (folders_.empty()) {
    for (int i = 0; i < 2; ++i) notices.forget_others();  // what was watched since the last time stays once
    return session_.log.debug_log("No folder is watched any more", LogLevel::Normal);
  }
  watcher_.emplace(Watcher::Parts{session_.settings, session_.ports.files, session_.ports.clock, notices, session_.log},
                   folders_);
  for (const std::string& folder : folders_) session_.log.debug_log("Watching " + folder, LogLevel::Normal);
}

void Watching::note_ended() {
  std::erase_if(given_, [this](int index) {
    const QueueItem& item = session_.queue.at(index);
    const bool is_over = has_ended(item.state) && !item.is_planned;
    if (is_over) watcher_->ended(item);
    return is_over;
  });
}

/// The last one of that path, which is most likely far behind.
std::optional<int> Watching::item_of(const std::string& path) const {
  if (!session_.queue.holds_path(path)) return {};
  for (int index = session_.queue.count(); index > 0; --index) {
    if (session_.queue.at(index).path == path) return index;
  }
  return {};
}

}  // namespace quorvel
