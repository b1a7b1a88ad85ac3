#pragma once

#include <memory>
#include <string>

namespace quorvel::testing {

/// While it lives the program trusts this authority, besides or in place of those that the system does.
class Trust {
 public:
  /// A file with its certificate, as PEM. Throws std::runtime_error when it cannot be made trusted.
  explicit Trust(const std::string& file);
  ~Trust();
  Trust(const Trust&) = delete;
  Trust& operator=(const Trust&) = delete;

 private:
  struct System;
  const std::unique_ptr<System> system_;
};

}  // namespace quorvel::testing
