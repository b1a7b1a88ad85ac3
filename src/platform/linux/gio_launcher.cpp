#include "platform/linux/gio_launcher.h"

#include <gio/gio.h>
#include <sys/stat.h>

#include <algorithm>
#include <string_view>

namespace quorvel {
namespace {

bool has_control_character(std::string_view text) {
  return std::any_of(text.begin(), text.end(), [](unsigned char byte) { return byte < ' ' || byte == 0x7F; });
}

/// Whether `text` begins with `scheme`, in lower case, and goes on with a host.
bool has_scheme(const std::string& text, std::string_view scheme) {
  if (text.size() <= scheme.size() || text[scheme.size()] == '/') return false;
  return g_ascii_strncasecmp(text.c_str(), scheme.data(), scheme.size()) == 0;
}

bool is_web_address(const std::string& text) {
  return !has_control_character(text) && (has_scheme(text, "http://") || has_scheme(text, "https://"));
}

/// Whether opening what is at `path` would show it rather than run it.
bool is_document(const std::string& path) {
  struct stat found {};
  if (!path.starts_with('/') || path.find('\0') != std::string::npos || stat(path.c_str(), &found) != 0) return false;
  if (S_ISDIR(found.st_mode)) return true;
  return S_ISREG(found.st_mode) && (found.st_mode & 0111) == 0 && !path.ends_with(".desktop");
}

bool launch(const char* address) {
  g_autoptr(GError) error = nullptr;
  return g_app_info_launch_default_for_uri(address, nullptr, &error) != FALSE;
}

}  // namespace

bool GioLauncher::open(const std::string& target) {
  const bool quoted = target.size() >= 2 && target.front() == '"' && target.back() == '"';
  const std::string bare = quoted ? target.substr(1, target.size() - 2) : target;
  if (is_web_address(bare)) return launch(bare.c_str());
  if (!is_document(bare)) return false;
  g_autoptr(GFile) file = g_file_new_for_path(bare.c_str());
  g_autofree char* address = g_file_get_uri(file);
  return launch(address);
}

bool GioLauncher::start(const std::string& program, const std::string& argument) {
  if (!program.starts_with('/') || (program + argument).find('\0') != std::string::npos) return false;
  g_autoptr(GError) error = nullptr;
  g_autoptr(GSubprocess) started =
      g_subprocess_new(G_SUBPROCESS_FLAGS_NONE, &error, program.c_str(), argument.c_str(), nullptr);
  return started != nullptr;
}

}  // namespace quorvel
