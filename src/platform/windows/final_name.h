#pragma once

#include <functional>
#include <string>

#include "platform/file_operation.h"

namespace quorvel {

/// The name that a file is to get in the end.
class FinalName {
 public:
  /// Gives it to the file at `from`, unless something has it: name_taken or destination_is_folder then.
  using Give = std::function<int(const std::wstring& from, const std::wstring& to)>;

  /// `may_replace` is asked when another file has the name and there is a recycle bin for it.
  FinalName(std::wstring path, const MayReplace& may_replace) : path_(std::move(path)), may_replace_(may_replace) {}

  const std::wstring& path() const { return path_; }

  /// 0 when the name is free, or the user gives up the file that has it. A name of `source` itself is never free: to
  /// give that up would be to give up the file.
  int check(const std::wstring& source);

  /// A file that was given up goes to the recycle bin first, and keeps its name where it cannot.
  int take(const std::wstring& from, const Give& give) const;

 private:
  const std::wstring path_;
  const MayReplace& may_replace_;
  bool is_given_up_ = false;
};

}  // namespace quorvel
