#include "platform/windows/copy_data_channel.h"

#include <commctrl.h>

#include <array>
#include <cstring>
#include <exception>
#include <utility>

#include "platform/windows/wide.h"
#include "text/failure.h"

namespace quorvel {
namespace {

constexpr DWORD retry_ms = 20;

/// The text in the system's code page; empty when that does not hold it.
std::optional<std::string> in_code_page(const std::string& text) {
  const std::wstring wide = to_utf16_or_marks(text);
  if (wide.size() >= CopyDataChannel::buffer_size || to_utf8(wide) != text) return {};
  if (wide.empty()) return std::string();
  std::array<char, CopyDataChannel::buffer_size - 1> bytes{};
  std::array<wchar_t, CopyDataChannel::buffer_size> back{};
  BOOL replaced = FALSE;
  const int size = WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, wide.data(), static_cast<int>(wide.size()),
                                       bytes.data(), static_cast<int>(bytes.size()), nullptr, &replaced);
  if (size <= 0 || replaced) return {};
  const int length = MultiByteToWideChar(CP_ACP, 0, bytes.data(), size, back.data(), static_cast<int>(back.size()));
  if (std::wstring_view(back.data(), static_cast<std::size_t>(length)) != wide) return {};
  return std::string(bytes.data(), static_cast<std::size_t>(size));
}

std::string from_code_page_of_system(const char* bytes) {
  std::array<wchar_t, CopyDataChannel::buffer_size> wide{};
  const int size = MultiByteToWideChar(CP_ACP, 0, bytes, -1, wide.data(), static_cast<int>(wide.size()));
  return size <= 0 ? std::string() : to_utf8({wide.data(), static_cast<std::size_t>(size) - 1});
}

HWND next_window(HWND after, const std::string& caption) {
  return FindWindowExW(nullptr, after, nullptr, to_utf16_or_marks(caption).c_str());
}

/// A folder shown under the same caption answers nothing; so every window with it is asked.
bool deliver(const std::string& caption, COPYDATASTRUCT& record, ULONGLONG until) {
  HWND window = nullptr;
  while ((window = next_window(window, caption)) != nullptr) {
    const ULONGLONG now = GetTickCount64();
    if (now >= until) return false;
    DWORD_PTR taken = 0;
    const LRESULT answered = SendMessageTimeoutW(window, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&record), SMTO_NORMAL,
                                                 static_cast<UINT>(until - now), &taken);
    if (answered != 0 && taken == TRUE) return true;
  }
  return false;
}

HWND own_window(const std::string& caption) {
  HWND window = nullptr;
  while ((window = next_window(window, caption)) != nullptr) {
    if (GetWindowThreadProcessId(window, nullptr) == GetCurrentThreadId()) return window;
  }
  return nullptr;
}

}  // namespace

std::optional<std::string> text_of_record(const COPYDATASTRUCT& record) {
  const auto* const bytes = static_cast<const char*>(record.lpData);
  if (bytes == nullptr || record.cbData == 0) return {};
  if (record.dwData == CopyDataChannel::plain_record) {
    std::array<char, CopyDataChannel::buffer_size> buffer{};
    if (record.cbData > buffer.size() || std::memchr(bytes, '\0', record.cbData) == nullptr) return {};
    std::memcpy(buffer.data(), bytes, record.cbData);
    return from_code_page_of_system(buffer.data());
  }
  const std::size_t size = record.cbData - 1;
  const bool whole = record.dwData == CopyDataChannel::own_record && size <= CopyDataChannel::longest_text &&
                     std::memchr(bytes, '\0', record.cbData) == bytes + size;
  if (!whole) return {};
  return std::string(bytes, size);
}

/// Stands in front of the window's own message handling. What is on the stack holds it, so that it outlives a handler
/// that ends the channel.
class CopyDataChannel::Receiver : public std::enable_shared_from_this<Receiver> {
 public:
  Receiver(HWND window, std::function<void(const std::string&)> handle) : window_(window), handle_(std::move(handle)) {
    if (!SetWindowSubclass(window_, procedure, id, reinterpret_cast<DWORD_PTR>(this))) {
      throw Failure("The window cannot listen to other copies of the program");
    }
  }
  ~Receiver() { RemoveWindowSubclass(window_, procedure, id); }
  Receiver(const Receiver&) = delete;
  Receiver& operator=(const Receiver&) = delete;

 private:
  static constexpr UINT_PTR id = 1;

  static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM first, LPARAM second, UINT_PTR, DWORD_PTR data) {
    if (message != WM_COPYDATA || second == 0) return DefSubclassProc(window, message, first, second);
    const std::shared_ptr<Receiver> self = reinterpret_cast<Receiver*>(data)->shared_from_this();
    const bool taken = self->take(*reinterpret_cast<const COPYDATASTRUCT*>(second));
    const LRESULT passed_on = DefSubclassProc(window, message, first, second);
    return taken ? TRUE : passed_on;
  }

  /// Nothing may be thrown through the system.
  bool take(const COPYDATASTRUCT& record) const noexcept {
    try {
      const std::optional<std::string> text = text_of_record(record);
      if (!text) return false;
      handle_(*text);
      return true;
    } catch (const std::exception&) {
      return false;  // the sender tells its user
    }
  }

  const HWND window_;
  const std::function<void(const std::string&)> handle_;
};

CopyDataChannel::CopyDataChannel(std::string caption, std::string name, std::chrono::milliseconds patience)
    : caption_(std::move(caption)), name_(to_utf16_or_marks("Local\\" + name)), patience_(patience) {}

CopyDataChannel::~CopyDataChannel() {
  CopyDataChannel::stop();
  if (running_ != nullptr) CloseHandle(running_);
}

bool CopyDataChannel::other_is_running() {
  if (running_ != nullptr) return false;
  const HANDLE object = CreateMutexW(nullptr, FALSE, name_.c_str());
  const DWORD error = GetLastError();
  if (object == nullptr) {
    if (error == ERROR_ACCESS_DENIED) return true;
    throw Failure("Cannot tell whether the program is running already: " + error_text(error));
  }
  if (error != ERROR_ALREADY_EXISTS) {
    running_ = object;
    return false;
  }
  CloseHandle(object);  // kept, it would look as if the other copy still ran when it has ended
  return true;
}

void CopyDataChannel::send(const std::string& text) {
  if (text.size() > longest_text || text.find('\0') != std::string::npos) {
    throw Failure("What was to be handed to the running program is no path");
  }
  std::string bytes = text;
  COPYDATASTRUCT record{};
  if (const std::optional<std::string> plain = in_code_page(text)) {
    bytes = *plain;
    record.dwData = plain_record;
    record.cbData = static_cast<DWORD>(bytes.size() + 1);
    bytes.resize(buffer_size, '\0');
  } else {
    record.dwData = own_record;
    record.cbData = static_cast<DWORD>(bytes.size() + 1);
  }
  record.lpData = bytes.data();
  const ULONGLONG until = GetTickCount64() + static_cast<ULONGLONG>(patience_.count());
  while (!deliver(caption_, record, until)) {
    if (GetTickCount64() >= until || !other_is_running())
      throw Failure("Quorvel is already running but did not take what it was given.");
    Sleep(retry_ms);
  }
}

void CopyDataChannel::receive(std::function<void(const std::string&)> handle) {
  const HWND window = own_window(caption_);
  if (window == nullptr) throw Failure("There is no window to listen to other copies of the program");
  stop();
  receiver_ = std::make_shared<Receiver>(window, std::move(handle));
}

void CopyDataChannel::stop() {
  receiver_.reset();
}

}  // namespace quorvel
