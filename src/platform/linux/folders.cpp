#include "platform/linux/folders.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <random>

#include "platform/linux/descriptor.h"

namespace quorvel {

std::string parent_folder(const std::string& path) {
  const std::size_t name_end = path.find_last_not_of('/');
  if (name_end == std::string::npos) return path.empty() ? "." : "/";
  const std::size_t name_start = path.find_last_of('/', name_end);
  if (name_start == std::string::npos) return ".";
  const std::size_t folder_end = path.find_last_not_of('/', name_start);
  return folder_end == std::string::npos ? "/" : path.substr(0, folder_end + 1);
}

int create_temporary(const std::string& folder, std::string& path,
                     const std::function<int(const std::string& path)>& create) {
  static constexpr std::string_view letters = "abcdefghijklmnopqrstuvwxyz0123456789";
  std::random_device random;
  std::uniform_int_distribution<std::size_t> letter(0, letters.size() - 1);
  int error = EEXIST;
  for (int attempt = 0; attempt < 100 && error == EEXIST; ++attempt) {
    path = folder + "/.quorvel-";
    for (int i = 0; i < 6; ++i) path += letters[letter(random)];
    error = create(path);
  }
  return error;
}

int sync_folder(const std::string& folder) {
  const Descriptor descriptor(open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!descriptor) {
    if (errno != EACCES) return errno;
    // A folder that may be written but not listed cannot be flushed by itself.
    sync();
    return 0;
  }
  if (fsync(descriptor.get()) == 0 || errno == EINVAL || errno == ENOTSUP || errno == ENOSYS) return 0;
  return errno;
}

bool create_folders(Files& files, const std::string& path) {
  if (files.kind(path) == Files::Kind::Folder) return true;
  const std::string parent = parent_folder(path);
  if (parent == path || !create_folders(files, parent)) return false;
  // Another process may be creating the same folder, so the attempt's own result decides nothing.
  files.create_folder(path);
  return files.kind(path) == Files::Kind::Folder;
}

}  // namespace quorvel
