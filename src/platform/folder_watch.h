#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace quorvel {

/// The system's notices of what happens in folders. They may be lost and are never all there is: what other machines do
/// to a shared drive, say, comes without them.
class FolderWatch {
 public:
  /// What has happened, in order.
  struct Changes {
    std::vector<std::string> paths;  // of entries that were made or written, or came there under this name
    bool are_all = true;             // else some were lost, and all that is watched must be looked through
  };

  virtual ~FolderWatch() = default;

  /// From now on tells what happens in `folder`, which ends in a separator, and on some systems in all below it; until
  /// it goes or gets another name. Empty when that will be all of it; else why not, for the user, as in "its file
  /// system does not tell". Being called again for a folder makes no difference.
  virtual std::optional<std::string> watch(const std::string& folder) = 0;

  /// Ends it for all folders that watch() was not called for since this was called last.
  virtual void forget_others() = 0;

  /// What has happened since the last time.
  virtual Changes take() = 0;

  /// Comes back when there is something to take, and after `time` at the latest; also when a signal comes in.
  virtual void wait(std::chrono::milliseconds time) = 0;
};

}  // namespace quorvel
