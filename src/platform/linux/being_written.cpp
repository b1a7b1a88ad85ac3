#include "platform/linux/being_written.h"

#include <fcntl.h>

#include <cerrno>

#include "platform/linux/descriptor.h"

namespace quorvel {

bool is_being_written(const std::string& path, bool follows_links) {
  const int links = follows_links ? 0 : O_NOFOLLOW;
  const Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | links));
  // The lease ends with the descriptor, before the next writer would have to wait for us.
  return file && fcntl(file.get(), F_SETLEASE, F_RDLCK) != 0 && errno == EAGAIN;
}

}  // namespace quorvel
