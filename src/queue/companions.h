#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "fileops/file_job.h"
#include "platform/files.h"
#include "queue/settings.h"
#include "queue/work_queue.h"

namespace quorvel {

/// Finds what belongs to a video by its name: files beside it, and in a folder "Subs" or "Subtitles" there, that have
/// the video's name and an addition, and all in a folder of the video's name in such a folder. Of two videos whose
/// names fit, the file belongs to the longer one.
class Companions {
 public:
  Companions(const Settings& settings, const WorkQueue& queue, const Files& files)
      : settings_(settings), queue_(queue), files_(files) {}

  /// What folders hold is read once, until this is called.
  void begin_pass() { folders_.clear(); }

  /// What the video's companions are to become, when it is done as `video` says: its new name with their additions.
  /// Throws Failure when the system would take such a name for something else.
  std::vector<FileJob> of(const FileJob& video);

 private:
  /// A folder's files by their names in small letters, its folders that are no links, and which of the files are
  /// videos, by their names without extension.
  struct Folder {
    std::multimap<std::string, std::string> files, folders, videos;
  };
  class Search;

  const Folder& folder(const std::string& path);

  const Settings& settings_;
  const WorkQueue& queue_;
  const Files& files_;
  std::map<std::string, Folder> folders_;
};

/// The companion's new name where its video gets another one.
std::string renamed_with(const std::string& companion, const std::string& video, const std::string& new_video);

}  // namespace quorvel
