#pragma once

#include <chrono>
#include <functional>
#include <string>

namespace quorvel {

/// The way to the copy of the program that the user already has running. Only one copy works; others hand over what
/// they were given and end.
class InstanceChannel {
 public:
  /// For a running copy that is in the middle of something: a large file takes minutes to be copied and flushed.
  static constexpr std::chrono::milliseconds usual_patience = std::chrono::minutes(10);

  /// What send() fails with when the running copy refuses the text, and when it stays busy.
  static constexpr const char* refused_text =
      "Quorvel is already running but did not take what it was given. If it is closing, wait until it has ended, then "
      "try again.";
  static constexpr const char* unanswered_text =
      "Quorvel is already running but does not answer. Close it or wait until it has finished, then try again.";

  virtual ~InstanceChannel() = default;

  /// Makes this copy the running one, from now on until the channel ends, unless another copy of the same user's is;
  /// what a crashed copy left behind is none. Whether this copy is the running one. Throws Failure when it cannot be
  /// told.
  virtual bool become_running_copy() = 0;

  /// Comes back when the running copy has taken the text, for which it may need as long as its work takes. Throws
  /// Failure, readable by the user, when it does not, has ended, or stays busy beyond all patience.
  virtual void send(const std::string& text) = 0;

  /// From now on `handle` is called for each text, while events are processed; it may process events, during which
  /// other texts are handled, and may call stop() or end the channel. When it throws, the sender's send() fails. Throws
  /// Failure when the channel cannot be opened. Texts of any size or content do no harm before they reach `handle`.
  virtual void receive(std::function<void(const std::string&)> handle) = 0;

  /// Ends that, and takes back what receive() has made. This copy stays the running one, so that no other starts work
  /// while it finishes its own.
  virtual void stop() = 0;
};

}  // namespace quorvel
