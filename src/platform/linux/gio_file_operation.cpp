#include <fcntl.h>
#include <gio/gio.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

#include "platform/linux/being_written.h"
#include "platform/linux/descriptor.h"
#include "platform/linux/exclusive_rename.h"
#include "platform/linux/folders.h"
#include "platform/linux/gio_support.h"
#include "platform/native.h"
#include "platform/system.h"

namespace quorvel {
namespace {

/// A NUL would cut the path off, and what is left would name another file.
bool is_path(const std::string& text) {
  return !text.empty() && text.find('\0') == std::string::npos;
}

bool is_same_state(const struct stat& before, const struct stat& after) {
  return before.st_dev == after.st_dev && before.st_ino == after.st_ino && before.st_size == after.st_size &&
         before.st_mtim.tv_sec == after.st_mtim.tv_sec && before.st_mtim.tv_nsec == after.st_mtim.tv_nsec;
}

bool in_same_folder(const std::string& one, const std::string& other) {
  struct stat first {};
  struct stat second {};
  return stat(parent_folder(one).c_str(), &first) == 0 && stat(parent_folder(other).c_str(), &second) == 0 &&
         first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

/// 0 when nothing is at `path`, though something could be.
int find_vacant(const std::string& path) {
  struct stat found {};
  if (lstat(path.c_str(), &found) == 0) return EEXIST;
  return errno == ENOENT ? 0 : errno;
}

/// The name that a file is to get in the end.
class FinalName {
 public:
  /// `may_replace` is asked when another file has the name and there is a trash for it.
  FinalName(std::string path, const MayReplace& may_replace) : path_(std::move(path)), may_replace_(may_replace) {}

  const std::string& path() const { return path_; }

  /// 0 when the name is free, or the user gives up the file that has it; EEXIST when not. A name of `source` itself is
  /// never free: to give that up would be to give up the file.
  int check(const std::string& source) {
    const int error = find_vacant(path_);
    if (error != EEXIST || !may_replace_) return error;
    struct stat existing {};
    struct stat own {};
    const bool is_another = lstat(path_.c_str(), &existing) == 0 && stat(source.c_str(), &own) == 0 &&
                            S_ISREG(existing.st_mode) &&
                            (existing.st_dev != own.st_dev || existing.st_ino != own.st_ino);
    is_given_up_ = is_another && can_trash(path_) && may_replace_(path_);
    return is_given_up_ ? 0 : EEXIST;
  }

  /// Gives the name to the file at `from`. A file that was given up goes to the trash, and keeps its name where there
  /// is none.
  int take(const std::string& from) const {
    const int error = exclusive_rename::rename(from, path_);
    if (error != EEXIST || !is_given_up_ || trash(path_) != 0) return error;
    return exclusive_rename::rename(from, path_);
  }

 private:
  const std::string path_;
  const MayReplace& may_replace_;
  bool is_given_up_ = false;
};

/// Removes `source` after its copy at `destination` is on disk; when that cannot be, takes the copy away again.
int remove_copied(const std::string& source, const std::string& destination) {
  // ENOENT: somebody else removed the source, and the copy is the last one.
  if (unlink(source.c_str()) == 0 || errno == ENOENT) return 0;
  const int error = errno;
  unlink(destination.c_str());
  return error;
}

/// Moves a link into another folder or file system by making it anew.
int move_link(const std::string& source, const std::string& destination, std::string target) {
  if (!target.starts_with('/')) {
    const std::unique_ptr<char, void (*)(void*)> folder(realpath(parent_folder(source).c_str(), nullptr), std::free);
    if (!folder) return errno;
    target.insert(0, std::string(folder.get()) + "/");
  }
  if (symlink(target.c_str(), destination.c_str()) != 0) return errno;
  if (const int error = sync_folder(parent_folder(destination)); error != 0) {
    unlink(destination.c_str());
    return error;
  }
  return remove_copied(source, destination);
}

/// Whether both files hold the same bytes on disk. What the system remembers of the copy is left out of account.
bool is_same_on_disk(int copy, int source) {
  posix_fadvise(copy, 0, 0, POSIX_FADV_DONTNEED);
  constexpr std::size_t chunk = 1U << 20;
  std::string one(chunk, '\0'), other(chunk, '\0');
  for (off_t at = 0;;) {
    const ssize_t got = pread(copy, one.data(), chunk, at);
    if (got < 0 || pread(source, other.data(), static_cast<std::size_t>(got == 0 ? 1 : got), at) != got) return false;
    if (got == 0) return true;
    if (one.compare(0, static_cast<std::size_t>(got), other, 0, static_cast<std::size_t>(got)) != 0) return false;
    at += got;
  }
}

/// Copies one regular file.
class Copying {
 public:
  /// `lookup`: AT_SYMLINK_NOFOLLOW when a link that takes the source's place meanwhile is a change of it.
  Copying(const FileOperationRequest& request, int lookup, const CopyProgress& progress)
      : source_(request.source),
        temporary_(request.temporary),
        verifies_((request.flags & FileOperationRequest::Verify) != 0),
        lookup_(lookup),
        progress_(progress) {}

  /// 0 when the copy is complete, on disk and has its name, and the source is as it was; else nothing has changed.
  int copy_to(FinalName& name) {
    if (const int error = name.check(source_); error != 0) return error;
    if (fstatat(AT_FDCWD, source_.c_str(), &before_, lookup_) != 0) return errno;
    if (is_being_written(source_, follows_links())) return native::being_written_code;

    // GIO's errors do not tell whether the file at this name is the one it began; a taken name is none of ours.
    if (const int error = find_vacant(temporary_); error != 0) return error;
    const int error = place(copy_contents(), name);
    if (thrown_) std::rethrow_exception(thrown_);
    return error;
  }

  /// 0 when the source is as it was before it was copied, and nobody is about to change it.
  int check_source() const { return check(source_, true); }

  /// The same once it has another name, with which some file systems give it another number.
  int check_renamed(const std::string& path) const { return check(path, false); }

 private:
  int check(const std::string& path, bool by_number) const {
    struct stat now {};
    if (fstatat(AT_FDCWD, path.c_str(), &now, lookup_) != 0) return errno;
    if (!by_number) now.st_ino = before_.st_ino;
    if (!is_same_state(before_, now)) return EBUSY;
    return is_being_written(path, follows_links()) ? native::being_written_code : 0;
  }

  bool follows_links() const { return (lookup_ & AT_SYMLINK_NOFOLLOW) == 0; }

  int copy_contents() {
    g_autoptr(GFile) from = local_file(source_);
    g_autoptr(GFile) to = local_file(temporary_);
    g_autoptr(GCancellable) cancellable = g_cancellable_new();
    cancellable_ = cancellable;
    g_autoptr(GError) error = nullptr;
    const int flags = G_FILE_COPY_ALL_METADATA | (follows_links() ? 0 : G_FILE_COPY_NOFOLLOW_SYMLINKS);
    const bool copied =
        g_file_copy(from, to, static_cast<GFileCopyFlags>(flags), cancellable, report, this, &error) != FALSE;
    // The last report comes when everything is copied; its answer counts all the same.
    if (g_cancellable_is_cancelled(cancellable) != FALSE) return ECANCELED;
    return copied ? 0 : errno_of(*error);
  }

  static void report(goffset done, goffset total, gpointer data) noexcept {
    Copying& copying = *static_cast<Copying*>(data);
    if (!copying.progress_ || g_cancellable_is_cancelled(copying.cancellable_) != FALSE) return;
    try {
      if (copying.progress_(static_cast<std::uint64_t>(done), static_cast<std::uint64_t>(total))) return;
    } catch (...) {
      // Nothing may be thrown through GIO; copy_to() hands it on.
      copying.thrown_ = std::current_exception();
    }
    g_cancellable_cancel(copying.cancellable_);
  }

  /// Gives the copy its name, or removes it again when there was an `error` before or is one now.
  int place(int error, const FinalName& name) const {
    if (error == 0) error = finish();
    if (error == 0) error = name.take(temporary_);
    if (error != 0) {
      unlink(temporary_.c_str());
      return error;
    }
    error = sync_folder(parent_folder(name.path()));
    if (error != 0) unlink(name.path().c_str());
    return error;
  }

  /// Puts the copy on disk and checks it.
  int finish() const {
    int opened = open(temporary_.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    // We could read the source as one of its group, say, but the copy is our own.
    if (opened < 0 && errno == EACCES && chmod(temporary_.c_str(), (before_.st_mode & 0777) | S_IRUSR) == 0) {
      opened = open(temporary_.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
    }
    const Descriptor copy(opened);
    struct stat written {};
    if (!copy || fsync(copy.get()) != 0 || fstat(copy.get(), &written) != 0) return errno;
    if (written.st_size != before_.st_size) return EBUSY;
    const int error = check_source();
    return error == 0 && verifies_ ? verify(copy.get()) : error;
  }

  int verify(int copy) const {
    const Descriptor source(open(source_.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!source) return errno;
    if (is_same_on_disk(copy, source.get())) return 0;
    // Whoever wrote to the source meanwhile has changed it, not the copy.
    const int error = check_source();
    return error != 0 ? error : native::copy_differs_code;
  }

  const std::string source_, temporary_;
  const bool verifies_;
  const int lookup_;
  const CopyProgress& progress_;
  struct stat before_ {};
  GCancellable* cancellable_ = nullptr;
  std::exception_ptr thrown_;
};

int move_across(const FileOperationRequest& request, FinalName& name, const CopyProgress& progress) {
  const std::string& source = request.source;
  // Otherwise this would show only after the copying.
  if (faccessat(AT_FDCWD, parent_folder(source).c_str(), W_OK | X_OK, AT_EACCESS) != 0) return errno;
  Copying copying(request, AT_SYMLINK_NOFOLLOW, progress);
  if (const int error = copying.copy_to(name); error != 0) return error;
  // The flush took its time; what was written to the source meanwhile must not go with it. The last look is taken under
  // a name that nobody knows, so that nobody can open or replace the file between that and its end.
  const std::string aside = request.source_aside();
  int error = exclusive_rename::rename(source, aside);
  // Then somebody else has removed it, and the copy is the last one; unless the drive only says so.
  if (error == ENOENT && copying.check_source() != 0) return 0;
  if (error == 0) {
    error = copying.check_renamed(aside);
    if (error == 0 && unlink(aside.c_str()) != 0) error = errno;
    if (error != 0) exclusive_rename::rename(aside, source);
  }
  if (error != 0) unlink(name.path().c_str());
  return error;
}

/// Rename, or Move, by which files may also go to another file system.
int move(const FileOperationRequest& request, FinalName name, const CopyProgress& progress) {
  const std::string &source = request.source, &destination = name.path();
  struct stat found {};
  if (lstat(source.c_str(), &found) != 0) return errno;
  if (S_ISDIR(found.st_mode)) return EISDIR;
  const bool is_link = S_ISLNK(found.st_mode);
  if (!is_link && !S_ISREG(found.st_mode)) return EINVAL;

  std::string target;
  if (is_link) {
    std::error_code failed;
    target = std::filesystem::read_symlink(source, failed).native();
    if (failed) return failed.value();
    // A relative target is relative to the folder that the link leaves.
    if (!target.starts_with('/') && !in_same_folder(source, destination)) {
      return move_link(source, destination, target);
    }
  }
  int error = name.take(source);
  if (error == EEXIST) error = name.check(source) == 0 ? name.take(source) : error;
  if (error != EXDEV || request.operation == FileOperationRequest::Rename) return error;
  return is_link ? move_link(source, destination, target) : move_across(request, name, progress);
}

int copy(const FileOperationRequest& request, FinalName name, const CopyProgress& progress) {
  struct stat found {};
  if (stat(request.source.c_str(), &found) != 0) return errno;
  if (S_ISDIR(found.st_mode)) return EISDIR;
  if (!S_ISREG(found.st_mode)) return EINVAL;
  return Copying(request, 0, progress).copy_to(name);
}

/// A file's second name, or a link to it under its full path.
int link(const FileOperationRequest& request, FinalName name) {
  struct stat found {};
  if (stat(request.source.c_str(), &found) != 0) return errno;
  if (S_ISDIR(found.st_mode)) return EISDIR;
  if (!S_ISREG(found.st_mode) || !request.source.starts_with('/')) return EINVAL;
  const auto make = [&](const std::string& path) {
    const int made = request.operation == FileOperationRequest::HardLink
                         ? linkat(AT_FDCWD, request.source.c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW)
                         : symlink(request.source.c_str(), path.c_str());
    return made == 0 ? 0 : errno;
  };
  int error = make(name.path());
  if (error != EEXIST || name.check(request.source) != 0) return error;
  // The file that has the name is given up only for a link that has come into being.
  error = make(request.temporary);
  if (error != 0) return error;
  error = name.take(request.temporary);
  if (error != 0) unlink(request.temporary.c_str());
  return error;
}

int remove(std::string path, bool undoable) {
  // "link/" would mean the folder that the link leads to.
  path.erase(path.find_last_not_of('/') + 1);
  const std::string name = path.substr(path.find_last_of('/') + 1);
  if (name.empty() || name == "." || name == "..") return EINVAL;
  struct stat found {};
  if (lstat(path.c_str(), &found) != 0) return errno;
  if (undoable) return trash(path);
  if (!S_ISDIR(found.st_mode)) return unlink(path.c_str()) == 0 ? 0 : errno;
  std::error_code failed;
  std::filesystem::remove_all(path, failed);
  return failed.value();
}

/// The copying and the trash are GIO's. The codes are errno values.
///
/// All but Delete take one regular file, or a link, which Rename and Move treat as itself and the others follow; a
/// folder is EISDIR, anything else EINVAL, and so are a missing path and one that holds a NUL. An existing destination
/// is EEXIST, a source that is written to while it is copied EBUSY, a cancelled copy ECANCELED. No file is given up
/// where there is no trash.
class GioFileOperation : public FileOperation {
 public:
  GioFileOperation(CopyProgress progress, MayReplace may_replace)
      : progress_(std::move(progress)), may_replace_(std::move(may_replace)) {}

  int perform(const FileOperationRequest& request) override {
    if (!is_path(request.source)) return EINVAL;
    if (request.operation == FileOperationRequest::Delete) {
      return remove(request.source, (request.flags & FileOperationRequest::AllowUndo) != 0);
    }
    const bool may_copy = request.operation != FileOperationRequest::Rename;
    if (!is_path(request.destination) || (may_copy && !is_path(request.temporary))) return EINVAL;
    const MayReplace& may_replace = (request.flags & FileOperationRequest::Replace) != 0 ? always_ : may_replace_;
    switch (request.operation) {
      case FileOperationRequest::Rename:
        return move(request, {request.destination, never_}, progress_);
      case FileOperationRequest::Move:
        return move(request, {request.destination, may_replace}, progress_);
      case FileOperationRequest::Copy:
        return copy(request, {request.destination, may_replace}, progress_);
      case FileOperationRequest::HardLink:
      case FileOperationRequest::SymbolicLink:
        return link(request, {request.destination, may_replace});
      default:
        return EINVAL;
    }
  }

 private:
  const CopyProgress progress_;
  const MayReplace may_replace_, never_, always_ = [](const std::string&) { return true; };
};

}  // namespace

std::unique_ptr<FileOperation> system_file_operation(CopyProgress progress, MayReplace may_replace) {
  return std::make_unique<GioFileOperation>(std::move(progress), std::move(may_replace));
}

}  // namespace quorvel
