#include "platform/linux/folders.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "platform/linux/descriptor.h"
#include "platform/native.h"
#include "platform/temporary_name.h"

namespace quorvel {
namespace {

/// An absolute path from the environment, without the separators at its end.
std::optional<std::string> folder_from(const char* variable) {
  const char* const value = std::getenv(variable);
  if (value == nullptr || *value != '/') return {};
  std::string folder = value;
  folder.erase(folder.find_last_not_of('/') + 1);
  return folder;
}

}  // namespace

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
  int error = EEXIST;
  for (int attempt = 0; attempt < 100 && error == EEXIST; ++attempt) {
    path = folder + "/" + temporary_name();
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

namespace standard_folders {

std::string settings() {
  return folder_from("XDG_CONFIG_HOME").value_or(native::home_folder() + "/.config");
}

std::string application_data() {
  return folder_from("XDG_DATA_HOME").value_or(native::home_folder() + "/.local/share");
}

std::optional<std::string> runtime() {
  return folder_from("XDG_RUNTIME_DIR");
}

}  // namespace standard_folders

}  // namespace quorvel
