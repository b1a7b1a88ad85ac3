#pragma once

#include <string>

#include "platform/launcher.h"

namespace quorvel {

/// Tells addresses from documents.
class SystemLauncher : public Launcher {
 public:
  bool open(const std::string& target) override;

 protected:
  virtual bool open_address(const std::string& address) = 0;

  /// Whatever is no address; false when it is no document.
  virtual bool open_document(const std::string& path) = 0;
};

}  // namespace quorvel
