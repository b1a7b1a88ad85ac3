#include "queue/intake.h"

#include "naming/file_names.h"
#include "platform/native.h"
#include "queue/folder_scan.h"
#include "text/case.h"
#include "text/characters.h"

namespace quorvel {
namespace {

std::string without_quotes(std::string path) {
  if (path.ends_with('"')) path.pop_back();
  if (path.starts_with('"')) path.erase(0, 1);
  return path;
}

}  // namespace

Refusal refusal_of_name(const Settings& settings, const std::string& path) {
  if (!is_listed(settings, path)) return Refusal::TypeNotListed;
  return lower_case(path).find("sample") == std::string::npos ? Refusal::None : Refusal::Sample;
}

bool Intake::add_to_queue(const std::string& path, bool start) {
  const IntakeResult result = take(path, start);
  return !result.is_folder && result.queued == 1;
}

bool Intake::take_watched(const std::string& path, const std::string& folder, bool start) {
  if (!add_to_queue(path, start)) return false;
  QueueItem& item = queue_.at(queue_.count());
  item.added = folder;
  item.came_by_itself = true;
  return true;
}

IntakeResult Intake::take(const std::string& given, bool start) {
  // Where names may hold quotes, a path that exists exactly as given is taken exactly as given.
  Files::Kind kind = files_.kind(given);
  const std::string path = kind == Files::Kind::Missing ? without_quotes(given) : given;
  if (path != given) kind = files_.kind(path);
  IntakeResult result;
  if (length(path) <= 2) {
    result.refusal = Refusal::TooShort;
    return result;
  }
  switch (kind) {
    case Files::Kind::Missing:
      result.refusal = Refusal::Missing;
      break;
    case Files::Kind::Other:
      result.refusal = Refusal::NotAFile;
      break;
    case Files::Kind::Folder:
      return take_folder(path);
    case Files::Kind::File:
      result.refusal = take_file(path, start);
      result.queued = result.refusal == Refusal::None ? 1 : 0;
      break;
  }
  return result;
}

IntakeResult Intake::take_folder(const std::string& path) {
  IntakeResult result;
  result.is_folder = true;
  const std::string base = with_separator(path);
  const FolderScan scan = scan_folder(files_, base);
  for (const std::string& relative : scan.files) {
    const Refusal refusal =
        is_listed(settings_, relative) ? take(base + relative, true).refusal : Refusal::TypeNotListed;
    ++(refusal == Refusal::None ? result.queued : result.left_out);
    if (refusal == Refusal::None) queue_.at(queue_.count()).added = base;
    if (refusal != Refusal::Missing) continue;
    log_.debug_log("The file " + base + relative + " cannot be reached, so it is left out", LogLevel::Normal);
  }
  for (const std::string& folder : scan.unread) {
    log_.debug_log("The folder " + base + folder + " cannot be read, so files in it may be left out", LogLevel::Normal);
    ++result.unread;
  }
  for (const std::string& link : scan.ways_out) {
    log_.debug_log("The link " + base + link + " leads out of the folder that was added, so it is not followed",
                   LogLevel::Normal);
  }
  return result;
}

Refusal Intake::take_file(const std::string& path, bool start) {
  if (queue_.holds_path(path)) return Refusal::AlreadyQueued;
  if (const Refusal refusal = refusal_of_name(settings_, path); refusal != Refusal::None) return refusal;
  std::string filename = getfname(path);
  const std::string shown = remextension(filename);  // a listed extension means that there is one
  ui_.add_row(queue_.append(path, std::move(filename)), shown);
  if (start && !is_busy_()) ui_.arm_start_timer();
  return Refusal::None;
}

}  // namespace quorvel
