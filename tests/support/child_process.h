#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/native.h"
#include "platform/system.h"
#include "shell/version.h"
#include "variable.h"

/// Programs that run beside a test, and what else a test does by the system. One definition per system.
namespace quorvel::testing {

/// How a program is started.
struct Start {
  std::string program;
  std::vector<std::string> arguments = {};
  std::string folder = {};                              // empty: the test's own
  std::map<std::string, std::string> environment = {};  // in place of the test's own variables of these names
  std::string out = {}, error = {};                     // files for its output, which otherwise is dropped
  bool terminal = false;                                // it has one, in place of those and of an empty input
};

/// Killed with the test, or with the last copy of this.
class ChildProcess {
 public:
  /// Throws std::runtime_error when the program cannot be started.
  explicit ChildProcess(const Start& start);

  void kill() const;
  /// Waits for the end; -1 after a kill.
  int status() const;

  /// At a terminal: whether it shows this before the program ends.
  bool shows(const std::string& text) const;
  /// At a terminal: "\n" is the key that ends a line, "\x03" the one that interrupts.
  void type(const std::string& keys) const;

 private:
  struct System;
  std::shared_ptr<System> system_;
};

/// The events of this thread and, where messages are sent to windows, one with this caption.
class EventLoop {
 public:
  explicit EventLoop(const std::string& caption);

  /// Handles what is pending.
  void process() const;

 private:
  std::shared_ptr<void> window_;
};

/// What a test has done in another process: this test program, started to do nothing else. The work makes nothing that
/// is left behind when it is killed, and nothing that is not `given`.
class SecondProcess {
 public:
  using Work = int (*)(const std::string& given);  // the process's exit status
  SecondProcess(const std::string& name, Work work) : mark_("--second-process=" + name + "=") { all_[mark_] = work; }

  std::string argument(const std::string& given) const { return mark_ + given; }
  Start start(const std::string& given) const { return {.program = program_file(), .arguments = {argument(given)}}; }

  /// The exit status of the program if it was started for that.
  static std::optional<int> run(const std::vector<std::string>& arguments) {
    for (const auto& [mark, work] : all_) {
      if (!arguments.empty() && arguments[0].starts_with(mark)) return work(arguments[0].substr(mark.size()));
    }
    return std::nullopt;
  }

 private:
  static inline std::map<std::string, Work> all_;
  const std::string mark_;
};

/// The variables that give the terminal program a home of its own there, and this listings service.
inline std::map<std::string, std::string> user_at(const std::string& home, const std::string& api_base) {
  return {{"XDG_CONFIG_HOME", home}, {"XDG_DATA_HOME", home}, {"APPDATA", home},
          {"LC_ALL", "C.UTF-8"},     {"SSL_CERT_FILE", ""},   {"QUORVEL_API_BASE", api_base}};
}

/// The folder of its rules and caches, and on some systems of its settings.
inline std::string data_folder_of(const std::string& home) {
  return home + native::separator + application_title;
}

/// Its settings, which on some systems are the same for every home; of a program with another name they are the
/// test's own.
inline std::unique_ptr<KeyValueStore> settings_of(Files& files, const std::string& home,
                                                  const std::string& name = application_title) {
  const Variable config("XDG_CONFIG_HOME", home);
  return system_key_values(files, name);
}

}  // namespace quorvel::testing
