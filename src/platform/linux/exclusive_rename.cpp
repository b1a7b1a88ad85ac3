#include "platform/linux/exclusive_rename.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "platform/linux/descriptor.h"

namespace quorvel::exclusive_rename {
namespace {

bool is_empty_file(const std::string& path) {
  struct stat found {};
  return lstat(path.c_str(), &found) == 0 && S_ISREG(found.st_mode) && found.st_size == 0;
}

bool exists(const std::string& path) {
  struct stat found {};
  return lstat(path.c_str(), &found) == 0 || errno != ENOENT;
}

bool no_hard_links(int error) {
  return error == EPERM || error == ENOTSUP || error == ENOSYS || error == EINVAL || error == EMLINK || error == EXDEV;
}

}  // namespace

int by_flag(const std::string& from, const std::string& to) {
  return renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0 ? 0 : errno;
}

int by_link(const std::string& from, const std::string& to) {
  if (linkat(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), 0) != 0) return errno;
  if (unlink(from.c_str()) == 0) return 0;
  const int error = errno;
  // Had somebody else removed the old name, the new one would be the last.
  if (!exists(from)) return 0;
  unlink(to.c_str());
  return error;
}

int by_placeholder(const std::string& from, const std::string& to) {
  struct stat found {};
  if (lstat(from.c_str(), &found) != 0) return errno;
  {
    // Closed again before the renaming: some network file systems do not rename over an open file.
    const Descriptor placeholder(open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (!placeholder) return errno;
  }
  // Whoever found the empty file and wrote to it meanwhile keeps it.
  if (!is_empty_file(to)) return EEXIST;
  if (::rename(from.c_str(), to.c_str()) == 0) return 0;
  const int error = errno;
  // An empty file whose old name is gone may be the file itself: network file systems report failures of what is done.
  if (is_empty_file(to) && (found.st_size > 0 || exists(from))) unlink(to.c_str());
  return error;
}

int rename(const std::string& from, const std::string& to) {
  int error = by_flag(from, to);
  if (error == EINVAL || error == ENOSYS) {
    error = by_link(from, to);
    if (no_hard_links(error)) error = by_placeholder(from, to);
  }
  return error;
}

}  // namespace quorvel::exclusive_rename
