#include <windows.h>

#include <commctrl.h>

#include <array>
#include <cstring>
#include <exception>
#include <functional>
#include <optional>
#include <utility>

#include "platform/system.h"
#include "platform/windows/wide.h"
#include "text/failure.h"

namespace quorvel {
namespace {

constexpr DWORD retry_ms = 20;
constexpr ULONG_PTR plain_record = 3, own_record = 0x51560001;
constexpr std::size_t buffer_size = 255, max_text = 16U << 20;
constexpr LRESULT refused = 2;  // what a copy answers that understood the record but cannot take it; TRUE: it did

/// The text in the system's code page; empty when that does not hold it.
std::optional<std::string> in_code_page(const std::string& text) {
  const std::wstring wide = to_utf16_or_marks(text);
  if (wide.size() >= buffer_size || to_utf8(wide) != text) return {};
  if (wide.empty()) return std::string();
  std::array<char, buffer_size - 1> bytes{};
  std::array<wchar_t, buffer_size> back{};
  BOOL replaced = FALSE;
  const int size = WideCharToMultiByte(CP_ACP, WC_NO_BEST_FIT_CHARS, wide.data(), static_cast<int>(wide.size()),
                                       bytes.data(), static_cast<int>(bytes.size()), nullptr, &replaced);
  if (size <= 0 || replaced) return {};
  const int length = MultiByteToWideChar(CP_ACP, 0, bytes.data(), size, back.data(), static_cast<int>(back.size()));
  if (std::wstring_view(back.data(), static_cast<std::size_t>(length)) != wide) return {};
  return std::string(bytes.data(), static_cast<std::size_t>(size));
}

std::string from_code_page_of_system(const char* bytes) {
  std::array<wchar_t, buffer_size> wide{};
  const int size = MultiByteToWideChar(CP_ACP, 0, bytes, -1, wide.data(), static_cast<int>(wide.size()));
  return size <= 0 ? std::string() : to_utf8({wide.data(), static_cast<std::size_t>(size) - 1});
}

HWND next_window(HWND after, const std::string& caption) {
  return FindWindowExW(nullptr, after, nullptr, to_utf16_or_marks(caption).c_str());
}

enum class Delivery { Taken, Refused, Forbidden, Unanswered };

/// A folder shown under the same caption answers nothing; so every window with it is asked.
Delivery deliver(const std::string& caption, COPYDATASTRUCT& record, ULONGLONG until) {
  Delivery outcome = Delivery::Unanswered;
  HWND window = nullptr;
  while ((window = next_window(window, caption)) != nullptr) {
    const ULONGLONG now = GetTickCount64();
    if (now >= until) break;
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    // The user has just started this copy, and the other one may show itself in its place.
    AllowSetForegroundWindow(process);
    DWORD_PTR answer = 0;
    const LRESULT answered = SendMessageTimeoutW(window, WM_COPYDATA, 0, reinterpret_cast<LPARAM>(&record), SMTO_NORMAL,
                                                 static_cast<UINT>(until - now), &answer);
    if (answered == 0 && GetLastError() == ERROR_ACCESS_DENIED) outcome = Delivery::Forbidden;
    if (answered != 0 && answer == TRUE) return Delivery::Taken;
    if (answered != 0 && answer == refused) return Delivery::Refused;
  }
  return outcome;
}

HWND own_window(const std::string& caption) {
  HWND window = nullptr;
  while ((window = next_window(window, caption)) != nullptr) {
    if (GetWindowThreadProcessId(window, nullptr) == GetCurrentThreadId()) return window;
  }
  return nullptr;
}

/// Empty when the record is none of the two, of a wrong size, or lacks its NUL.
std::optional<std::string> text_of_record(const COPYDATASTRUCT& record) {
  const auto* const bytes = static_cast<const char*>(record.lpData);
  if (bytes == nullptr || record.cbData == 0) return {};
  if (record.dwData == plain_record) {
    std::array<char, buffer_size> buffer{};
    if (record.cbData > buffer.size() || std::memchr(bytes, '\0', record.cbData) == nullptr) return {};
    std::memcpy(buffer.data(), bytes, record.cbData);
    return from_code_page_of_system(buffer.data());
  }
  const std::size_t size = record.cbData - 1;
  const bool whole =
      record.dwData == own_record && size <= max_text && std::memchr(bytes, '\0', record.cbData) == bytes + size;
  if (!whole) return {};
  return std::string(bytes, size);
}

/// Stands in front of the window's own message handling. What is on the stack holds it, so that it outlives a handler
/// that ends the channel.
class Receiver : public std::enable_shared_from_this<Receiver> {
 public:
  Receiver(HWND window, std::function<void(const std::string&)> handle) : window_(window), handle_(std::move(handle)) {
    if (!SetWindowSubclass(window_, procedure, id, reinterpret_cast<DWORD_PTR>(this))) {
      throw Failure("The window cannot listen to other copies of the program");
    }
    // With an administrator's rights, the system would keep away what programs without them send. All that they can ask
    // for is that a path is queued, or the window shown or closed.
    ChangeWindowMessageFilterEx(window_, WM_COPYDATA, MSGFLT_ALLOW, nullptr);
  }
  ~Receiver() {
    ChangeWindowMessageFilterEx(window_, WM_COPYDATA, MSGFLT_RESET, nullptr);
    RemoveWindowSubclass(window_, procedure, id);
  }
  Receiver(const Receiver&) = delete;
  Receiver& operator=(const Receiver&) = delete;

