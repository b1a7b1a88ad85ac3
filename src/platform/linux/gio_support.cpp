#include "platform/linux/gio_support.h"

#include <cerrno>
#include <string_view>

#include "platform/native.h"

namespace quorvel {

int errno_of(const GError& error) {
  // GIO knows fewer codes than the system, but where an errno value stood behind the error, its text ends the message.
  const std::string_view message = error.message;
  int any = EIO;
  for (int code = 133; code > 0; --code) {
    if (static_cast<int>(g_io_error_from_errno(code)) != error.code) continue;
    if (message.ends_with(g_strerror(code))) return code;
    if (error.code != G_IO_ERROR_FAILED) any = code;
  }
  return any;
}

GFile* local_file(const std::string& path) {
  // The local implementation by name, for the default one may ask a service on the message bus.
  return g_vfs_get_file_for_path(g_vfs_get_local(), path.c_str());
}

bool can_trash(const std::string& path) {
  g_autoptr(GFile) file = local_file(path);
  g_autoptr(GFileInfo) info =
      g_file_query_info(file, G_FILE_ATTRIBUTE_ACCESS_CAN_TRASH, G_FILE_QUERY_INFO_NOFOLLOW_SYMLINKS, nullptr, nullptr);
  return info != nullptr && g_file_info_get_attribute_boolean(info, G_FILE_ATTRIBUTE_ACCESS_CAN_TRASH) != FALSE;
}

int trash(const std::string& path) {
  g_autoptr(GFile) file = local_file(path);
  g_autoptr(GError) error = nullptr;
  if (g_file_trash(file, nullptr, &error) != FALSE) return 0;
  const bool no_trash = g_error_matches(error, G_IO_ERROR, G_IO_ERROR_NOT_SUPPORTED) != FALSE;
  return no_trash ? native::no_trash_code : errno_of(*error);
}

}  // namespace quorvel
