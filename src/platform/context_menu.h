#pragma once

#include <string>

namespace quorvel {

/// The program's entry in the file manager's context menu. Failures are ignored: the entry is then missing.
class ContextMenu {
 public:
  virtual ~ContextMenu() = default;

  /// `extension` without a dot, or "DIR" for folders and all video files.
  virtual void install(const std::string& extension) = 0;
  virtual void remove(const std::string& extension) = 0;
};

}  // namespace quorvel
