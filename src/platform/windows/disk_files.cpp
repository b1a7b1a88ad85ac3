#include <windows.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "platform/disk_files.h"
#include "platform/system.h"
#include "platform/temporary_name.h"
#include "platform/windows/handle.h"
#include "platform/windows/wide.h"

namespace quorvel {
namespace {

constexpr DWORD share_all = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr DWORD kept_attributes =
    FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;
constexpr DWORD chunk_size = 1U << 20;
constexpr std::uint64_t ticks_before_1970 = 116'444'736'000'000'000;

std::uint64_t joined(DWORD high, DWORD low) {
  return std::uint64_t{high} << 32 | low;
}

/// What is at the end of all links.
HANDLE open_existing(const std::wstring& path, DWORD access) {
  return CreateFileW(path.c_str(), access, share_all, nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
}

/// Whether the error says that there is nothing, rather than that it cannot be looked at.
bool is_missing(DWORD error) {
  constexpr std::array missing = {ERROR_FILE_NOT_FOUND, ERROR_PATH_NOT_FOUND,       ERROR_INVALID_NAME,
                                  ERROR_BAD_PATHNAME,   ERROR_FILENAME_EXCED_RANGE, ERROR_INVALID_DRIVE,
                                  ERROR_BAD_NETPATH,    ERROR_BAD_NET_NAME};
  return std::find(missing.begin(), missing.end(), static_cast<long>(error)) != missing.end();
}

Files::Kind kind_of(const std::wstring& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) {
    return is_missing(GetLastError()) ? Files::Kind::Missing : Files::Kind::Other;
  }
  const Handle handle(open_existing(path, 0));
  BY_HANDLE_FILE_INFORMATION found{};
  if (!handle) {
    if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) return Files::Kind::Other;
    return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? Files::Kind::Folder : Files::Kind::File;
  }
  if (GetFileType(handle.get()) != FILE_TYPE_DISK || !GetFileInformationByHandle(handle.get(), &found)) {
    return Files::Kind::Other;
  }
  return (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? Files::Kind::Folder : Files::Kind::File;
}

bool leads_elsewhere(const WIN32_FIND_DATAW& found) {
  return (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
         (found.dwReserved0 == IO_REPARSE_TAG_SYMLINK || found.dwReserved0 == IO_REPARSE_TAG_MOUNT_POINT);
}

bool is_link_at(const std::wstring& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) return false;
  WIN32_FIND_DATAW found{};
  const HANDLE search = FindFirstFileW(path.c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) return false;
  FindClose(search);
  return leads_elsewhere(found);
}

/// A file that is there may be replaced only if it might be written to: protecting it was meant seriously.
bool may_be_replaced(const std::wstring& path, DWORD attributes) {
  if ((attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_READONLY)) != 0) return false;
  const Handle handle(open_existing(path, GENERIC_WRITE));
  return handle && GetFileType(handle.get()) == FILE_TYPE_DISK;
}

bool write_all(HANDLE file, std::string_view bytes) {
  while (!bytes.empty()) {
    const auto size = static_cast<DWORD>(std::min<std::size_t>(bytes.size(), chunk_size));
    DWORD written = 0;
    if (!WriteFile(file, bytes.data(), size, &written, nullptr) || written == 0) return false;
    bytes.remove_prefix(written);
  }
  return true;
}

std::wstring temporary_beside(const std::wstring& path) {
  const std::size_t folder_end = path.find_last_of(L"\\/:");
  const std::wstring folder = folder_end == std::wstring::npos ? L"" : path.substr(0, folder_end + 1);
  return folder + to_utf16_or_marks(temporary_name());
}

/// The name of a new file with these bytes, flushed, in the folder of `beside`; empty when it cannot be made.
std::optional<std::wstring> write_temporary(const std::wstring& beside, const std::string& bytes, DWORD attributes) {
  for (int attempt = 0; attempt < 100; ++attempt) {
    std::wstring name = temporary_beside(beside);
    Handle file(CreateFileW(name.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW, attributes, nullptr));
    if (!file && GetLastError() == ERROR_FILE_EXISTS) continue;
    if (!file) return {};
    if (write_all(file.get(), bytes) && FlushFileBuffers(file.get())) return name;
    file.close();
    DeleteFileW(name.c_str());
    return {};
  }
  return {};
}

class LockedFile : public HeldFile {
 public:
  explicit LockedFile(std::wstring path)
      : path_(std::move(path)),
        file_(CreateFileW(path_.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                          FILE_FLAG_OPEN_REPARSE_POINT, nullptr)) {}

  bool lock() const { return file_ && GetFileType(file_.get()) == FILE_TYPE_DISK && !is_link_at(path_); }

  std::string read() override {
    std::string bytes;
    if (SetFilePointer(file_.get(), 0, nullptr, FILE_BEGIN) != 0) return bytes;
    std::array<char, 4096> buffer{};
    DWORD got = 0;
    while (ReadFile(file_.get(), buffer.data(), static_cast<DWORD>(buffer.size()), &got, nullptr) && got > 0) {
      bytes.append(buffer.data(), got);
    }
    return bytes;
  }

  bool write(const std::string& bytes, bool durably) override {
    if (SetFilePointer(file_.get(), 0, nullptr, FILE_BEGIN) != 0 || !SetEndOfFile(file_.get())) return false;
    return write_all(file_.get(), bytes) && (!durably || FlushFileBuffers(file_.get()));
  }

  void remove() override {
    file_.close();
    DeleteFileW(path_.c_str());
  }

 private:
  const std::wstring path_;
  Handle file_;
};

}  // namespace

