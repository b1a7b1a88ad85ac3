#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/instance_channel.h"
#include "platform/main_window.h"
#include "shell/command_line.h"
#include "shell/session.h"

namespace quorvel {

enum class StartResult { Running, Ended, Failed };  // Ended: uninstall run, or forwarded; Failed: the user has seen why

/// How the desktop program comes up and goes down. Session, window and channel outlive it.
class Startup {
 public:
  Startup(Session& session, MainWindow& window, InstanceChannel& channel)
      : session_(session), window_(window), channel_(channel) {}

  /// Called once, when the window exists. Unless it is Running then, the program has nothing more to do; after a
  /// failure the window has been unloaded already.
  ///
  /// To a copy that is running, each path goes in a message of its own, "QV|PI|C=" and the path, so that a path may
  /// hold any character; without paths one message goes with nothing after the "=", which brings the window up. A start
  /// that is to be hidden, as at the session's begin, sends none without paths.
  StartResult run(const CommandLine& line);

  /// For when the window really goes away, while its lists still exist: ends a running pass at its next stage, stops
  /// the transfer, no longer receives messages, and removes the tray icon. Does nothing the second time.
  void unload();

  /// Whether messages and clicks on the tray icon are acted on.
  bool loaded() const { return loaded_; }

  /// A text from another copy ("QV|PI|" and two characters, then a path to queue, or nothing: the window is brought up)
  /// or from the updater ("QV|UD|": the window is unloaded). Others are ignored. Before loaded() they are kept until
  /// then. In the middle of a pass paths are only appended. Throws Failure when the window has been unloaded, and from
  /// the moment that it is to close when the text is another copy's.
  void handle_message(const std::string& text);

 private:
  std::optional<StartResult> forward(const CommandLine& line);
  void start(const CommandLine& line);
  void handle_kept_messages();
  void unload_window();
  void fail(const std::string& reason);

  Session& session_;
  MainWindow& window_;
  InstanceChannel& channel_;
  bool loaded_ = false;
  bool unloaded_ = false;
  std::vector<std::string> kept_messages_;
};

}  // namespace quorvel
