#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <limits>
#include <memory>
#include <string_view>

#include "platform/disk_files.h"
#include "platform/linux/being_written.h"
#include "platform/linux/descriptor.h"
#include "platform/linux/folders.h"
#include "platform/system.h"

namespace quorvel {
namespace {

bool holds_nul(const std::string& path) {
  return path.find('\0') != std::string::npos;
}

/// Whether every file system can hold a file of that name.
bool is_portable(std::string_view path) {
  const std::string_view name = path.substr(path.find_last_of('/') + 1);
  return !name.empty() && name.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._-") ==
                              std::string_view::npos;
}

/// Whether the error says that there is nothing, rather than that it cannot be looked at. File systems call a name
/// invalid that they cannot hold; of a name that all can hold, that is no answer.
bool is_missing(int error, const std::string& path) {
  if (error == EINVAL || error == EILSEQ) return !is_portable(path);
  return error == ENOENT || error == ENOTDIR || error == ENAMETOOLONG;
}

/// For the system's calls. A NUL would cut the path off and name another file; like the empty path it names none.
const char* system_path(const std::string& path) {
  return holds_nul(path) ? "" : path.c_str();
}

FolderEntry described(int folder, const dirent& listed) {
  FolderEntry entry{.name = listed.d_name, .is_folder = listed.d_type == DT_DIR, .is_link = listed.d_type == DT_LNK};
  struct stat found {};
  if (listed.d_type == DT_UNKNOWN && fstatat(folder, listed.d_name, &found, AT_SYMLINK_NOFOLLOW) == 0) {
    entry.is_folder = S_ISDIR(found.st_mode);
    entry.is_link = S_ISLNK(found.st_mode);
  }
  if (entry.is_link) entry.is_folder = fstatat(folder, listed.d_name, &found, 0) == 0 && S_ISDIR(found.st_mode);
  return entry;
}

/// From the file's beginning.
bool write_all(int file, std::string_view bytes) {
  for (off_t at = 0; !bytes.empty();) {
    const ssize_t written = TEMP_FAILURE_RETRY(pwrite(file, bytes.data(), bytes.size(), at));
    if (written <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(written));
    at += written;
  }
  return true;
}

/// Owner and permissions of `old`. Where the group cannot be kept, the new group gets no more than everybody.
bool take_over(int file, const struct stat& old) {
  mode_t mode = old.st_mode & 07777;
  struct stat now {};
  if (fstat(file, &now) != 0) return false;
  if ((now.st_uid != old.st_uid || now.st_gid != old.st_gid) && fchown(file, old.st_uid, old.st_gid) != 0 &&
      fchown(file, static_cast<uid_t>(-1), old.st_gid) != 0) {
    mode = (mode & 0707) | ((mode & 0007) << 3);
  }
  return fchmod(file, mode) == 0;
}

class LockedFile : public HeldFile {
 public:
  explicit LockedFile(std::string path)
      : path_(std::move(path)),
        file_(open(system_path(path_), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600)) {}

  bool lock() {
    struct stat found {};
    return file_ && fstat(file_.get(), &found) == 0 && S_ISREG(found.st_mode) &&
           flock(file_.get(), LOCK_EX | LOCK_NB) == 0;
  }

  std::string read() override {
    std::string bytes;
    char buffer[4096];
    ssize_t got = 0;
    while ((got = pread(file_.get(), buffer, sizeof buffer, static_cast<off_t>(bytes.size()))) > 0) {
      bytes.append(buffer, static_cast<std::size_t>(got));
    }
    return bytes;
  }

  bool write(const std::string& bytes, bool durably) override {
    // Emptying it costs more than writing to it; what is to survive a power cut must not be half of this and half of
    // what was there before.
    if ((durably || bytes.size() < size_) && ftruncate(file_.get(), 0) != 0) return false;
    size_ = bytes.size();
    if (!write_all(file_.get(), bytes)) return false;
    return !durably || (fsync(file_.get()) == 0 && sync_folder(parent_folder(path_)) == 0);
  }

  void remove() override { unlink(path_.c_str()); }

