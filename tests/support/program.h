#pragma once

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#include "test_window.h"

namespace quorvel::testing {

/// The built program, started with these arguments; killed when it is still running at the end.
class Program {
 public:
  explicit Program(const std::vector<std::string>& arguments) {
    std::vector<char*> argv{const_cast<char*>(QUORVEL_PROGRAM)};
    for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    if (posix_spawn(&id_, QUORVEL_PROGRAM, nullptr, nullptr, argv.data(), environ) != 0) std::abort();
  }
  ~Program() {
    if (!ended()) kill(id_, SIGKILL), waitpid(id_, nullptr, 0);
  }
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  /// Waits for the end.
  int status() {
    wait_until([this] { return ended(); });
    return *status_;
  }

 private:
  bool ended() {
    int status = 0;
    if (!status_ && waitpid(id_, &status, WNOHANG) == id_) status_ = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return status_.has_value();
  }

  pid_t id_ = 0;
  std::optional<int> status_;
};

}  // namespace quorvel::testing
