#include <windows.h>

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

#include "platform/disk_files.h"
#include "platform/native.h"
#include "platform/system.h"
#include "platform/windows/copying.h"
#include "platform/windows/final_name.h"
#include "platform/windows/plain_files.h"
#include "platform/windows/shell.h"
#include "platform/windows/wide.h"

namespace quorvel {
namespace {

using Request = FileOperationRequest;

bool is_full(std::wstring_view path) {
  const bool on_drive = path.size() >= 3 && path[1] == L':' && (path[2] == L'\\' || path[2] == L'/');
  return on_drive || path.starts_with(L"\\\\");
}

std::wstring_view name_in(std::wstring_view path) {
  path = path.substr(0, path.find_last_not_of(L"\\/") + 1);
  return path.substr(path.find_last_of(L"\\/") + 1);
}

/// Makes of `text` a path as the system's calls take it. 0, or why it is refused.
int make_path(const std::string& text, std::wstring& path) {
  constexpr std::size_t max_path = 32'700;
  const std::optional<std::wstring> wide = to_utf16(text);
  if (!wide || text.find('\0') != std::string::npos || !is_full(*wide)) return shell::invalid_path;
  // Not a drive, a folder's own entry or the folder above it; and the shell takes patterns.
  const std::wstring_view name = name_in(*wide);
  if (name.empty() || name == L"." || name == L".." || name.ends_with(L':') ||
      wide->find_first_of(L"*?", 4) != std::wstring::npos) {
    return shell::invalid_path;
  }
  if (native::is_too_long(to_utf8(name))) return shell::name_too_long;
  if (wide->size() > max_path) return shell::path_too_long;
  path = system_path(*wide);
  return 0;
}

bool is_folder(const std::wstring& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

/// Renames, moves, copies and deletes with the system's plain calls. In the window it leaves to the shell what
/// Explorer can undo then: a new name on the same volume, and the way to the recycle bin. The codes are the system's,
/// and the shell's where both name the same number.
///
/// All but Delete take one file, or a link, which Rename and Move treat as itself on its volume, and whose file
/// they take elsewhere. An empty or relative path and one that holds a NUL or a wildcard are invalid_path.
class WindowsFileOperation : public FileOperation {
 public:
  WindowsFileOperation(CopyProgress progress, MayReplace may_replace)
      : progress_(std::move(progress)), may_replace_(std::move(may_replace)) {}

  /// Believes what it sees afterwards, not what the system has said.
  int perform(const Request& request) override {
    std::wstring source, destination;
    if (const int refused = make_path(request.source, source); refused != 0) return refused;
    if (!plain_files::is_there(source)) return plain_files::last_error();
    if (request.operation != Request::Delete) {
      if (const int refused = make_path(request.destination, destination); refused != 0) return refused;
      if (is_folder(source)) return shell::source_is_folder;
    }
    const std::optional<FileStamp> before = files_.stamp(request.source);
    int code = carry_out(request, source, destination);
    if (code == 0 && !is_done(request, before)) code = shell::not_done;
    if (code != shell::not_done) return code;
    const int why = plain_files::check_removable(source);
    return why != 0 && request.takes_source() ? why : code;
  }

 private:
  int carry_out(const Request& request, const std::wstring& source, const std::wstring& destination) const {
    const MayReplace& may_replace = (request.flags & Request::Replace) != 0 ? always_ : may_replace_;
    switch (request.operation) {
      case Request::Delete:
        return remove(source, request.flags);
      case Request::Rename:
        return move(request, source, {destination, never_});
      case Request::Move:
        return move(request, source, {destination, may_replace});
      case Request::Copy: {
        FinalName name(destination, may_replace);
        return copying(request, source).copy_to(name);
      }
      case Request::HardLink:
      case Request::SymbolicLink:
        return link(request, source, {destination, may_replace});
      default:
        return ERROR_INVALID_FUNCTION;
    }
  }

  int move(const Request& request, const std::wstring& source, FinalName name) const {
    const FinalName::Give give = [&](const std::wstring& from, const std::wstring& to) {
      return may_replace_ && can_be_shells(request, from, to) ? by_shell(request.operation, from, to)
                                                              : plain_files::rename(from, to);
    };
    if (source == name.path()) return shell::name_taken;
    int error = name.take(source, give);
    if (error == shell::name_taken) error = name.check(source) == 0 ? name.take(source, give) : error;
    return error == ERROR_NOT_SAME_DEVICE && request.operation == Request::Move ? move_across(request, source, name)
                                                                                : error;
  }

  static int link(const Request& request, const std::wstring& source, FinalName name) {
    const auto make = [&](const std::wstring& path) {
      return request.operation == Request::HardLink ? plain_files::hard_link(source, path)
                                                    : plain_files::symbolic_link(source, path);
    };
    int error = make(name.path());
    if (error != shell::name_taken || name.check(source) != 0) return error;
    // The file that has the name is given up only for a link that has come into being.
    const std::wstring temporary = system_path(request.temporary).value_or(L"");
    error = make(temporary);
    if (error != 0) return error;
    error = name.take(temporary, plain_files::rename);
    if (error != 0) plain_files::remove(temporary);
    return error;
  }

  /// Whether both paths are on one volume, short enough, and differ by more than case, which the shell might take for a
  /// name that is taken.
  bool can_be_shells(const Request& request, const std::wstring& from, const std::wstring& to) const {
    if (is_long_form(from) || is_long_form(to)) return false;
    if (CompareStringOrdinal(from.c_str(), -1, to.c_str(), -1, TRUE) == CSTR_EQUAL) return false;
    const std::optional<FileStamp> file = files_.stamp(request.source);
    const std::optional<FileStamp> folder = files_.stamp(to_utf8(to.substr(0, to.find_last_of(L"\\/") + 1)));
    return file && folder && file->device == folder->device;
  }

  static int by_shell(int operation, const std::wstring& from, const std::wstring& to) {
    if (!plain_files::is_there(to)) return shell::move(operation, from, to);
    return is_folder(to) ? shell::destination_is_folder : shell::name_taken;
  }

  int move_across(const Request& request, const std::wstring& source, FinalName& name) const {
    // Otherwise this would show only after the copying.
    if (const int error = plain_files::check_removable(source); error != 0) return error;
    Copying copied = copying(request, source);
    if (const int error = copied.copy_to(name); error != 0) return error;
    const int error = copied.remove_source();
    if (error != 0) plain_files::remove(name.path());
    return error;
  }

  int remove(const std::wstring& path, std::uint16_t flags) const {
    const bool undoable = (flags & Request::AllowUndo) != 0;
    if (undoable && (is_long_form(path) || !shell::has_bin_for(path))) return native::no_trash_code;
    if (!undoable && !is_folder(path)) return plain_files::remove(path);
    if (is_long_form(path)) return shell::path_too_long;
    return shell::remove(path, flags, may_replace_ != nullptr);
  }

  bool is_done(const Request& request, const std::optional<FileStamp>& before) const {
    // A source that is just going cannot be looked at.
    const bool source_is_there = plain_files::is_there(*system_path(request.source));
    if (request.operation == Request::Delete) return !source_is_there;
    const std::optional<FileStamp> after = files_.stamp(request.destination);
    if (!files_.exists(request.destination) || (before && after && before->size != after->size)) return false;
    const bool is_one_name = request.operation != Request::Copy && before && after && before->id == after->id;
    return is_one_name || source_is_there != request.takes_source();
  }

  Copying copying(const Request& request, const std::wstring& source) const {
    const bool verifies = (request.flags & Request::Verify) != 0;
    return {source, system_path(request.temporary).value_or(L""), verifies, progress_};
  }

  const DiskFiles files_;
  const CopyProgress progress_;
  const MayReplace may_replace_, never_, always_ = [](const std::string&) { return true; };
};

}  // namespace

std::unique_ptr<FileOperation> system_file_operation(CopyProgress progress, MayReplace may_replace) {
  return std::make_unique<WindowsFileOperation>(std::move(progress), std::move(may_replace));
}

}  // namespace quorvel
