#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace quorvel {

/// Tells one state of one file from another: a different stamp means other contents or another file.
struct FileStamp {
  std::uint64_t device = 0;
  std::uint64_t id = 0;          // of the file on its device
  std::uint64_t size = 0;        // bytes
  std::int64_t modified_ns = 0;  // since the system's epoch
  std::uint64_t links = 1;       // names that the file has; none of its state
  bool operator==(const FileStamp& other) const { return same_file(other) && same_contents(other); }
  /// Without the file's number, of which some file systems give a file a new one now and then.
  bool same_contents(const FileStamp& other) const { return size == other.size && modified_ns == other.modified_ns; }
  /// Whether one could be a copy of the other, made with its time, which some file systems keep only to two seconds.
  bool may_be_copy_of(const FileStamp& other) const {
    constexpr std::int64_t precision_ns = 2'000'000'000;
    const std::int64_t apart = modified_ns - other.modified_ns;
    return size == other.size && apart <= precision_ns && apart >= -precision_ns;
  }
  bool same_file(const FileStamp& other) const { return device == other.device && id == other.id; }
};

struct FolderEntry {
  std::string name;
  bool is_folder = false;  // also for a link that leads to one
  bool is_link = false;
};

/// A file that no other process can hold meanwhile. It stays when it is let go of, and when the process dies.
class HeldFile {
 public:
  virtual ~HeldFile() = default;

  /// All of it; empty as well when it cannot be read.
  virtual std::string read() = 0;

  /// Empties the file and puts these bytes into it. `durably`: they have survived a power cut when this comes back.
  virtual bool write(const std::string& bytes, bool durably) = 0;

  /// Takes the file away; it can no longer be read or written.
  virtual void remove() = 0;
};

/// Files and folders, links followed. No call throws; a path that holds a NUL names nothing.
class Files {
 public:
  enum class Kind { Missing, File, Folder, Other };  // Other: pipes, devices, sockets

  virtual ~Files() = default;

  /// Whether these are the files that whoever else opens a path finds. Where they are not, what is opened by other
  /// means must only be read.
  virtual bool are_real() const { return true; }

  virtual Kind kind(const std::string& path) const = 0;
  bool exists(const std::string& path) const { return kind(path) != Kind::Missing; }

  /// Whether `path` itself is a link.
  virtual bool is_link(const std::string& path) const = 0;

  /// Empty when nothing exists at `path`.
  virtual std::optional<FileStamp> stamp(const std::string& path) const = 0;

  /// Whether another program has the file open for writing, as far as the system tells.
  virtual bool is_being_written(const std::string&) const { return false; }

  /// Hands over each entry but "." and "..", in the order the system lists them.
  /// False when the folder cannot be opened or not be read to its end.
  virtual bool list(const std::string& folder, const std::function<void(FolderEntry)>& entry) const = 0;

  /// The whole file; empty when it cannot be opened or read.
  virtual std::optional<std::string> read(const std::string& path) const = 0;

  /// Puts a file with these bytes in place of the one at `path`, if any: whoever opens `path` at any instant, even
  /// after a crash, finds the old contents or the new ones, whole. False, and the old file untouched, when the folder
  /// or the old file is write-protected, the disk is full, or the path is a link or no file's.
  virtual bool replace(const std::string& path, const std::string& bytes) = 0;

  /// The file at `path`, made when missing. Null when another process holds it, when it cannot be written, and where
  /// the file system knows no locks.
  virtual std::unique_ptr<HeldFile> hold(const std::string& path) = 0;

  /// True as well when there was no file; false when it is still there afterwards, or is a folder.
  virtual bool remove(const std::string& path) = 0;

  /// One level; false when it cannot be created.
  virtual bool create_folder(const std::string& path) = 0;
};

}  // namespace quorvel
