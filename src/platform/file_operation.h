#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace quorvel {

/// One order to the system's shell: what to do with which file.
struct FileOperationRequest {
  enum Operation { Move = 1, Copy = 2, Delete = 3, Rename = 4, HardLink = 5, SymbolicLink = 6 };
  enum Flag : std::uint16_t {
    Silent = 4,
    NoConfirmation = 16,
    AllowUndo = 64,
    SimpleProgress = 256,
    Replace = 0x4000,  // a file that has the destination's name goes to the trash, as if the user had given it up
    Verify = 0x8000    // with Move: a copy is read back from the disk and compared before its source is removed
  };

  int operation = 0;
  std::string source = {};
  std::string destination = {};  // empty for Delete
  std::uint16_t flags = 0;
  std::string temporary = {};  // the name that a copy has until it is whole, or a link until its name is free, in the
                               // destination's folder; for all but Rename and Delete
  bool operator==(const FileOperationRequest&) const = default;

  bool makes_link() const { return operation == HardLink || operation == SymbolicLink; }
  /// Whether nothing is at the source afterwards.
  bool takes_source() const { return operation == Move || operation == Rename || operation == Delete; }

  /// The name of the source at the end of a move to another file system, for the instant before it is removed: that of
  /// `temporary`, in the source's folder.
  std::string source_aside() const {
    const auto name_of = [](const std::string& path) { return path.find_last_of("/\\") + 1; };
    return source.substr(0, name_of(source)) + temporary.substr(name_of(temporary));
  }
};

/// Called now and then during a long copy with the bytes copied so far and in all; false cancels the operation, which
/// then leaves nothing behind. So does an exception, which the operation passes on.
using CopyProgress = std::function<bool(std::uint64_t done, std::uint64_t total)>;

/// Whether the existing file at this path may go to the trash for the one that is moved or copied there.
using MayReplace = std::function<bool(const std::string& path)>;

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
