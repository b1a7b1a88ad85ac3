#pragma once

#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>

namespace quorvel::testing {

inline void write_file(const std::string& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

inline std::string contents(const std::string& path) {
  std::ostringstream bytes;
  bytes << std::ifstream(path, std::ios::binary).rdbuf();
  return bytes.str();
}

/// What a folder holds, at every depth: links to folders as "-> target", files by their bytes.
inline std::map<std::string, std::string> everything_in(const std::string& folder) {
  std::map<std::string, std::string> found;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    std::string& value = found[entry.path().native()];
    if (entry.is_symlink() && !entry.is_regular_file()) {
      value = "-> " + read_symlink(entry.path()).native();
    } else if (entry.is_regular_file()) {
      value = contents(entry.path().native());
    }
  }
  return found;
}

}  // namespace quorvel::testing
