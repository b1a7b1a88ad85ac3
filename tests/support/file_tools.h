#pragma once

#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>

namespace quorvel::testing {

inline std::string text_of(const std::filesystem::path& path) {
  const std::u8string bytes = path.u8string();
  return {bytes.begin(), bytes.end()};
}

inline std::filesystem::path path_of(const std::string& text) {
  return std::u8string(text.begin(), text.end());
}

inline void write_file(const std::string& path, const std::string& bytes) {
  std::ofstream(path_of(path), std::ios::binary) << bytes;
}

inline std::string contents(const std::string& path) {
  std::ostringstream bytes;
  bytes << std::ifstream(path_of(path), std::ios::binary).rdbuf();
  return bytes.str();
}

/// What a folder holds, at every depth: files by their bytes, links to anything else as "-> target".
inline std::map<std::string, std::string> everything_in(const std::string& folder) {
  std::map<std::string, std::string> found;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(path_of(folder))) {
    std::error_code circle;
    std::string& value = found[text_of(entry.path())];
    if (entry.is_regular_file(circle)) {
      value = contents(text_of(entry.path()));
    } else if (entry.is_symlink()) {
      value = "-> " + text_of(read_symlink(entry.path()));
    }
  }
  return found;
}

}  // namespace quorvel::testing
