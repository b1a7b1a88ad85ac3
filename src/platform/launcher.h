#pragma once

#include <string>

namespace quorvel {

/// Opening things in the programs that the user has for them.
class Launcher {
 public:
  virtual ~Launcher() = default;

  /// A web address or a file. False when the system has nothing to open it with or it does not exist.
  virtual bool open(const std::string& target) = 0;

  /// Starts `program` with one argument and does not wait for it. False when it cannot be started.
  virtual bool start(const std::string& program, const std::string& argument) = 0;
};

}  // namespace quorvel
