#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/file_operation.h"
#include "platform/files.h"

namespace quorvel::cli {

/// The files as they would be: everything written, moved and removed is only remembered, so that each file of a dry
/// run sees what the ones before it would have left.
class DryRun : public Files, public FileOperation {
 public:
  /// `report` gets the old and the new path of each operation that would be done.
  DryRun(const Files& real, std::function<void(const std::string&, const std::string&)> report)
      : real_(real), report_(std::move(report)) {}

  bool are_real() const override { return false; }
  Kind kind(const std::string& path) const override;
  bool is_link(const std::string& path) const override { return real_.is_link(path); }
  std::optional<FileStamp> stamp(const std::string& path) const override;
  bool list(const std::string& folder, const std::function<void(FolderEntry)>& entry) const override;
  std::optional<std::string> read(const std::string& path) const override;
  bool replace(const std::string& path, const std::string& bytes) override;
  std::unique_ptr<HeldFile> hold(const std::string&) override { return {}; }  // nothing happens that could be cut off
  bool remove(const std::string& path) override;
  bool create_folder(const std::string& path) override;
  int perform(const FileOperationRequest& request) override;

 private:
  struct Change {
    Kind kind = Kind::Missing;
    std::string bytes;
    std::int64_t number = 0;  // distinguishes one state from another
  };

  const Change* change(const std::string& path) const;
  void set(const std::string& path, Kind kind, const std::string& bytes = {});

  const Files& real_;
  std::function<void(const std::string&, const std::string&)> report_;
  std::map<std::string, Change> changes_;     // by path, without a separator at its end
  std::vector<std::string> removed_folders_;  // with one
  std::int64_t count_ = 0;
};

}  // namespace quorvel::cli
