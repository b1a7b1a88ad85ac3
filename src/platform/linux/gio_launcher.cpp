#include <gio/gio.h>
#include <sys/stat.h>

#include "platform/system.h"
#include "platform/system_launcher.h"

namespace quorvel {
namespace {

/// Whether opening what is at `path` would show it rather than run it, as it would a program or a desktop entry.
bool is_document(const std::string& path) {
  struct stat found {};
  if (!path.starts_with('/') || path.find('\0') != std::string::npos || stat(path.c_str(), &found) != 0) return false;
  if (S_ISDIR(found.st_mode)) return true;
  return S_ISREG(found.st_mode) && (found.st_mode & 0111) == 0 && !path.ends_with(".desktop");
}

/// The desktop's own choice of programs.
class GioLauncher : public SystemLauncher {
 public:
  bool start(const std::string& program, const std::string& argument) override {
    if (!program.starts_with('/') || (program + argument).find('\0') != std::string::npos) return false;
    g_autoptr(GError) error = nullptr;
    g_autoptr(GSubprocess) started =
        g_subprocess_new(G_SUBPROCESS_FLAGS_NONE, &error, program.c_str(), argument.c_str(), nullptr);
    return started != nullptr;
  }

 protected:
  bool open_address(const std::string& address) override {
    g_autoptr(GError) error = nullptr;
    return g_app_info_launch_default_for_uri(address.c_str(), nullptr, &error) != FALSE;
  }

  bool open_document(const std::string& path) override {
    if (!is_document(path)) return false;
    g_autoptr(GFile) file = g_file_new_for_path(path.c_str());
    g_autofree char* address = g_file_get_uri(file);
    return open_address(address);
  }
};

}  // namespace

std::unique_ptr<Launcher> system_launcher() {
  return std::make_unique<GioLauncher>();
}

}  // namespace quorvel
