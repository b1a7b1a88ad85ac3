#include "platform/windows/final_name.h"

#include "platform/disk_files.h"
#include "platform/windows/plain_files.h"
#include "platform/windows/shell.h"
#include "platform/windows/wide.h"

namespace quorvel {
namespace {

/// Whether both are files, and not one under two names. The volume is left out: a drive may stand for another's folder.
bool are_two_files(const std::string& one, const std::string& other) {
  const DiskFiles files;
  const std::optional<FileStamp> first = files.stamp(one), second = files.stamp(other);
  return first && second && files.kind(one) == Files::Kind::File &&
         (first->id != second->id || first->size != second->size || first->modified_ns != second->modified_ns);
}

}  // namespace

int FinalName::check(const std::wstring& source) {
  const DWORD attributes = GetFileAttributesW(path_.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) {
    const DWORD error = GetLastError();
    return error == ERROR_FILE_NOT_FOUND ? 0 : plain_files::last_error();
  }
  if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return shell::destination_is_folder;
  const std::string path = to_utf8(path_);
  is_given_up_ = may_replace_ && !is_long_form(path_) && are_two_files(path, to_utf8(source)) &&
                 shell::has_bin_for(path_) && may_replace_(path);
  return is_given_up_ ? 0 : shell::name_taken;
}

int FinalName::take(const std::wstring& from, const Give& give) const {
  const int error = give(from, path_);
  if (error != shell::name_taken || !is_given_up_) return error;
  constexpr std::uint16_t to_bin = FileOperationRequest::AllowUndo | FileOperationRequest::NoConfirmation;
  if (shell::remove(path_, to_bin, true) != 0) return error;
  return give(from, path_);
}

}  // namespace quorvel
