#pragma once

#include <string>

#include "platform/file_operation.h"

namespace quorvel {

/// The shell's own file operation: it can be undone from the recycle bin, asks before it replaces a file, and shows how
/// far it is. Its codes are answered as they are.
class ShellFileOperation : public FileOperation {
 public:
  // Codes of the shell's own, for what is refused before it is asked.
  static constexpr int path_too_deep = 0x79, invalid_path = 0x7C, destination_is_folder = 0x80, name_taken = 0x7E,
                       aborted = 0x75;

  /// With `may_ask` the shell shows its windows. Without it, where nobody would see them, a name that is taken is
  /// refused.
  explicit ShellFileOperation(bool may_ask) : may_ask_(may_ask) {}

  /// An empty or relative path, one that holds a NUL, a wildcard, a path beyond the shell's limit of length, and a
  /// destination that is a folder, into which the shell would put the file, are refused.
  int perform(const FileOperationRequest& request) override;

 private:
  const bool may_ask_;
};

}  // namespace quorvel
