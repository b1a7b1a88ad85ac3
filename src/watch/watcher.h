#pragma once

#include <chrono>
#include <cstdint>
#include <limits>
#include <map>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/clock.h"
#include "platform/files.h"
#include "platform/folder_watch.h"
#include "platform/log.h"
#include "queue/queue_item.h"
#include "queue/settings.h"

namespace quorvel {

/// A file to be taken, and the watched folder that it is in, which ends in a separator.
struct ReadyFile {
  std::string path, folder;
  bool operator==(const ReadyFile&) const = default;
};

/// Finds the files below some folders that are ready to be taken: of a kind that the user wants, whole, and left alone
/// by everybody for a time. Each is told once, and again when it has changed or when what it failed by may have passed.
///
/// It learns of files by the system's notices, and by looking through the folders: every so often, for notices may be
/// missing, but never for more than a small share of the time.
class Watcher {
 public:
  struct Parts {
    const Settings& settings;
    const Files& files;
    const Clock& clock;
    FolderWatch& notices;
    Log& log;
  };
  using Duration = std::chrono::milliseconds;

  /// How often the folders are looked through: where notices come, and where not all do.
  static constexpr Duration usual_round = std::chrono::minutes(1), blind_round = std::chrono::seconds(10);
  /// After a look that has taken long: this many times as long.
  static constexpr int rest = 200;

  /// When a file that has failed is tried again, as long as it stays as it is: after `first`, and then after twice as
  /// long each time.
  struct Patience {
    Duration first, longest;
    int tries;
  };

  /// How many files are told at once at most.
  static constexpr std::size_t most_at_once = 1000;

  /// The folders are full paths. Those that are missing are looked for again.
  Watcher(Parts parts, const std::vector<std::string>& folders);

  /// What is ready, in natural order. Looking through folders stops after `patience`, and goes on the next time.
  std::vector<ReadyFile> ready(
      std::chrono::steady_clock::duration patience = std::chrono::steady_clock::duration::max());

  /// How long until ready() may have something to do, unless a notice comes before.
  Duration pause() const;

  /// What has become of a file that was told.
  void ended(const QueueItem& item);

  /// A file that was told could not be taken, for reasons that may pass.
  void put_off(const std::string& path);

  /// How many files are remembered.
  std::size_t known() const { return known_.size(); }

 private:
  using Time = std::chrono::steady_clock::time_point;
  static constexpr Time never = Time::max();

  struct Known {
    FileStamp stamp;
    Time due = never;  // when it is looked at again
    int tries = 0;     // after which it had failed by what may pass
    unsigned round = 0;
    std::uint16_t folder = 0;  // which of the watched ones it is in
  };
  struct Place {
    std::string path;
    std::uint16_t folder = 0;
  };
  /// What the program itself has put somewhere.
  struct Own {
    std::unordered_map<std::string, FileStamp> by_path;
    std::map<std::pair<std::uint64_t, std::uint64_t>, FileStamp> by_number;
  };

  void begin_round();
  void take_notices();
  void look(Time::duration patience);
  void look_through(const Place& folder);
  void list(const Place& folder);
  void end_round();
  void look_at(const Place& file);
  bool is_own(const std::string& path, const FileStamp& stamp) const;
  Time next_round() const { return is_wanted_ ? rested_ : next_round_; }
  bool is_whole(const std::string& path, const FileStamp& stamp) const;
  void try_again(const std::string& path, const Patience& patience);
  void set_due(const std::string& path, Known& known, Time due);
  void forget(const std::string& path);
  void note_own(const std::string& path, const FileStamp& stamp);
  void tell(const std::string& folder, const std::string& trouble);
  Time after(Duration time) const { return parts_.clock.instant() + time; }
  Duration settling() const { return std::chrono::seconds(parts_.settings.settle); }

  const Parts parts_;
  std::vector<std::string> folders_;  // each ends in a separator
  std::unordered_map<std::string, Known> known_;
  std::set<std::pair<Time, std::string>> due_;  // those of them that are to be looked at again
  Own own_, own_before_;                        // in this round, and in the one before

  // The round under way, or the last one.
  std::vector<Place> folders_left_, files_left_;
  std::vector<std::string> unread_;  // folders
  bool is_in_round_ = false, is_blind_ = false, is_wanted_ = false;
  unsigned round_ = 0;
  Time next_round_{}, rested_{};  // the latest and the earliest time for the next one
  Time::duration took_{};
  std::map<std::string, std::string> told_, still_;  // by folder: the troubles that the user knows of; those there are
};

}  // namespace quorvel
