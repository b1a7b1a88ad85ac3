#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "platform/files.h"

namespace quorvel {

/// The files of this machine and of those it reaches. One definition per system, chosen by the build.
class DiskFiles : public Files {
 public:
  /// What is there but may not be looked at, or may be there, is Other, and so is a link that leads nowhere: nothing is
  /// ever put in its place or taken for missing.
  Kind kind(const std::string& path) const override;
  bool is_link(const std::string& path) const override;
  std::optional<FileStamp> stamp(const std::string& path) const override;

  /// On Linux it is told of the user's own files, where the file system has leases; on Windows a file counts that
  /// another program keeps for itself.
  bool is_being_written(const std::string& path) const override;

  /// False as well when the system stops listing half-way; the entries handed over until then are real. On Windows
  /// names that end in a dot or a blank are left out: the system's ordinary calls reach another file by them.
  bool list(const std::string& folder, const std::function<void(FolderEntry)>& entry) const override;

  /// Empty as well for whatever is no regular file.
  std::optional<std::string> read(const std::string& path) const override;

  /// The file keeps its permissions or attributes.
  bool replace(const std::string& path, const std::string& bytes) override;
  std::unique_ptr<HeldFile> hold(const std::string& path) override;

  /// True as well when there was nothing; false for a folder.
  bool remove(const std::string& path) override;
  bool create_folder(const std::string& path) override;
};

}  // namespace quorvel
