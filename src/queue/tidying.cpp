#include "queue/tidying.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "naming/file_names.h"
#include "rules/action.h"
#include "text/case.h"
#include "text/cut.h"
#include "text/wildcard.h"

namespace quorvel {

void Tidying::note(const QueueItem& item) {
  if (!settings_.tidy || item.action != MoveAndRename) return;
  const std::string own = getpath(item.path, 0);
  const std::string top = item.added.empty() ? own : item.added;
  left_.try_emplace(own, top);
  for (const FileJob& companion : item.companions) left_.try_emplace(getpath(companion.path, 0), top);
}

/// What lies deeper comes first, for it may be what its folder still holds.
void Tidying::end_pass() {
  std::vector<std::pair<std::string, std::string>> folders(left_.begin(), left_.end());
  left_.clear();
  std::ranges::sort(folders, std::greater(), [](const auto& each) { return each.first.size(); });
  for (auto& [folder, top] : folders) {
    while (folder.size() > top.size() && folder.starts_with(top) && tidy(folder)) {
      folder = getpath(folder.substr(0, folder.size() - 1), 0);
    }
  }
}

bool Tidying::is_leftover(const std::string& name) const {
  const std::vector<std::string_view> patterns = split(settings_.leftovers, ";");
  return std::ranges::any_of(
      patterns, [&](std::string_view pattern) { return matches(lower_case(name), lower_case(trim(pattern))); });
}

/// Whether the folder is gone.
bool Tidying::tidy(const std::string& folder) {
  const std::string path = folder.substr(0, folder.size() - 1);
  if (!files_.exists(path)) return true;  // with one below it
  std::vector<std::string> leftovers;
  bool is_tidy = !files_.is_link(path);
  const bool is_read = is_tidy && files_.list(folder, [&](const FolderEntry& entry) {
    is_tidy = is_tidy && !entry.is_folder && is_leftover(entry.name);
    if (is_tidy) leftovers.push_back(entry.name);
  });
  if (!is_read || !is_tidy) return false;
  std::ranges::sort(leftovers);
  const bool done = jobs_.tidy(path, leftovers).done;
  const std::string where = files_.are_real() ? " is in the " : " goes to the ";
  if (done) log_.debug_log("The folder " + path + where + std::string(native::trash_name), LogLevel::Normal);
  return done;
}

}  // namespace quorvel
