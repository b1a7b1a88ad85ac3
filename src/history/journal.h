#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/file_operation.h"
#include "platform/files.h"
#include "platform/log.h"

namespace quorvel {

/// What is about to happen to a file, written down before it happens, so that a later start can clear up what a process
/// that was killed has left: a part of a copy, an empty file under a new name, a file with both its names.
///
/// Each process has a file of its own in the work folder, which it holds as long as it lives; so whatever file can be
/// held belongs to one that has ended.
class Journal {
 public:
  /// `work_dir` ends in a separator; it is read at each call.
  Journal(Files& files, Log& log, const std::string& work_dir) : files_(files), log_(log), work_dir_(work_dir) {}
  Journal(const Journal&) = delete;
  Journal& operator=(const Journal&) = delete;
  ~Journal();

  /// Writes down what is about to happen; `source` is the stamp of the request's source. Where that cannot be done,
  /// which is told once, it happens all the same: nothing is lost without the journal, it only stays behind.
  void begin(const FileOperationRequest& request, const std::optional<FileStamp>& source);

  /// It has ended, well or not.
  void end();

  /// The name, in the work folder, of the file that this process holds; empty before it has begun anything, and where
  /// no journal can be kept.
  std::string name() const { return file_ ? path_.substr(work_dir_.size()) : ""; }

  /// Clears up after processes that have ended, and tells what was found. What lies on a drive that is not there now is
  /// left for a later start. Nothing is removed but what is certainly left over, while its source is there or has
  /// arrived whole.
  void settle();

 private:
  struct Entry {
    int operation = 0;
    std::string source, destination, temporary;
    bool is_new = false;                  // nothing was at the destination
    std::optional<FileStamp> stamp = {};  // of the source: its size and its time
  };

  static std::string text_of(const std::vector<Entry>& entries);
  static std::vector<Entry> entries_of(std::string_view text);

  bool open();
  void close();
  bool is_to_another_device(const Entry& entry) const;
  bool has_arrived(const Entry& entry) const;
  static std::string aside_of(const Entry& entry);
  bool is_left(const Entry& entry) const;
  void settle(const Entry& entry);
  void settle_destination(const Entry& entry);
  void settle_aside(const Entry& entry);
  void remove(const std::string& path, const std::string& what);
  void remove_old_temporaries(const std::string& folder);
  std::vector<std::string> names_in(const std::string& folder, std::string_view prefix) const;

  Files& files_;
  Log& log_;
  const std::string& work_dir_;
  std::string path_;
  std::unique_ptr<HeldFile> file_;
  std::vector<Entry> entries_;  // the last one is under way, the others are left for a later start
  bool has_failed_ = false;
};

}  // namespace quorvel
