#include <algorithm>
#include <set>

#include "fileops/file_job.h"
#include "rules/action.h"
#include "text/case.h"
#include "text/failure.h"

/// A file and what belongs to it, done and taken back as one.
namespace quorvel {

FileJobResult FileJobs::run(const FileJob& job) {
  if (job.companions.empty() || is_done_already(job) || !files_.exists(job.path)) return run_alone(job);
  // What a rename is refused for needs no companion to be touched before.
  const bool is_refused =
      lower_case(job.path) == lower_case(job.destination()) || (!job.replaces && files_.exists(job.destination()));
  return job.action == Rename && is_refused ? run_alone(job) : run_together(job);
}

FileJobResult FileJobs::undo(const FileJob& job) {
  const bool is_gone = !files_.exists(job.destination()) && !files_.is_link(job.destination());
  return job.companions.empty() || is_gone ? undo_alone(job) : undo_together(job);
}

/// Why one of them cannot go along.
std::optional<std::string> FileJobs::trouble_of(const std::vector<FileJob>& companions) const {
  std::set<std::string> targets;
  for (const FileJob& companion : companions) {
    const std::string target = companion.destination();
    if (!files_.exists(companion.path)) return companion.path + " cannot go along: it is not there any more";
    if (!companion.replaces && files_.exists(target))
      return companion.path + " cannot go along: " + target + " is there already";
    if (!targets.insert(lower_case(target)).second) {
      return companion.path + " cannot go along: two files would be " + target;
    }
  }
  return {};
}

FileJobResult FileJobs::run_together(const FileJob& job) {
  if (const std::optional<std::string> trouble = trouble_of(job.companions)) {
    log_.debug_log(*trouble, LogLevel::Verbose);
    return {false, trouble};
  }
  History::Group group(history_);
  std::vector<FileJob> done;
  FileJobResult result;
  try {
    for (const FileJob& companion : job.companions) {
      result = run_alone(companion);
      if (!result.done) {
        result.error_text = companion.path + " cannot go along: " + result.error_text.value_or("it was gone");
        break;
      }
      done.push_back(as_done(companion, result));
    }
    if (result.done) {
      group.leads(true);
      result = run_alone(job);
    }
  } catch (...) {
    group.leads(false);
    take_back(done);
    throw;
  }
  group.leads(false);
  if (result.done) {
    result.companions = std::move(done);
  } else if (const std::string left = take_back(done); !left.empty()) {
    result.error_text = result.error_text.value_or("The file was gone") + left;
  }
  return result;
}

/// What could not be taken back, as further lines of a failure's text.
std::string FileJobs::take_back(const std::vector<FileJob>& done) {
  std::string left;
  for (std::size_t i = done.size(); i-- > 0;) {
    const FileJob& companion = done[i];
    std::string trouble = "it was gone";
    try {
      const FileJobResult result = undo_alone(companion);
      if (result.done) continue;
      trouble = result.error_text.value_or(trouble);
    } catch (const Failure& failure) {
      trouble = failure.what();
    }
    left += "\r\n" + companion.path + " is " + companion.destination() + " now: " + trouble;
    log_.debug_log(companion.path + " is " + companion.destination() + " now: " + trouble, LogLevel::Normal);
  }
  return left;
}

FileJobResult FileJobs::undo_together(const FileJob& job) {
  refuse_another_file(job);
  std::vector<FileJob> companions = job.companions;
  std::erase_if(companions, [this](const FileJob& each) {
    const bool is_gone = !files_.exists(each.destination()) && !files_.is_link(each.destination());
    if (is_gone) log_.debug_log(each.destination() + " is not there any more, so it is not undone", LogLevel::Normal);
    return is_gone;
  });
  for (const FileJob& each : companions) {
    refuse_another_file(each);
    if (takes_source(each.action) && files_.exists(each.path)) throw Failure(each.path + " is there already");
  }
  History::Group group(history_);
  group.leads(true);
  FileJobResult result = undo_alone(job);
  group.leads(false);
  if (!result.done) return result;
  const std::string left = take_back(companions);
  if (!left.empty()) throw Failure("The file itself is back" + left);
  return result;
}

}  // namespace quorvel
