#pragma once

#include <windows.h>

namespace quorvel {

/// Owns a handle of the system's.
class Handle {
 public:
  explicit Handle(HANDLE handle) : handle_(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
  ~Handle() { close(); }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;

  explicit operator bool() const { return handle_ != nullptr; }
  HANDLE get() const { return handle_; }
  void close() {
    if (handle_ != nullptr) CloseHandle(handle_);
    handle_ = nullptr;
  }

 private:
  HANDLE handle_;
};

}  // namespace quorvel
