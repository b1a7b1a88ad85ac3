#include "queue/placement.h"

#include "naming/file_names.h"
#include "naming/mask.h"
#include "naming/service_names.h"
#include "text/failure.h"

namespace quorvel {
namespace {

std::string folder_by(const AFilter& rule, const QueueItem& item, const MaskValues& values) {
  if (rule.action < MoveAndRename) return getpath(item.path, 0);
  const std::string path = with_native_separators(with_home(rule.path));
  if (!path.empty() && !is_full_path(path)) {
    throw Failure("The rule's folder \"" + rule.path + "\" begins neither at the root or a drive nor with \"~\"");
  }
  if (const auto trouble = mask_trouble(path, values, expand_folder)) throw Failure("The folder " + *trouble);
  std::string folder = without_ends(expand_folder(path, values));
  if (folder.empty()) throw Failure("The rule has no folder to put files into");
  return folder;
}

}  // namespace

Placement placement_by(const AFilter& rule, const QueueItem& item) {
  MaskValues values{item.show_name, item.season, item.episode, item.episode_title, item.more_episodes, item.facts};
  if (item.show_id > 0) values.facts.id = std::to_string(item.show_id);
  values.facts.old_name = remextension(item.filename);
  const std::string folder = folder_by(rule, item, values), mask = rule.mask + "." + getextension(item.filename);
  if (const auto trouble = mask_trouble(mask, values, expand_name)) throw Failure("The new name " + *trouble);
  std::string name = expand_name(mask, values);
  if (name.starts_with('.') && !item.filename.starts_with('.')) {
    throw Failure("The new name \"" + name + "\" would hide the file");
  }
  return {std::move(name), with_separator(folder)};
}

}  // namespace quorvel