 private:
  const std::string path_;
  const Descriptor file_;
  std::size_t size_ = std::numeric_limits<std::size_t>::max();  // as long as it is not known
};

}  // namespace

Files::Kind DiskFiles::kind(const std::string& path) const {
  struct stat found {};
  if (lstat(system_path(path), &found) != 0) return is_missing(errno, path) ? Kind::Missing : Kind::Other;
  if (S_ISLNK(found.st_mode) && stat(system_path(path), &found) != 0) return Kind::Other;
  if (S_ISREG(found.st_mode)) return Kind::File;
  return S_ISDIR(found.st_mode) ? Kind::Folder : Kind::Other;
}

bool DiskFiles::is_link(const std::string& path) const {
  struct stat found {};
  return lstat(system_path(path), &found) == 0 && S_ISLNK(found.st_mode);
}

std::optional<FileStamp> DiskFiles::stamp(const std::string& path) const {
  struct stat found {};
  if (stat(system_path(path), &found) != 0) return {};
  return FileStamp{.device = found.st_dev,
                   .id = found.st_ino,
                   .size = static_cast<std::uint64_t>(found.st_size),
                   .modified_ns = std::int64_t{found.st_mtim.tv_sec} * 1'000'000'000 + found.st_mtim.tv_nsec,
                   .links = found.st_nlink};
}

bool DiskFiles::is_being_written(const std::string& path) const {
  return quorvel::is_being_written(system_path(path), true);
}

bool DiskFiles::list(const std::string& folder, const std::function<void(FolderEntry)>& entry) const {
  const std::unique_ptr<DIR, int (*)(DIR*)> listing(opendir(system_path(folder)), closedir);
  if (!listing) return false;
  while (true) {
    errno = 0;
    const dirent* const listed = readdir(listing.get());
    if (listed == nullptr) return errno == 0;
    const std::string_view name = listed->d_name;
    if (name != "." && name != "..") entry(described(dirfd(listing.get()), *listed));
  }
}

std::optional<std::string> DiskFiles::read(const std::string& path) const {
  // Without O_NONBLOCK a pipe would keep us waiting for its writer.
  const Descriptor file(open(system_path(path), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat found {};
  if (!file || fstat(file.get(), &found) != 0 || !S_ISREG(found.st_mode)) return {};
  std::string bytes;
  std::size_t filled = 0;
  while (true) {
    // One byte more than expected, so that the end shows itself without another enlargement.
    const std::size_t expected = static_cast<std::size_t>(found.st_size) + 1;
    if (filled == bytes.size()) bytes.resize(filled < expected ? expected : filled * 2);
    const ssize_t got = TEMP_FAILURE_RETRY(::read(file.get(), bytes.data() + filled, bytes.size() - filled));
    if (got < 0) return {};
    if (got == 0) break;
    filled += static_cast<std::size_t>(got);
  }
  bytes.resize(filled);
  return bytes;
}

bool DiskFiles::replace(const std::string& path, const std::string& bytes) {
  if (path.empty() || holds_nul(path)) return false;
  struct stat old {};
  const bool exists = lstat(path.c_str(), &old) == 0;
  if (!exists && errno != ENOENT) return false;
  // A folder's owner could replace a write-protected file, but protecting it was meant seriously.
  if (exists && (!S_ISREG(old.st_mode) || faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) != 0)) return false;

  const std::string folder = parent_folder(path);
  std::string temporary;
  int opened = -1;
  const int error = create_temporary(folder, temporary, [&](const std::string& name) {
    opened = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, exists ? 0600 : 0666);
    return opened < 0 ? errno : 0;
  });
  const Descriptor file(opened);
  if (error != 0) return false;
  const bool written = write_all(opened, bytes) && (!exists || take_over(opened, old)) && fsync(opened) == 0;
  if (!written || rename(temporary.c_str(), path.c_str()) != 0) {
    unlink(temporary.c_str());
    return false;
  }
  // Should this fail, a crash may bring the old file back, but whole.
  sync_folder(folder);
  return true;
}

std::unique_ptr<HeldFile> DiskFiles::hold(const std::string& path) {
  auto file = std::make_unique<LockedFile>(path);
  return file->lock() ? std::move(file) : nullptr;
}

bool DiskFiles::remove(const std::string& path) {
  if (holds_nul(path)) return false;
  return unlink(path.c_str()) == 0 || errno == ENOENT || errno == ENOTDIR;
}

bool DiskFiles::create_folder(const std::string& path) {
  return mkdir(system_path(path), 0777) == 0;
}

std::unique_ptr<Files> system_files() {
  return std::make_unique<DiskFiles>();
}

}  // namespace quorvel
