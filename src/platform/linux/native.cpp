#include "platform/native.h"

#include <cerrno>

namespace quorvel::native {

const char separator = '/';
const std::string_view system_name = "Linux";
const int no_trash_code = ENOTSUP;

}  // namespace quorvel::native
