#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/files.h"
#include "text/failure.h"

namespace quorvel {

/// A file that is there, or may be, but cannot be read.
class Unreadable : public Failure {
 public:
  using Failure::Failure;
};

/// A text file of records: one a line, every line ended by CR LF, fields separated by TAB, nothing quoted or escaped.
/// Its bytes are those of the code page, or UTF-8 behind a byte order mark where the code page does not hold them all.
class RecordFile {
 public:
  using Fields = std::vector<std::string>;

  /// `folder` ends in a separator; it is read at each call.
  RecordFile(Files& files, const std::string& folder, std::string_view name);

  bool exists() const;

  /// The lines; text after the last CR LF is not one. Throws Unreadable.
  std::vector<std::string> read_lines() const;

  /// Sets what the user's list holds after a load. Whatever else the file held is kept when it is next saved.
  void loaded_as(const std::vector<Fields>& records);

  /// Puts these records in place of the file's; no records, no file. A file that holds anything but what was loaded or
  /// saved last, be it damaged, written by hand or by another copy, is kept first, under its name and ".bak".
  /// Throws Failure, the file untouched, when a field cannot stand in the file as it is or the file cannot be written.
  void save(const std::vector<Fields>& records);

 private:
  std::string path() const { return folder_ + name_; }
  void keep_copy(const std::string& bytes);

  Files& files_;
  const std::string& folder_;
  std::string name_;
  std::string known_;  // the bytes that hold no more than the list in memory
};

}  // namespace quorvel
