#pragma once

#include <optional>
#include <string>
#include <vector>

#include "shell/session.h"
#include "watch/watcher.h"

namespace quorvel {

/// The folders that the settings name, without those that are no full path.
std::vector<std::string> watched_folders(const Settings& settings);

/// Queues the files of the watched folders, as the settings are at the time.
class Watching {
 public:
  /// The session has a folder watch.
  explicit Watching(Session& session) : session_(session) {}

  /// To be called now and then, every second or so; takes no longer than about `patience`. Queues what is ready, and
  /// returns the items of the queue that should be tried again.
  std::vector<int> tick(Watcher::Duration patience);

  bool is_on() const { return watcher_.has_value(); }

 private:
  void follow_settings();
  void note_ended();
  std::optional<int> item_of(const std::string& path) const;

  Session& session_;
  std::vector<std::string> folders_;
  std::optional<Watcher> watcher_;
  std::vector<int> given_;  // items of the queue that are not known to have ended
};

}  // namespace quorvel
