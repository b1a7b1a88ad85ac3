#pragma once

#include <windows.h>

#include <exception>
#include <optional>
#include <string>

#include "platform/file_operation.h"
#include "platform/windows/final_name.h"
#include "platform/windows/handle.h"

namespace quorvel {

/// Copies one file. From copy_to() on, nobody can begin to write to the source.
class Copying {
 public:
  /// The copy has the name `temporary` until it is whole; with `verifies` it is read back and compared.
  Copying(std::wstring source, std::wstring temporary, bool verifies, const CopyProgress& progress)
      : source_(std::move(source)), temporary_(std::move(temporary)), verifies_(verifies), progress_(progress) {}

  /// 0 when the copy is complete, on disk and has its name; else nothing has changed. Throws what `progress` throws.
  int copy_to(FinalName& name);

  /// Removes the source, unless another file has its name now or it has changed; ERROR_FILE_INVALID then. Where it is
  /// not there any more, the copy is the last one: that is 0.
  int remove_source();

 private:
  static DWORD CALLBACK on_progress(LARGE_INTEGER total, LARGE_INTEGER done, LARGE_INTEGER, LARGE_INTEGER, DWORD, DWORD,
                                    HANDLE, HANDLE, void* self);
  int open_source();
  int copy_contents();
  int finish();
  int compare(HANDLE copy);
  int check_source() const;
  bool report(std::uint64_t done) noexcept;

  const std::wstring source_, temporary_;
  const bool verifies_;
  const CopyProgress& progress_;
  std::optional<Handle> opened_;
  BY_HANDLE_FILE_INFORMATION before_{};
  std::uint64_t size_ = 0;
  bool cancelled_ = false;
  std::exception_ptr thrown_;
};

}  // namespace quorvel
