#include "platform/windows/copying.h"

#include <cstring>
#include <memory>

#include "platform/native.h"
#include "platform/windows/plain_files.h"
#include "platform/windows/shell.h"

namespace quorvel {
namespace {

constexpr DWORD no_writers = FILE_SHARE_READ | FILE_SHARE_DELETE, share_all = no_writers | FILE_SHARE_WRITE;

std::uint64_t size_of(const BY_HANDLE_FILE_INFORMATION& file) {
  return std::uint64_t{file.nFileSizeHigh} << 32 | file.nFileSizeLow;
}

bool is_same_file(const BY_HANDLE_FILE_INFORMATION& one, const BY_HANDLE_FILE_INFORMATION& other) {
  return one.dwVolumeSerialNumber == other.dwVolumeSerialNumber && one.nFileIndexHigh == other.nFileIndexHigh &&
         one.nFileIndexLow == other.nFileIndexLow;
}

/// Deletes the file that is open: its name goes at once where the system can do that, elsewhere when it is closed.
bool delete_opened(HANDLE file) {
  // Newer than the headers that the program is built for.
  constexpr auto disposition_ex = static_cast<FILE_INFO_BY_HANDLE_CLASS>(21);
  constexpr DWORD marked = 1, at_once = 2;
  DWORD flags = marked | at_once;
  FILE_DISPOSITION_INFO when_closed{TRUE};
  return SetFileInformationByHandle(file, disposition_ex, &flags, sizeof flags) ||
         SetFileInformationByHandle(file, FileDispositionInfo, &when_closed, sizeof when_closed);
}

/// Takes the write protection off a file for as long as it lives.
class Unprotected {
 public:
  explicit Unprotected(const std::wstring& path) : path_(path), attributes_(GetFileAttributesW(path.c_str())) {
    if (is_protected()) SetFileAttributesW(path.c_str(), attributes_ & ~FILE_ATTRIBUTE_READONLY);
  }
  ~Unprotected() {
    if (is_protected()) SetFileAttributesW(path_.c_str(), attributes_);
  }
  Unprotected(const Unprotected&) = delete;
  Unprotected& operator=(const Unprotected&) = delete;

 private:
  bool is_protected() const {
    return attributes_ != INVALID_FILE_ATTRIBUTES && (attributes_ & FILE_ATTRIBUTE_READONLY) != 0;
  }

