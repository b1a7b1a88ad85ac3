#pragma once

#include <string>

#include "platform/launcher.h"

namespace quorvel {

/// The desktop's own choice of programs.
class GioLauncher : public Launcher {
 public:
  /// `target` may stand in double quotes, as the listings service writes addresses. Addresses come from outside, so
  /// nothing but http, https and absolute paths of existing files and folders is opened, and no program or desktop
  /// entry, which would run.
  bool open(const std::string& target) override;

  /// `program` is an absolute path. The argument reaches it as it stands, as its only one.
  bool start(const std::string& program, const std::string& argument) override;
};

}  // namespace quorvel
