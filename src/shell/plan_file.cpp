#include "shell/plan_file.h"

#include <simdjson.h>

#include <optional>
#include <utility>

#include "naming/file_names.h"
#include "platform/native.h"
#include "platform/stamp_text.h"
#include "rules/action.h"
#include "text/cut.h"
#include "text/failure.h"

namespace quorvel {
namespace {

std::string text_at(const simdjson::dom::element& object, const char* key) {
  std::string_view text;
  return object[key].get(text) == simdjson::SUCCESS ? std::string(text) : std::string();
}

/// The job between "path" and "new_path".
FileJob job_of(const simdjson::dom::element& object, int action) {
  const std::string old_path = text_at(object, "path"), new_path = text_at(object, "new_path");
  for (const std::string& path : {old_path, new_path}) {
    if (path.empty()) throw Failure("\"path\" or \"new_path\" is missing");
    if (path != absolute_path(path)) throw Failure("\"" + path + "\" is not a full path");
  }
  FileJob job{old_path, getfname(old_path), getfname(new_path), getpath(new_path, 0), action};
  if (job.new_name.empty() || job.dest_path.empty()) throw Failure("\"" + new_path + "\" names no file");
  return job;
}

bool stays_in_folder(const FileJob& job) {
  return job.dest_path == getpath(job.path, 0);
}

/// Empty for a line that plans nothing.
std::optional<Batch::Entry> entry_of(const simdjson::dom::element& object) {
  if (text_at(object, "state") != "planned") return {};
  const std::string action = text_at(object, "action"), stamp = text_at(object, "stamp");
  Batch::Entry entry{job_of(object, action_named(action))};
  FileJob& job = entry.job;
  if (job.action == 0) throw Failure("\"" + action + "\" is no action");
  if (job.action == Rename && !stays_in_folder(job)) {
    throw Failure("\"" + job.destination() + "\" is in another folder, so the action cannot be \"rename\"");
  }
  if (!stamp.empty() && !(entry.stamp = stamp_in(stamp))) throw Failure("\"" + stamp + "\" is no stamp");
  const auto companions = object["companions"];
  if (companions.error() == simdjson::NO_SUCH_FIELD || companions.is_null()) return entry;
  simdjson::dom::array list;
  if (companions.get(list) != simdjson::SUCCESS) throw Failure("\"companions\" is no list");
  for (const simdjson::dom::element each : list) {
    FileJob companion = job_of(each, job.action);
    // One from a folder of its own comes to the file that is only renamed.
    if (job.action == Rename && !stays_in_folder(companion)) companion.action = MoveAndRename;
    job.companions.push_back(std::move(companion));
  }
  return entry;
}

}  // namespace

std::vector<Batch::Entry> plan_of(std::string_view text) {
  simdjson::dom::parser parser;
  std::vector<Batch::Entry> entries;
  int number = 0;
  for (std::string_view line : split(text, "\n")) {
    ++number;
    line = trim(line);
    if (line.empty()) continue;
    try {
      simdjson::dom::element object;
      const auto error = parser.parse(line.data(), line.size()).get(object);
      if (error != simdjson::SUCCESS) throw Failure(simdjson::error_message(error));
      if (!object.is_object()) throw Failure("it is no object");
      if (std::optional<Batch::Entry> entry = entry_of(object)) entries.push_back(std::move(*entry));
    } catch (const Failure& failure) {
      throw Failure("Line " + std::to_string(number) + " of the plan: " + failure.what());
    }
  }
  return entries;
}

}  // namespace quorvel
