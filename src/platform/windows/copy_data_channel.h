#pragma once

#include <windows.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/instance_channel.h"

namespace quorvel {

/// Messages to the window with the program's caption, and a named object of the session that tells whether there is
/// one. Texts that the code page holds and that fit go in the record that other programs send as well: number 3, a
/// buffer of 255 bytes, the text in the system's code page and its NUL. All others go in a record of our own number, in
/// UTF-8, which nothing takes for the first.
class CopyDataChannel : public InstanceChannel {
 public:
  static constexpr ULONG_PTR plain_record = 3, own_record = 0x51560001;
  static constexpr std::size_t buffer_size = 255, longest_text = 16U << 20;

  /// `caption` is that of the main window, `name` that of the program among those of the user's session.
  CopyDataChannel(std::string caption, std::string name, std::chrono::milliseconds patience = usual_patience);
  ~CopyDataChannel() override;
  CopyDataChannel(const CopyDataChannel&) = delete;
  CopyDataChannel& operator=(const CopyDataChannel&) = delete;

  /// When it answers false, this copy is the running one from then on, until the channel ends.
  bool other_is_running() override;

  /// Waits while the other copy has no window yet, and while it is busy: the shell's operations let no events run.
  void send(const std::string& text) override;

  /// The window with the caption must exist in this thread. `handle` is called in the middle of whatever events are
  /// processed, and may call stop(). When it throws, the sender is told that its text was not taken.
  void receive(std::function<void(const std::string&)> handle) override;
  void stop() override;

 private:
  class Receiver;

  const std::string caption_;
  const std::wstring name_;
  const std::chrono::milliseconds patience_;
  HANDLE running_ = nullptr;
  std::shared_ptr<Receiver> receiver_;
};

/// The text of a record; empty when the record is none of the two, of a wrong size, or lacks its NUL.
std::optional<std::string> text_of_record(const COPYDATASTRUCT& record);

}  // namespace quorvel
