#include "platform/paths.h"

#include <filesystem>
#include <system_error>

namespace quorvel {

std::string absolute_path(const std::string& path) {
  namespace fs = std::filesystem;
  if (path.empty()) return path;
  std::error_code error;
  fs::path absolute = "/";
  for (const fs::path& component : path.front() == '/' ? fs::path(path) : fs::current_path(error) / path) {
    if (component.empty() || component == "." || component == "/") continue;
    absolute /= component;
    if (component != "..") continue;
    const fs::path real = fs::canonical(absolute, error);
    absolute = error ? absolute.lexically_normal() : real;
  }
  return absolute.string();
}

}  // namespace quorvel