  const std::wstring& path_;
  const DWORD attributes_;
};

}  // namespace

int Copying::copy_to(FinalName& name) {
  if (const int error = name.check(source_); error != 0) return error;
  if (const int error = open_source(); error != 0) return error;
  int error = copy_contents();
  if (error == shell::name_taken) return error;  // the file there is somebody else's
  if (error == 0) error = finish();
  if (error == 0) error = name.take(temporary_, plain_files::rename);
  if (error != 0) plain_files::remove(temporary_);
  if (thrown_) std::rethrow_exception(thrown_);
  return error;
}

int Copying::open_source() {
  opened_.emplace(CreateFileW(source_.c_str(), GENERIC_READ, no_writers, nullptr, OPEN_EXISTING,
                              FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
  if (!*opened_) {
    const int error = plain_files::last_error();
    if (error != ERROR_SHARING_VIOLATION) return error;
    // Somebody writes, or somebody keeps all others off.
    const Handle readable(CreateFileW(source_.c_str(), GENERIC_READ, share_all, nullptr, OPEN_EXISTING, 0, nullptr));
    return readable ? native::being_written_code : error;
  }
  if (!GetFileInformationByHandle(opened_->get(), &before_)) return plain_files::last_error();
  size_ = size_of(before_);
  return 0;
}

DWORD CALLBACK Copying::on_progress(LARGE_INTEGER, LARGE_INTEGER done, LARGE_INTEGER, LARGE_INTEGER, DWORD, DWORD,
                                    HANDLE, HANDLE, void* self) {
  const auto bytes = static_cast<std::uint64_t>(done.QuadPart);
  return static_cast<Copying*>(self)->report(bytes) ? PROGRESS_CONTINUE : PROGRESS_CANCEL;
}

/// Whether to go on. Nothing may be thrown through the system's call; copy_to() hands it on.
bool Copying::report(std::uint64_t done) noexcept {
  if (cancelled_ || !progress_) return !cancelled_;
  try {
    cancelled_ = !progress_(done, size_);
  } catch (...) {
    cancelled_ = true;
    thrown_ = std::current_exception();
  }
  return !cancelled_;
}

/// The system's own way, for it also takes what else belongs to the file, and lets a server copy by itself. Where it
/// does not tell how far it is, as under Wine 8, the user is heard before and after.
int Copying::copy_contents() {
  if (!report(0)) return shell::aborted;
  if (!CopyFileExW(source_.c_str(), temporary_.c_str(), on_progress, this, nullptr, COPY_FILE_FAIL_IF_EXISTS)) {
    return plain_files::last_error();
  }
  return report(size_) ? 0 : shell::aborted;
}

/// Puts the copy on disk and checks it.
int Copying::finish() {
  const Unprotected writable(temporary_);
  BY_HANDLE_FILE_INFORMATION copied{};
  {
    const Handle copy(
        CreateFileW(temporary_.c_str(), GENERIC_READ | GENERIC_WRITE, share_all, nullptr, OPEN_EXISTING, 0, nullptr));
    if (!copy || !FlushFileBuffers(copy.get()) || !GetFileInformationByHandle(copy.get(), &copied)) {
      return plain_files::last_error();
    }
  }
  if (size_of(copied) != size_) return ERROR_FILE_INVALID;
  if (!verifies_) return check_source();
  // Past the cache, which would give back what was to be written.
  const Handle copy(CreateFileW(temporary_.c_str(), GENERIC_READ, share_all, nullptr, OPEN_EXISTING,
                                FILE_FLAG_NO_BUFFERING, nullptr));
  if (!copy) return plain_files::last_error();
  const int error = compare(copy.get());
  return error == 0 ? check_source() : error;
}

int Copying::compare(HANDLE copy) {
  constexpr DWORD piece = 1U << 20;
  struct Release {
    void operator()(void* memory) const { VirtualFree(memory, 0, MEM_RELEASE); }
  };
  // Whole pages, as reading past the cache wants them.
  const std::unique_ptr<void, Release> memory(
      VirtualAlloc(nullptr, std::size_t{2} * piece, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE));
  if (!memory || !SetFilePointerEx(opened_->get(), {}, nullptr, FILE_BEGIN)) return plain_files::last_error();
  auto* const ours = static_cast<char*>(memory.get());
  char* const theirs = ours + piece;
  for (std::uint64_t done = 0; done < size_;) {
    DWORD read = 0, copied = 0;
    if (!ReadFile(opened_->get(), ours, piece, &read, nullptr) || !ReadFile(copy, theirs, piece, &copied, nullptr)) {
      return plain_files::last_error();
    }
    if (read == 0 || read != copied || std::memcmp(ours, theirs, read) != 0) return native::copy_differs_code;
    done += read;
    if (!report(done)) return shell::aborted;
  }
  return 0;
}

/// Nobody can have written to it where the system keeps writers off; some servers do not.
int Copying::check_source() const {
  BY_HANDLE_FILE_INFORMATION now{};
  if (!GetFileInformationByHandle(opened_->get(), &now)) return plain_files::last_error();
  const bool is_unchanged =
      size_of(now) == size_ && CompareFileTime(&now.ftLastWriteTime, &before_.ftLastWriteTime) == 0;
  return is_unchanged ? 0 : ERROR_FILE_INVALID;
}

int Copying::remove_source() {
  if (const int error = check_source(); error != 0) return error;
  const Unprotected removable(source_);
  // The link itself, where it is one.
  const Handle file(CreateFileW(source_.c_str(), DELETE | FILE_READ_ATTRIBUTES, share_all, nullptr, OPEN_EXISTING,
                                FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
  if (!file) {
    const int error = plain_files::last_error();
    return error == ERROR_FILE_NOT_FOUND ? 0 : error;
  }
  BY_HANDLE_FILE_INFORMATION now{};
  if (!GetFileInformationByHandle(file.get(), &now)) return plain_files::last_error();
  const bool is_link = (now.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
  if (!is_link && !is_same_file(now, before_)) return ERROR_FILE_INVALID;
  if (!delete_opened(file.get())) return plain_files::last_error();
  opened_.reset();
  return 0;
}

}  // namespace quorvel
