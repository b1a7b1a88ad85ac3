#pragma once

#include <functional>
#include <string>

#include "platform/files.h"
#include "platform/log.h"
#include "platform/user_interface.h"
#include "queue/settings.h"
#include "queue/work_queue.h"

namespace quorvel {

/// Why a path was not queued.
enum class Refusal { None, TooShort, Missing, NotAFile, AlreadyQueued, TypeNotListed, Sample };

/// Whether a file of that path is none to take, by its name alone.
Refusal refusal_of_name(const Settings& settings, const std::string& path);

/// What happened to one path.
struct IntakeResult {
  Refusal refusal = Refusal::None;
  bool is_folder = false;
  int queued = 0;    // files
  int left_out = 0;  // files in the folder that were not queued
  int unread = 0;    // folders in it, or itself, that could not be read
};

/// The only way into the queue.
class Intake {
 public:
  /// `is_busy`: whether a pass of the processor is running.
  Intake(WorkQueue& queue, const Settings& settings, const Files& files, UserInterface& ui, Log& log,
         std::function<bool()> is_busy)
      : queue_(queue), settings_(settings), files_(files), ui_(ui), log_(log), is_busy_(std::move(is_busy)) {}

  /// Queues the file at `path`, or every suitable file below the folder there; `path` may stand in double quotes.
  /// With `start`, a pass follows. True when one file was queued, so never for a folder.
  bool add_to_queue(const std::string& path, bool start);

  /// Queues a file that came into `folder`, which ends in a separator, by itself. False when it cannot be taken.
  bool take_watched(const std::string& path, const std::string& folder, bool start);

  /// The same as add_to_queue(), with a full account of what happened. Where files may have been missed, the log says
  /// so.
  IntakeResult take(const std::string& path, bool start);

 private:
  IntakeResult take_folder(const std::string& path);
  Refusal take_file(const std::string& path, bool start);

  WorkQueue& queue_;
  const Settings& settings_;
  const Files& files_;
  UserInterface& ui_;
  Log& log_;
  std::function<bool()> is_busy_;
};

}  // namespace quorvel
