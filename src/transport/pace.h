#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "platform/files.h"

namespace quorvel {

/// When the next request may be sent. A service that never refuses one is asked as fast as possible; one that ever did
/// gets at most 20 requests in any 10 seconds from then on, those before included, from all copies of the program that
/// share a work folder. They know of each other by a file there, which only exists once a request has been refused.
class Pace {
 public:
  /// `work_dir` ends in a separator, and is read at each call.
  Pace(Clock& clock, Files& files, const std::string& work_dir) : clock_(clock), files_(files), work_dir_(work_dir) {}

  /// Zero when a request may be sent now; it then counts as sent. Else the time until it may be.
  std::chrono::milliseconds claim();

  /// The service has refused a request because it gets too many.
  void slow_down();

 private:
  using Times = std::vector<std::chrono::milliseconds>;  // of requests, the oldest first, by the clock of all copies

  std::chrono::milliseconds now() const;
  std::string path() const { return work_dir_ + "requests"; }
  std::unique_ptr<HeldFile> hold();
  bool has_been_refused_lately() const;

  Clock& clock_;
  Files& files_;
  const std::string& work_dir_;
  bool is_slow_ = false;
  Times own_;
};

}  // namespace quorvel
