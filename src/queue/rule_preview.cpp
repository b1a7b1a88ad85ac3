#include "queue/rule_preview.h"

#include <string_view>

#include "naming/file_names.h"
#include "naming/tokens.h"
#include "platform/native.h"
#include "queue/identification.h"
#include "queue/placement.h"
#include "text/case.h"

namespace quorvel {

QueueItem example_item(bool exact) {
  QueueItem item;
  item.path = item.filename = "The.Harbour.Lights.2015.S01E02.1080p.WEB-DL-NTb.mkv";
  item.show_name = "The Harbour Lights";
  item.show_id = 101;
  item.season = 1;
  item.episode = 2;
  item.episode_title = "The Pilot Boat";
  item.facts = facts_in(read_name(item.path));
  if (!exact) return item;
  item.facts.country = "GB";
  item.facts.date = "2015-09-13";
  item.facts.absolute = "2";
  return item;
}

RulePreview preview_of(const AFilter& rule, const QueueItem* item, bool exact) {
  RulePreview preview;
  preview.is_example = item == nullptr || item->show_name.empty() || item->episode_title.empty();
  const QueueItem file = preview.is_example ? example_item(exact) : *item;
  preview.old_name = file.filename;
  try {
    const Placement placement = placement_by(rule, file);
    preview.new_name = placement.new_name;
    if (has_folder(rule.action)) preview.folder = placement.dest_path;
  } catch (const Failure& failure) {
    preview.remarks.push_back(std::string(failure.what()) + ".");
  }
  const std::string_view never = native::separator == '\\' ? "\\/:*?\"<>|" : "/";
  if (const std::size_t at = preview.new_name.find_first_of(never); at != std::string::npos) {
    preview.remarks.push_back("No file's name can hold \"" + preview.new_name.substr(at, 1) + "\".");
  }
  const auto add = [&](const std::vector<std::string>& more) {
    preview.remarks.insert(preview.remarks.end(), more.begin(), more.end());
  };
  add(remarks_on_mask(rule.mask));
  if (has_folder(rule.action)) add(remarks_on_folder(rule.path));
  if (!preview.is_example && !fits(rule, getextension(file.filename), lower_case(file.show_name))) {
    preview.remarks.emplace_back("The rule is not for this file.");
  }
  return preview;
}

}  // namespace quorvel
