#pragma once

#include <chrono>
#include <random>
#include <vector>

#include "file_tools.h"

namespace quorvel::testing {
/// A fresh folder, gone with all it holds when the test ends.
class TemporaryFolder {
 public:
  explicit TemporaryFolder(const std::filesystem::path& parent = std::filesystem::temp_directory_path()) {
    do {
      top_ = parent / ("quorvel-" + std::to_string(std::random_device()()));
    } while (!create_directory(top_));
    permissions(top_, std::filesystem::perms::owner_all);
    create_directory(top_ / "t");
  }
  ~TemporaryFolder() {
    std::error_code failed;
    // A program that has just ended may hold a file open for a moment more, with which some systems keep the folder;
    // and remove_all may never end where a file goes while it looks.
    const auto until = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    do {
      std::vector<std::filesystem::path> all{top_};
      using Walk = std::filesystem::recursive_directory_iterator;
      for (Walk at(top_, failed); !failed && at != Walk(); at.increment(failed)) {
        all.push_back(at->path());
        if (!at->is_symlink(failed) && at->is_directory(failed)) {
          permissions(at->path(), std::filesystem::perms::owner_all, failed);
        }
      }
      for (; !all.empty(); all.pop_back()) remove(all.back(), failed);
    } while (exists(top_, failed) && std::chrono::steady_clock::now() < until);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  std::string path() const { return text_of((top_ / "t").make_preferred()); }
  /// That no other folder has.
  std::string name() const { return text_of(top_.filename()); }
  /// With the system's separators.
  std::string operator/(const std::string& name) const {
    return text_of(path_of(path() + "/" + name).make_preferred());
  }

 private:
  std::filesystem::path top_;
};
}  // namespace quorvel::testing
