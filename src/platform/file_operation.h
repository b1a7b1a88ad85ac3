#pragma once

#include <cstdint>
#include <string>

namespace quorvel {

/// One order to the system's shell: what to do with which file.
struct FileOperationRequest {
  enum Operation { Move = 1, Copy = 2, Delete = 3, Rename = 4 };
  enum Flag : std::uint16_t { Silent = 4, NoConfirmation = 16, AllowUndo = 64, SimpleProgress = 256 };

  int operation = 0;
  std::string source;
  std::string destination;  // empty for Delete
  std::uint16_t flags = 0;
  bool operator==(const FileOperationRequest&) const = default;
};

/// Carries out file operations on whole files. In no case is an existing file overwritten without the user's word, is
/// a part of a file left under its final name, or is a source removed before its copy is complete and on disk.
class FileOperation {
 public:
  virtual ~FileOperation() = default;

  /// 0 on success, else the system's error code; nothing has changed then, but part of a folder deleted for good may be
  /// gone.
  /// Delete with AllowUndo puts the file into the trash, and answers native::no_trash_code where there is none;
  /// without it the file, or the folder with all it holds, is gone for good.
  virtual int perform(const FileOperationRequest& request) = 0;
};

}  // namespace quorvel
