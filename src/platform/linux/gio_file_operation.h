#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "platform/file_operation.h"

namespace quorvel {

/// File operations on this machine's files; the copying and the trash are GIO's. The codes are errno values.
///
/// Rename, Move and Copy take one regular file, or a link, which Rename and Move treat as itself and Copy follows; a
/// folder is EISDIR, anything else EINVAL, and so are a missing path and one that holds a NUL. An existing destination
/// is EEXIST, a source that is written to while it is copied EBUSY. Only a folder deleted for good may be gone in part
/// after a failure.
class GioFileOperation : public FileOperation {
 public:
  /// Bytes copied so far and in all. False cancels the operation, which then answers ECANCELED and leaves nothing
  /// behind; so does an exception, which perform() hands on.
  using Progress = std::function<bool(std::uint64_t done, std::uint64_t total)>;

  /// Whether the existing file at this path may go to the trash for the one that is moved or copied there. Without it
  /// no file may, nor may one where there is no trash.
  using Replace = std::function<bool(const std::string& destination)>;

  explicit GioFileOperation(Progress progress = {}, Replace replace = {});

  int perform(const FileOperationRequest& request) override;

 private:
  Progress progress_;
  Replace replace_;
  const Replace never_;
};

}  // namespace quorvel
