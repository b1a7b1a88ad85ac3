#include "fileops/file_job.h"

#include <string_view>

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

}  // namespace

FileJobResult FileJobs::run(const FileJob& job) {
  refuse_nul(job);
  if (!files_.exists(job.path)) {
    log_.debug_log("File rename failed. Source file not found", LogLevel::Verbose);
    return {};
  }
  switch (job.action) {
    case Rename:
      return rename(job);
    case MoveAndRename:
      log_.debug_log("Moving " + job.path + " to " + job.destination(), LogLevel::Verbose);
      make_tree(job.dest_path);
      return perform({Request::Move, job.path, job.destination(), Request::AllowUndo});
    case CopyAndRename:
      log_.debug_log("Copying " + job.path + " to " + job.destination(), LogLevel::Verbose);
      make_tree(job.dest_path);
      return perform({Request::Copy, job.path, job.destination(), Request::AllowUndo});
    default:
      throw Failure("the rule's action " + std::to_string(job.action) + " is none of rename, move and copy");
  }
}

FileJobResult FileJobs::rename(const FileJob& job) {
  log_.debug_log("Renaming " + job.filename + " to " + job.new_name, LogLevel::Verbose);
  if (lower_case(job.destination()) == lower_case(job.path)) {
    log_.debug_log("File rename failed. New name = old name", LogLevel::Verbose);
    return {false, "The new filename is the same as the old filename"};
  }
  if (files_.exists(job.destination())) {
    log_.debug_log("File rename failed. Destination already exists", LogLevel::Verbose);
    return {false, "The destination aleady exists. File cannot be renamed"};
  }
  return perform({Request::Rename, job.path, job.destination(), Request::AllowUndo});
}

FileJobResult FileJobs::perform(const FileOperationRequest& request) {
  return result_of(shell_.perform(request));
}

FileJobResult FileJobs::result_of(int code) {
  if (code == 0) return {true, std::nullopt};
  log_.debug_log("File operation failed (" + std::to_string(code) + ")", LogLevel::Normal);
  return {false, std::string("The file operation failed. ").append(native::system_name) + " reports error " +
                     std::to_string(code)};
}

FileJobResult FileJobs::undo(const FileJob& job) {
  refuse_nul(job);
  const std::string current = job.destination();
  if (!files_.exists(current)) {
    log_.debug_log("Undo rename failed. Source file not found", LogLevel::Verbose);
    return {};
  }
  FileJobResult result;
  const auto back = [&](Request::Operation operation) {
    return perform({operation, current, job.path, Request::AllowUndo});
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
      result = back(Request::Move);
      break;
    case CopyAndRename:
      result = result_of(delete_copy(job));
      break;
    default:
      break;
  }
  log_.debug_log("Undone file operatrion", LogLevel::Verbose);
  return result;
}

int FileJobs::delete_copy(const FileJob& job) {
  const std::string copy = job.destination();
  const int code = shell_.perform({Request::Delete, copy, "", Request::AllowUndo | Request::NoConfirmation});
  if (code != native::no_trash_code) return code;
  const std::optional<FileStamp> source = files_.stamp(job.path), copied = files_.stamp(copy);
  if (!source || !copied || source->size != copied->size || source->same_file(*copied)) return code;
  return shell_.perform({Request::Delete, copy, "", Request::NoConfirmation});
}

void FileJobs::make_tree(const std::string& folder, char separator) {
  std::size_t part = 0;
  for (std::size_t at = 0; (at = folder.find(separator, at)) != std::string::npos; ++part) {
    const std::string prefix = folder.substr(0, ++at);
    if (part >= 2 && !files_.exists(prefix)) files_.create_folder(prefix);
  }
}

}  // namespace quorvel
