#pragma once

#include <string>

namespace quorvel {

/// Opening things in the programs that the user has for them.
class Launcher {
 public:
  virtual ~Launcher() = default;

  /// A web address or the full path of a file. `target` may stand in double quotes, as the listings service writes
  /// addresses. They come from outside, so nothing but http, https, existing folders and existing files that would be
  /// shown rather than run is opened. False for anything else, and where the system has nothing to open it with.
  virtual bool open(const std::string& target) = 0;

  /// Starts the program at this full path with one argument, which reaches it as it stands, and does not wait for it.
  /// False when it cannot be started.
  virtual bool start(const std::string& program, const std::string& argument) = 0;
};

}  // namespace quorvel
