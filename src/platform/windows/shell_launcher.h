#pragma once

#include <string>

#include "platform/launcher.h"

namespace quorvel {

/// The user's own choice of programs.
class ShellLauncher : public Launcher {
 public:
  /// `target` may stand in double quotes, as the listings service writes addresses. Addresses come from outside, so
  /// nothing but http, https, existing folders, and existing files of kinds that are read and not run is opened.
  bool open(const std::string& target) override;

  /// `program` is the full path of an ".exe" file. The argument reaches it as it stands.
  bool start(const std::string& program, const std::string& argument) override;
};

}  // namespace quorvel
