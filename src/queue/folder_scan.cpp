#include "queue/folder_scan.h"

#include <algorithm>
#include <set>
#include <tuple>
#include <utility>

#include "naming/file_names.h"
#include "platform/native.h"
#include "text/natural_order.h"

namespace quorvel {
namespace {

class Scan {
 public:
  Scan(const Files& files, const std::string& top) : files_(files), top_(top) {
    for (std::string folder = top; !folder.empty(); folder = getpath(folder, 1)) enter(folder);
  }

  std::vector<std::string> run() {
    list("");
    while (!links_.empty()) {
      const std::vector<std::string> links = std::exchange(links_, {});
      for (const std::string& link : links) {
        if (enter(top_ + link)) list(link);
      }
    }
    return std::move(found_);
  }

 private:
  /// Whether the folder has not been entered before. Only of use at links: some file systems number all folders alike.
  bool enter(const std::string& folder) {
    const std::optional<FileStamp> stamp = files_.stamp(folder);
    return stamp && entered_.emplace(stamp->device, stamp->id).second;
  }

  /// The entries are taken in before the first subfolder is entered: systems let few folders be open at once.
  void list(const std::string& folder) {
    std::vector<std::pair<std::string, FolderEntry>> entries;
    files_.list(top_ + folder, [&](FolderEntry entry) {
      std::string key = natural_key(entry.name);
      entries.emplace_back(std::move(key), std::move(entry));
    });
    std::sort(entries.begin(), entries.end(), [](const auto& one, const auto& other) {
      return std::tie(one.first, one.second.name) < std::tie(other.first, other.second.name);
    });
    for (const auto& [key, entry] : entries) {
      const std::string path = folder + entry.name;
      if (!entry.is_folder) {
        found_.push_back(path);
      } else if (entry.is_link) {
        links_.push_back(with_separator(path));
      } else {
        enter(top_ + path);
        list(with_separator(path));
      }
    }
  }

  const Files& files_;
  const std::string& top_;
  std::set<std::pair<std::uint64_t, std::uint64_t>> entered_;
  std::vector<std::string> links_;  // to folders, looked into when everything else has been
  std::vector<std::string> found_;
};

}  // namespace

std::vector<std::string> scan_folder(const Files& files, const std::string& folder) {
  return Scan(files, folder).run();
}

}  // namespace quorvel