Files::Kind DiskFiles::kind(const std::string& path) const {
  const std::optional<std::wstring> wide = system_path(path);
  return wide ? kind_of(*wide) : Kind::Missing;
}

bool DiskFiles::is_link(const std::string& path) const {
  const std::optional<std::wstring> wide = system_path(path);
  return wide && is_link_at(*wide);
}

std::optional<FileStamp> DiskFiles::stamp(const std::string& path) const {
  const std::optional<std::wstring> wide = system_path(path);
  if (!wide) return {};
  const Handle handle(open_existing(*wide, 0));
  BY_HANDLE_FILE_INFORMATION found{};
  if (!handle || !GetFileInformationByHandle(handle.get(), &found)) return {};
  const std::uint64_t modified = joined(found.ftLastWriteTime.dwHighDateTime, found.ftLastWriteTime.dwLowDateTime);
  return FileStamp{.device = found.dwVolumeSerialNumber,
                   .id = joined(found.nFileIndexHigh, found.nFileIndexLow),
                   .size = joined(found.nFileSizeHigh, found.nFileSizeLow),
                   .modified_ns = static_cast<std::int64_t>(modified - ticks_before_1970) * 100,
                   .links = found.nNumberOfLinks};
}

bool DiskFiles::is_being_written(const std::string& path) const {
  const std::optional<std::wstring> wide = system_path(path);
  if (!wide) return false;
  const Handle alone(
      CreateFileW(wide->c_str(), GENERIC_READ, share_all & ~FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr));
  return !alone && GetLastError() == ERROR_SHARING_VIOLATION;
}

bool DiskFiles::list(const std::string& folder, const std::function<void(FolderEntry)>& entry) const {
  const bool complete = folder.ends_with('\\') || folder.ends_with('/');
  const std::string base = complete ? folder : folder + "\\";
  const std::optional<std::wstring> wide = system_path(base);
  // With wildcards it would be a pattern.
  if (!wide || folder.empty() || folder.find('*') != std::string::npos || folder.find('?', 4) != std::string::npos) {
    return false;
  }
  WIN32_FIND_DATAW found{};
  const HANDLE search = FindFirstFileW((*wide + L"*").c_str(), &found);
  if (search == INVALID_HANDLE_VALUE) {
    // The root of an empty drive has not even the entry ".".
    return GetLastError() == ERROR_FILE_NOT_FOUND && kind_of(*wide) == Kind::Folder;
  }
  struct Closing {
    HANDLE search;
    ~Closing() { FindClose(search); }
  } const closing{search};
  do {
    const std::wstring_view name = found.cFileName;
    if (name.ends_with(L'.') || name.ends_with(L' ')) continue;
    FolderEntry listed{.name = to_utf8(name),
                       .is_folder = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0,
                       .is_link = leads_elsewhere(found)};
    if (listed.is_link) listed.is_folder = kind(base + listed.name) == Kind::Folder;
    entry(std::move(listed));
  } while (FindNextFileW(search, &found));
  return GetLastError() == ERROR_NO_MORE_FILES;
}

std::optional<std::string> DiskFiles::read(const std::string& path) const {
  const std::optional<std::wstring> wide = system_path(path);
  if (!wide) return {};
  const Handle file(CreateFileW(wide->c_str(), GENERIC_READ, share_all, nullptr, OPEN_EXISTING, 0, nullptr));
  if (!file || GetFileType(file.get()) != FILE_TYPE_DISK) return {};
  std::string bytes;
  while (true) {
    const std::size_t filled = bytes.size();
    bytes.resize(filled + chunk_size);
    DWORD got = 0;
    if (!ReadFile(file.get(), bytes.data() + filled, chunk_size, &got, nullptr)) return {};
    bytes.resize(filled + got);
    if (got == 0) return bytes;
  }
}

bool DiskFiles::replace(const std::string& path, const std::string& bytes) {
  const std::optional<std::wstring> wide = system_path(path);
  if (!wide || is_link_at(*wide)) return false;
  const DWORD old = GetFileAttributesW(wide->c_str());
  const bool exists = old != INVALID_FILE_ATTRIBUTES;
  if (exists ? !may_be_replaced(*wide, old) : !is_missing(GetLastError())) return false;

  const DWORD attributes = exists ? old & kept_attributes : FILE_ATTRIBUTE_NORMAL;
  const std::optional<std::wstring> temporary = write_temporary(*wide, bytes, attributes);
  if (!temporary) return false;
  const DWORD how = MOVEFILE_WRITE_THROUGH | (exists ? MOVEFILE_REPLACE_EXISTING : 0);
  if (MoveFileExW(temporary->c_str(), wide->c_str(), how)) return true;
  DeleteFileW(temporary->c_str());
  return false;
}

std::unique_ptr<HeldFile> DiskFiles::hold(const std::string& path) {
  const std::optional<std::wstring> wide = system_path(path);
  if (!wide) return {};
  auto file = std::make_unique<LockedFile>(*wide);
  return file->lock() ? std::move(file) : nullptr;
}

bool DiskFiles::remove(const std::string& path) {
  const std::optional<std::wstring> wide = system_path(path);
  if (!wide) return false;
  if (DeleteFileW(wide->c_str())) return true;
  const DWORD error = GetLastError();
  return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
}

bool DiskFiles::create_folder(const std::string& path) {
  const std::optional<std::wstring> wide = system_path(path);
  return wide && CreateDirectoryW(wide->c_str(), nullptr);
}

std::unique_ptr<Files> system_files() {
  return std::make_unique<DiskFiles>();
}

}  // namespace quorvel
