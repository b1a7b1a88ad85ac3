#pragma once
#include <cstdlib>
#include <filesystem>
#include <string>

namespace quorvel::testing {
/// A fresh folder, gone with all it holds when the test ends.
class TemporaryFolder {
 public:
  explicit TemporaryFolder(const std::string& parent = "/tmp") : top_(parent + "/quorvel-XXXXXX") {
    if (mkdtemp(top_.data()) == nullptr || !std::filesystem::create_directory(path())) std::abort();
  }
  ~TemporaryFolder() {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(top_)) {
      if (!entry.is_symlink() && entry.is_directory()) permissions(entry.path(), std::filesystem::perms::owner_all);
    }
    std::filesystem::remove_all(top_);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  std::string path() const { return top_ + "/t"; }
  std::string operator/(const std::string& name) const { return path() + "/" + name; }

 private:
  std::string top_;
};
}  // namespace quorvel::testing
