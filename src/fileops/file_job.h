#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "history/history.h"
#include "history/journal.h"
#include "platform/file_operation.h"
#include "platform/files.h"
#include "platform/log.h"
#include "platform/native.h"

/// Renaming, moving and copying one file under its new name, and taking that back.
namespace quorvel {

/// What to do with one file, or what was done.
struct FileJob {
  std::string path;      // of the source
  std::string filename;  // its last component
  std::string new_name;
  std::string dest_path;                     // the destination folder, ending in a separator
  int action = 0;                            // an Action of the rules
  std::optional<FileStamp> done_stamp = {};  // of the destination after the job was done
  std::int64_t past_id = 0;                  // of the operation in the history that did it, or that it takes back
  bool sets_aside = false;                   // the new name is only for a moment
  bool replaces = false;                     // a file that has the new name, which goes to the trash then
  std::vector<FileJob> companions = {};      // what belongs to the file and goes along, as one with it

  std::string destination() const { return dest_path + new_name; }
};

/// How it ended. Without an error text, the one that the user sees stays as it was.
struct FileJobResult {
  bool done = false;
  std::optional<std::string> error_text = {};
  std::optional<FileStamp> stamp = {};         // of the destination, when done
  bool is_right_already = false;               // not done, for the file has its place and its name
  std::int64_t past_id = 0;                    // in the history; 0 when nothing was begun
  std::optional<FileStamp> source_stamp = {};  // of the source before, when anything was begun
  std::optional<std::string> dest_path = {};   // the destination folder as it was made for a move or a copy, when done
  std::vector<FileJob> companions = {};        // as they were done, when done
};

/// The job, as it is to be taken back.
FileJob as_done(FileJob job, const FileJobResult& result);

class FileJobs {
 public:
  /// `verify`: whether what is moved to another file system is read back and compared; read at each move.
  FileJobs(FileOperation& shell, Files& files, Journal& journal, History& history, const bool& verify, Log& log)
      : shell_(shell), files_(files), journal_(journal), history_(history), verify_(verify), log_(log) {}

  /// Carries the job out. Nothing has changed when it fails, but for folders made for the destination. Throws Failure
  /// when a name holds a NUL, as undo() does, and when the action is unknown. With a `past_id` it takes the undoing of
  /// that number back. With companions: all of them go or none, and they go first, so that what was cut off in the
  /// middle can be run again.
  FileJobResult run(const FileJob& job);

  /// Brings back what run() has changed: a renamed or moved file returns to its old path, whose folder is made when it
  /// is missing, a copy goes to the trash, a link is removed and nothing else.
  /// Where there is no trash, a copy is deleted only while its source is there with the same size and time of change.
  /// Throws Failure when the file at the destination is not the one that `done_stamp` describes. Companions are looked
  /// at before anything is touched; one that is gone by then holds up nothing.
  FileJobResult undo(const FileJob& job);

  /// Puts the job's file into the trash instead, for one that is better; not where there is none.
  FileJobResult discard(const FileJob& job);

  /// Whether the file has its place and its name, or a link to it has.
  bool is_done_already(const FileJob& job) const;

  /// Why a link cannot be taken back: what has its name is no link to the file any more, or is the last name that the
  /// file has. Empty when it can.
  std::string link_refusal(const FileJob& job) const;

  /// Puts a folder into the trash that holds nothing but `leftovers`. With `undoes` it takes back that it was made.
  FileJobResult tidy(const std::string& folder, const std::vector<std::string>& leftovers, std::int64_t undoes = 0);
  /// Makes such a folder again, if it is not there; what was in it stays in the trash.
  FileJobResult make_again(const std::string& folder, std::int64_t undoes);

  /// Makes the missing folders of `folder`, each of whose parts ends in a separator; a last part without one is not
  /// made, and the first two never are: a missing drive or top folder is a mistake to report, not something to create.
  /// Returns `folder` as it was made: a part that ends in dots or blanks is made without them where the drive refuses
  /// it, as those with Windows' rules do.
  std::string make_tree(std::string folder, char separator = native::separator);

 private:
  FileJobResult run_alone(const FileJob& job);
  FileJobResult undo_alone(const FileJob& job);
  FileJobResult undo_link(const FileJob& job);
  FileJobResult run_together(const FileJob& job);
  FileJobResult undo_together(const FileJob& job);
  std::optional<std::string> trouble_of(const std::vector<FileJob>& companions) const;
  std::string take_back(const std::vector<FileJob>& done);
  FileJobResult carry_out(const FileJob& job);
  FileJobResult rename(const FileJob& job);
  FileJobResult perform_in_tree(FileOperationRequest::Operation operation, const FileJob& job);
  FileJobResult perform(FileOperationRequest request, std::int64_t undoes, std::string remark = {});
  /// With the journal and the history knowing of it.
  FileJobResult recorded(const FileOperationRequest& request, Deed deed, std::int64_t undoes,
                         const std::function<int()>& carry_out, std::string remark = {});
  void refuse_another_file(const FileJob& job) const;
  FileJobResult result_of(const FileOperationRequest& request, int code);
  int delete_copy(const FileJob& job);

  FileOperation& shell_;
  Files& files_;
  Journal& journal_;
  History& history_;
  const bool& verify_;
  Log& log_;
};

}  // namespace quorvel
