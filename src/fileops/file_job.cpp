#include "fileops/file_job.h"

#include <string_view>
#include <utility>

#include "naming/file_names.h"
#include "platform/temporary_name.h"
#include "rules/action.h"
#include "text/case.h"
#include "text/failure.h"

namespace quorvel {
namespace {

using Request = FileOperationRequest;

/// A NUL would end the name early and hit another file.
void refuse_nul(const FileJob& job) {
  for (const std::string* text : {&job.path, &job.dest_path, &job.new_name}) {
    if (text->find('\0') != std::string::npos) {
      throw Failure("the name \"" + text->substr(0, text->find('\0')) + "...\" holds a NUL character");
    }
  }
}

Deed deed_of(int operation) {
  switch (operation) {
    case Request::HardLink:
      return Deed::HardLinked;
    case Request::SymbolicLink:
      return Deed::SymbolicLinked;
    case Request::Move:
      return Deed::Moved;
    case Request::Copy:
      return Deed::Copied;
    default:
      return Deed::Renamed;
  }
}

}  // namespace

FileJob as_done(FileJob job, const FileJobResult& result) {
  job.done_stamp = result.stamp;
  job.past_id = result.past_id;
  if (result.dest_path) job.dest_path = *result.dest_path;
  job.companions = result.companions;
  return job;
}

FileJobResult FileJobs::run_alone(const FileJob& job) {
  refuse_nul(job);
  if (!files_.exists(job.path)) {
    log_.debug_log("File rename failed. Source file not found", LogLevel::Verbose);
    return {};
  }
  if (is_link(job.action) && is_done_already(job)) {
    log_.debug_log(job.destination() + " leads to " + job.path + " already", LogLevel::Verbose);
    return {.error_text = "The destination is this file already", .is_right_already = true};
  }
  FileJobResult result = carry_out(job);
  result.is_right_already = !result.done && is_done_already(job);
  return result;
}

bool FileJobs::is_done_already(const FileJob& job) const {
  if (job.path == job.destination()) return true;
  if (!is_link(job.action)) return false;
  const std::optional<FileStamp> source = files_.stamp(job.path), now = files_.stamp(job.destination());
  return source && now && source->same_file(*now);
}

FileJobResult FileJobs::carry_out(const FileJob& job) {
  switch (job.action) {
    case Rename:
      return rename(job);
    case MoveAndRename:
      log_.debug_log("Moving " + job.path + " to " + job.destination(), LogLevel::Verbose);
      return perform_in_tree(Request::Move, job);
    case CopyAndRename:
      log_.debug_log("Copying " + job.path + " to " + job.destination(), LogLevel::Verbose);
      return perform_in_tree(Request::Copy, job);
    case HardLinkAndRename:
    case SymbolicLinkAndRename:
      log_.debug_log("Linking " + job.destination() + " to " + job.path, LogLevel::Verbose);
      return perform_in_tree(job.action == HardLinkAndRename ? Request::HardLink : Request::SymbolicLink, job);
    default:
      throw Failure("the rule's action " + std::to_string(job.action) + " is none of rename, move, copy and link");
  }
}

FileJobResult FileJobs::rename(const FileJob& job) {
  log_.debug_log("Renaming " + job.filename + " to " + job.new_name, LogLevel::Verbose);
  if (lower_case(job.destination()) == lower_case(job.path)) {
    log_.debug_log("File rename failed. New name = old name", LogLevel::Verbose);
    return {false, "The new filename is the same as the old filename"};
  }
  if (job.replaces) return perform_in_tree(Request::Move, job);
  if (files_.exists(job.destination())) {
    log_.debug_log("File rename failed. Destination already exists", LogLevel::Verbose);
    return {false, "The destination aleady exists. File cannot be renamed"};
  }
  const Request request{Request::Rename, job.path, job.destination(), Request::AllowUndo};
  if (job.sets_aside) return recorded(request, Deed::SetAside, 0, [&] { return shell_.perform(request); });
  return perform(request, job.past_id);
}

FileJobResult FileJobs::perform_in_tree(Request::Operation operation, const FileJob& job) {
  std::string made = make_tree(job.dest_path);
  Request request{operation, job.path, made + job.new_name, Request::AllowUndo};
  std::string remark;
  if (job.replaces && files_.exists(request.destination)) {
    request.flags |= Request::Replace;
    remark = "What was " + request.destination + " is in the " + std::string(native::trash_name);
  }
  FileJobResult result = perform(std::move(request), job.past_id, remark);
  if (result.done && !remark.empty()) log_.debug_log(remark, LogLevel::Normal);
  if (result.done) result.dest_path = std::move(made);
  return result;
}

FileJobResult FileJobs::perform(FileOperationRequest request, std::int64_t undoes, std::string remark) {
  if (request.operation != Request::Rename) request.temporary = getpath(request.destination, 0) + temporary_name();
  if (request.operation == Request::Move && verify_) request.flags |= Request::Verify;
  return recorded(
      request, deed_of(request.operation), undoes, [&] { return shell_.perform(request); }, std::move(remark));
}

FileJobResult FileJobs::recorded(const Request& request, Deed deed, std::int64_t undoes,
                                 const std::function<int()>& carry_out, std::string remark) {
  PastOperation past;
  past.deed = deed;
  past.old_path = request.source;
  past.new_path = request.destination;
  past.stamp = files_.stamp(request.source);
  past.undoes = undoes;
  past.reason = "It was stopped";
  journal_.begin(request, past.stamp);
  history_.begin(past, journal_.name());
  const struct Ending {
    FileJobs& jobs;
    PastOperation& past;
    ~Ending() {
      if (past.outcome == PastOperation::UnderWay) past.outcome = PastOperation::Failed;
      jobs.history_.end(std::move(past));
      jobs.journal_.end();
    }
  } ending{*this, past};
  FileJobResult result = result_of(request, carry_out());
  result.past_id = past.id;
  result.source_stamp = past.stamp;
  past.reason = result.done ? std::move(remark) : result.error_text.value_or("");
  if (!result.done) return result;
  if (!request.destination.empty()) result.stamp = past.stamp = files_.stamp(request.destination);
  past.outcome = PastOperation::Done;
  return result;
}

FileJobResult FileJobs::result_of(const Request& request, int code) {
  if (code == 0) return {true};
  log_.debug_log("File operation failed (" + std::to_string(code) + ")", LogLevel::Normal);
  const std::string_view plainly = request.makes_link() ? native::link_trouble(code) : std::string_view();
  if (!plainly.empty()) return {false, std::string(plainly)};
  if (code == native::name_taken_code && (request.flags & Request::Replace) != 0) {
    return {false, request.destination + " is there already, and there is no " + std::string(native::trash_name) +
                       " that it could go to"};
  }
  if (code == native::being_written_code) return {false, "The file is still being written by another program"};
  if (code == native::copy_differs_code) return {false, "The copy, read back, is not what the file is"};
  return {false, std::string("The file operation failed. ").append(native::system_name) + " reports error " +
                     std::to_string(code) + ": " + native::error_words(code)};
}

FileJobResult FileJobs::undo_alone(const FileJob& job) {
  refuse_nul(job);
  const std::string current = job.destination();
  if (is_link(job.action)) return undo_link(job);
  if (!files_.exists(current)) {
    log_.debug_log("Undo rename failed. Source file not found", LogLevel::Verbose);
    return {};
  }
  refuse_another_file(job);
  FileJobResult result;
  const auto back = [&](Request::Operation operation) {
    return perform({operation, current, job.path, Request::AllowUndo}, job.past_id);
  };
  switch (job.action) {
    case Rename:
      if (files_.exists(job.path)) {
        constexpr const char* taken = "File rename failed. Destination already exists";
        log_.debug_log(taken, LogLevel::Verbose);
        return {false, taken};
      }
      result = back(Request::Rename);
      break;
    case MoveAndRename:
      make_tree(getpath(job.path, 0));
      result = back(Request::Move);
      break;
    case CopyAndRename:
      result = recorded({Request::Delete, current, ""}, Deed::Trashed, job.past_id, [&] { return delete_copy(job); });
      break;
    default:
      break;
  }
  log_.debug_log("Undone file operatrion", LogLevel::Verbose);
  return result;
}

FileJobResult FileJobs::undo_link(const FileJob& job) {
  const std::string link = job.destination();
  if (!files_.exists(link) && !files_.is_link(link)) {
    log_.debug_log("Undo rename failed. Source file not found", LogLevel::Verbose);
    return {};
  }
  refuse_another_file(job);
  const Request removal{Request::Delete, link, "", Request::NoConfirmation};
  FileJobResult result = recorded(removal, Deed::Trashed, job.past_id, [&] { return shell_.perform(removal); });
  log_.debug_log("Undone file operatrion", LogLevel::Verbose);
  return result;
}

std::string FileJobs::link_refusal(const FileJob& job) const {
  const std::string link = job.destination();
  const std::optional<FileStamp> now = files_.stamp(link), source = files_.stamp(job.path);
  const bool is_sources = now && source && now->same_file(*source);
  if (job.action == SymbolicLinkAndRename) {
    const bool is_ours = files_.is_link(link) && (is_sources || (!now && !source));
    return is_ours ? "" : link + " is not the link to " + job.path + " any more";
  }
  if (!is_sources && !(now && job.done_stamp && now->same_file(*job.done_stamp))) {
    return link + " is not " + job.path + " any more";
  }
  return now->links > 1 ? "" : link + " is the only name that the file still has, so it stays";
}

void FileJobs::refuse_another_file(const FileJob& job) const {
  if (is_link(job.action)) {
    if (const std::string refusal = link_refusal(job); !refusal.empty()) throw Failure(refusal);
    return;
  }
  const std::optional<FileStamp> now = files_.stamp(job.destination());
  if (!job.done_stamp || !now || now->same_contents(*job.done_stamp)) return;
  throw Failure(job.destination() + " has been changed or replaced since");
}

int FileJobs::delete_copy(const FileJob& job) {
  const std::string copy = job.destination();
  const int code = shell_.perform({Request::Delete, copy, "", Request::AllowUndo | Request::NoConfirmation});
  if (code != native::no_trash_code) return code;
  const std::optional<FileStamp> source = files_.stamp(job.path), copied = files_.stamp(copy);
  if (!source || !copied || source->same_file(*copied) || !copied->may_be_copy_of(*source)) return code;
  return shell_.perform({Request::Delete, copy, "", Request::NoConfirmation});
}

FileJobResult FileJobs::discard(const FileJob& job) {
  const Request request{Request::Delete, job.path, "", Request::AllowUndo | Request::NoConfirmation};
  return recorded(request, Deed::Trashed, 0, [&] { return shell_.perform(request); });
}

FileJobResult FileJobs::tidy(const std::string& folder, const std::vector<std::string>& leftovers,
                             std::int64_t undoes) {
  const Request request{Request::Delete, folder, "", Request::AllowUndo | Request::NoConfirmation};
  std::string remark;
  for (const std::string& name : leftovers) remark += (remark.empty() ? "It held " : ", ") + name;
  return recorded(
      request, Deed::Tidied, undoes, [&] { return shell_.perform(request); }, remark);
}

FileJobResult FileJobs::make_again(const std::string& folder, std::int64_t undoes) {
  return recorded({0, folder, ""}, Deed::Made, undoes, [&] {
    make_tree(with_separator(folder));
    return files_.kind(folder) == Files::Kind::Folder ? 0 : native::no_folder_code;
  });
}

std::string FileJobs::make_tree(std::string folder, char separator) {
  std::size_t part = 0, start = 0;
  for (std::size_t at = 0; (at = folder.find(separator, at)) != std::string::npos; start = at, ++part) {
    const std::string prefix = folder.substr(0, ++at);
    if (part < 2 || files_.exists(prefix) || files_.create_folder(prefix) || files_.exists(prefix)) continue;
    const std::size_t kept = folder.find_last_not_of(". ", at - 2) + 1;
    if (kept == at - 1 || kept <= start) continue;
    const std::string shorter = folder.substr(0, kept) + separator;
    if (!files_.exists(shorter) && !files_.create_folder(shorter)) continue;
    log_.debug_log("The drive takes no folder named " + prefix + ", so the file goes to " + shorter, LogLevel::Normal);
    folder.replace(0, at, shorter);
    at = shorter.size();
  }
  return folder;
}

}  // namespace quorvel
