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
  Scan(const Files& files, const std::string& top) : files_(files), top_(top) {}

  FolderScan run() {
    list("");
    std::erase_if(result_.ways_out, [this](const std::string& link) { return below_.contains(number(link)); });
    return std::move(result_);
  }

 private:
  using Number = std::pair<std::uint64_t, std::uint64_t>;

  Number number(const std::string& folder) const {
    const FileStamp stamp = files_.stamp(top_ + folder).value_or(FileStamp());
    return {stamp.device, stamp.id};
  }

  /// The entries are taken in before the first subfolder is entered: systems let few folders be open at once.
  void list(const std::string& folder) {
    below_.insert(number(folder));
    std::vector<std::pair<std::string, FolderEntry>> entries;
    const bool complete = files_.list(top_ + folder, [&](FolderEntry entry) {
      std::string key = natural_key(entry.name);
      entries.emplace_back(std::move(key), std::move(entry));
    });
    if (!complete) result_.unread.push_back(folder);
    std::sort(entries.begin(), entries.end(), [](const auto& one, const auto& other) {
      return std::tie(one.first, one.second.name) < std::tie(other.first, other.second.name);
    });
    for (const auto& [key, entry] : entries) {
      const std::string path = folder + entry.name;
      if (!entry.is_folder) {
        result_.files.push_back(path);
      } else if (entry.is_link) {
        result_.ways_out.push_back(path);
      } else {
        list(with_separator(path));
      }
    }
  }

  const Files& files_;
  const std::string& top_;
  std::set<Number> below_;  // all folders there
  FolderScan result_;
};

}  // namespace

FolderScan scan_folder(const Files& files, const std::string& folder) {
  return Scan(files, folder).run();
}

}  // namespace quorvel
