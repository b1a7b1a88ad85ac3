#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/files.h"

namespace quorvel {

/// The folder "cache" in the work directory, which keeps what the listings service has answered.
class CacheFolder {
 public:
  /// `work_dir` ends in a separator; it is read at each call.
  CacheFolder(Files& files, const std::string& work_dir) : files_(files), work_dir_(work_dir) {}

  std::string path() const;

  /// The path of the cache file for `name`, without the characters that cleantitle removes.
  std::string file(std::string_view name, std::string_view extension) const;

  /// The paths of all files in it that have this extension, in no order.
  std::vector<std::string> files(std::string_view extension) const;

  /// The stamp of a cache file as it is now; empty when it does not exist.
  std::optional<FileStamp> stamp(const std::string& file) const { return files_.stamp(file); }

  /// The file's text. Throws Failure when it does not exist.
  std::string load(const std::string& file) const;

  /// Whether the folder is in truth another one, in which nothing is written or deleted.
  bool is_link() const { return files_.is_link(path()); }

  /// Why the folder may be somebody else's, as the end of a sentence that begins with its name: it is a link, or holds
  /// an entry that is none of its files. Empty when it is ours alone.
  std::optional<std::string> foreign_use() const;

  /// Replaces the file's text, and makes the folder when it is missing. A failure leaves the old file or none, and is
  /// not reported: the next look-up asks the service again.
  void store(const std::string& file, const std::string& text);

 private:
  Files& files_;
  const std::string& work_dir_;
};

/// Whether the text can be one field of a cache file's line.
bool fits_cache_field(std::string_view text);

}  // namespace quorvel