 private:
  static constexpr UINT_PTR id = 1;

  static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM first, LPARAM second, UINT_PTR, DWORD_PTR data) {
    if (message != WM_COPYDATA || second == 0) return DefSubclassProc(window, message, first, second);
    const std::shared_ptr<Receiver> self = reinterpret_cast<Receiver*>(data)->shared_from_this();
    const LRESULT answer = self->take(*reinterpret_cast<const COPYDATASTRUCT*>(second));
    const LRESULT passed_on = DefSubclassProc(window, message, first, second);
    return answer != FALSE ? answer : passed_on;
  }

  /// The answer; FALSE for a record of another program's. Nothing may be thrown through the system.
  LRESULT take(const COPYDATASTRUCT& record) const noexcept {
    try {
      const std::optional<std::string> text = text_of_record(record);
      if (!text) return FALSE;
      handle_(*text);
      return TRUE;
    } catch (const std::exception&) {
      return refused;  // the sender reports it to its user
    }
  }

  const HWND window_;
  const std::function<void(const std::string&)> handle_;
};

/// Messages to the window with the program's caption, and a named object of the session that tells whether there is
/// one. Texts that the code page holds and that fit go in the record that other programs send as well: number 3, a
/// buffer of 255 bytes, the text in the system's code page and its NUL. All others go in a record of our own number, in
/// UTF-8, which nothing takes for the first.
class CopyDataChannel : public InstanceChannel {
 public:
  CopyDataChannel(std::string caption, const std::string& name, std::chrono::milliseconds patience)
      : caption_(std::move(caption)), name_(to_utf16_or_marks("Local\\" + name)), patience_(patience) {}
  ~CopyDataChannel() override {
    receiver_.reset();  // before another copy can be the running one
    if (running_ != nullptr) CloseHandle(running_);
  }
  CopyDataChannel(const CopyDataChannel&) = delete;
  CopyDataChannel& operator=(const CopyDataChannel&) = delete;

  bool become_running_copy() override {
    if (running_ != nullptr) return true;
    const HANDLE object = CreateMutexW(nullptr, FALSE, name_.c_str());
    const DWORD error = GetLastError();
    if (object == nullptr) {
      if (error == ERROR_ACCESS_DENIED) return false;
      throw Failure("Cannot tell whether the program is running already: " + error_text(error));
    }
    if (error != ERROR_ALREADY_EXISTS) {
      running_ = object;
      return true;
    }
    CloseHandle(object);  // kept, it would look as if the other copy still ran when it has ended
    return false;
  }

  /// Waits while the other copy has no window yet, and while it is busy: the shell's operations let no events run.
  void send(const std::string& text) override {
    if (text.size() > max_text || text.find('\0') != std::string::npos) {
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
    while (true) {
      switch (deliver(caption_, record, until)) {
        case Delivery::Taken:
          return;
        case Delivery::Refused:
          throw Failure(refused_text);
        case Delivery::Forbidden:
          throw Failure(
              "Quorvel is already running with an administrator's rights and can be given nothing by programs without "
              "them. Close it, then try again.");
        case Delivery::Unanswered:
          break;
      }
      if (become_running_copy()) throw Failure("The running copy of Quorvel has ended");
      if (GetTickCount64() >= until) throw Failure(unanswered_text);
      Sleep(retry_ms);
    }
  }

  /// The window with the caption must exist in this thread. `handle` is called in the middle of whatever events are
  /// processed.
  void receive(std::function<void(const std::string&)> handle) override {
    const HWND window = own_window(caption_);
    if (window == nullptr) throw Failure("There is no window to listen to other copies of the program");
    stop();
    receiver_ = std::make_shared<Receiver>(window, std::move(handle));
  }

  void stop() override { receiver_.reset(); }

 private:
  const std::string caption_;
  const std::wstring name_;
  const std::chrono::milliseconds patience_;
  HANDLE running_ = nullptr;
  std::shared_ptr<Receiver> receiver_;
};

}  // namespace

std::unique_ptr<InstanceChannel> system_instance_channel(const std::string& name, const std::string& caption,
                                                         std::chrono::milliseconds patience) {
  return std::make_unique<CopyDataChannel>(caption, name, patience);
}

}  // namespace quorvel
