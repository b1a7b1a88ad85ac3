#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "platform/instance_channel.h"

namespace quorvel {

/// Messages through a socket that only its owner can reach. A lock beside it, which ends with the process that holds
/// it, decides which copy is the running one: two started at once cannot both be, and what a crashed one left behind
/// hinders nobody. GLib's main loop does the receiving.
///
/// A message is four bytes with the length, the highest first, and the text; the answer is one byte, 'y' when the text
/// was taken and 'n' when that failed.
class SocketChannel : public InstanceChannel {
 public:
  static constexpr std::size_t max_text = 16U << 20;

  /// Socket and lock are made in `folder`; where that is not a folder that belongs to the user alone, in one below
  /// `shared_folder` that is made for them, whatever others have put there.
  explicit SocketChannel(std::string folder, std::string shared_folder = "/tmp",
                         std::chrono::milliseconds patience = usual_patience);
  ~SocketChannel() override;
  SocketChannel(const SocketChannel&) = delete;
  SocketChannel& operator=(const SocketChannel&) = delete;

  /// Throws Failure when the folder cannot be used.
  bool become_running_copy() override;

  /// Fails when its patience ends, or as soon as the other copy has ended.
  void send(const std::string& text) override;

  /// As the running copy alone.
  void receive(std::function<void(const std::string&)> handle) override;
  void stop() override;

 private:
  class Place;
  class Receiver;

  Place& place();

  const std::string folder_, shared_folder_;
  const std::chrono::milliseconds patience_;
  std::unique_ptr<Place> place_;
  std::shared_ptr<Receiver> receiver_;
};

}  // namespace quorvel
