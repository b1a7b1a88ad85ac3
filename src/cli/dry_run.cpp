#include "cli/dry_run.h"

#include <algorithm>
#include <set>

#include "naming/file_names.h"
#include "platform/native.h"

namespace quorvel::cli {
namespace {

std::string key(std::string path) {
  while (path.size() > 1 && path.ends_with(native::separator)) path.pop_back();
  return path;
}

}  // namespace

const DryRun::Change* DryRun::change(const std::string& path) const {
  static const Change gone;
  const auto found = changes_.find(key(path));
  if (found != changes_.end()) return &found->second;
  const bool removed = std::any_of(removed_folders_.begin(), removed_folders_.end(),
                                   [&](const std::string& folder) { return path.starts_with(folder); });
  return removed ? &gone : nullptr;
}

void DryRun::set(const std::string& path, Kind kind, const std::string& bytes) {
  changes_[key(path)] = {kind, bytes, ++count_};
}

Files::Kind DryRun::kind(const std::string& path) const {
  const Change* const changed = change(path);
  return changed ? changed->kind : real_.kind(path);
}

std::optional<FileStamp> DryRun::stamp(const std::string& path) const {
  const Change* const changed = change(path);
  if (!changed) return real_.stamp(path);
  if (changed->kind == Kind::Missing) return {};
  return FileStamp{0, static_cast<std::uint64_t>(changed->number), changed->bytes.size(), 0};
}

bool DryRun::list(const std::string& folder, const std::function<void(FolderEntry)>& entry) const {
  const std::string below = with_separator(folder);
  if (const Change* const changed = change(below); changed && changed->kind == Kind::Missing) return false;
  std::set<std::string> real;
  const bool is_listed = real_.list(folder, [&](const FolderEntry& each) {
    real.insert(each.name);
    const Change* const changed = change(below + each.name);
    if (!changed || changed->kind != Kind::Missing) entry(each);
  });
  for (auto at = changes_.lower_bound(below); at != changes_.end() && at->first.starts_with(below); ++at) {
    const auto& [path, changed] = *at;
    const std::string name = path.substr(below.size());
    const bool is_further_below = name.find(native::separator) != std::string::npos;
    if (changed.kind != Kind::Missing && !real.contains(name) && !is_further_below) {
      entry({name, changed.kind == Kind::Folder, false});
    }
  }
  return is_listed || change(below) != nullptr;
}

std::optional<std::string> DryRun::read(const std::string& path) const {
  const Change* const changed = change(path);
  if (!changed) return real_.read(path);
  return changed->kind == Kind::File ? std::optional(changed->bytes) : std::nullopt;
}

bool DryRun::replace(const std::string& path, const std::string& bytes) {
  set(path, Kind::File, bytes);
  return true;
}

bool DryRun::remove(const std::string& path) {
  set(path, Kind::Missing);
  return true;
}

bool DryRun::create_folder(const std::string& path) {
  const std::string parent = getpath(key(path), 0);
  if (kind(path) != Kind::Missing || kind(parent) != Kind::Folder) return false;
  set(path, Kind::Folder);
  return true;
}

int DryRun::perform(const FileOperationRequest& request) {
  const auto& [operation, source, destination, flags, temporary] = request;
  if (operation == FileOperationRequest::Delete) {
    if ((flags & FileOperationRequest::AllowUndo) != 0) report_(source, std::string(native::trash_name));
    set(source, Kind::Missing);
    removed_folders_.push_back(with_separator(source));
    return 0;
  }
  if (native::is_too_long(getfname(destination))) return native::name_too_long_code;
  if (exists(destination) && (flags & FileOperationRequest::Replace) == 0) return native::name_taken_code;
  if (kind(getpath(destination, 0)) != Kind::Folder) return native::no_folder_code;
  report_(source, destination);
  set(destination, Kind::File);
  if (request.takes_source()) set(source, Kind::Missing);
  return 0;
}

}  // namespace quorvel::cli
