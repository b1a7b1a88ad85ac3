#include "platform/windows/plain_files.h"

#include "platform/windows/handle.h"
#include "platform/windows/shell.h"

namespace quorvel::plain_files {

int last_error() {
  switch (const DWORD error = GetLastError()) {
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS:
      return shell::name_taken;
    case ERROR_REQUEST_ABORTED:
      return shell::aborted;
    case ERROR_SEM_TIMEOUT:  // of a network's drive
      return ERROR_TIMEOUT;
    case ERROR_CALL_NOT_IMPLEMENTED:
      return ERROR_NOT_SUPPORTED;
    default:
      return static_cast<int>(error);
  }
}

namespace {

/// Why nothing could get the name `path`.
int name_error(const std::wstring& path) {
  const int error = last_error();
  const DWORD taken = error == shell::name_taken ? GetFileAttributesW(path.c_str()) : INVALID_FILE_ATTRIBUTES;
  const bool by_folder = taken != INVALID_FILE_ATTRIBUTES && (taken & FILE_ATTRIBUTE_DIRECTORY) != 0;
  return by_folder ? shell::destination_is_folder : error;
}

}  // namespace

int rename(const std::wstring& from, const std::wstring& to) {
  return MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_WRITE_THROUGH) ? 0 : name_error(to);
}

int hard_link(const std::wstring& file, const std::wstring& link) {
  return CreateHardLinkW(link.c_str(), file.c_str(), nullptr) ? 0 : name_error(link);
}

int symbolic_link(const std::wstring& file, const std::wstring& link) {
  // For everybody in the developer mode; a system that does not know the flag calls it invalid.
  constexpr DWORD for_everybody = 2;
  if (CreateSymbolicLinkW(link.c_str(), file.c_str(), for_everybody)) return 0;
  if (GetLastError() == ERROR_INVALID_PARAMETER && CreateSymbolicLinkW(link.c_str(), file.c_str(), 0)) return 0;
  return name_error(link);
}

int remove(const std::wstring& path) {
  if (DeleteFileW(path.c_str())) return 0;
  const int error = last_error();
  const DWORD attributes = GetFileAttributesW(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_READONLY) == 0) return error;
  SetFileAttributesW(path.c_str(), attributes & ~FILE_ATTRIBUTE_READONLY);
  if (DeleteFileW(path.c_str())) return 0;
  SetFileAttributesW(path.c_str(), attributes);
  return error;
}

int check_removable(const std::wstring& path) {
  const Handle file(CreateFileW(path.c_str(), DELETE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT | FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  return file ? 0 : last_error();
}

bool is_there(const std::wstring& path) {
  return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

}  // namespace quorvel::plain_files
