#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
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
};

/// Killed with the test. Its standard input is empty.
class ChildProcess {
 public:
  static constexpr int killed = -1;

  /// Throws std::runtime_error when the program cannot be started.
  explicit ChildProcess(const Start& start);
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  void kill();
  /// Waits for the end.
  int status();

 private:
  struct System;
  std::unique_ptr<System> system_;
};

/// A program at a terminal, with a user in front of it.
class Conversation {
 public:
  explicit Conversation(const Start& start);
  ~Conversation();
  Conversation(const Conversation&) = delete;
  Conversation& operator=(const Conversation&) = delete;

  /// Whether the terminal shows this before the program ends.
  bool shows(const std::string& text);
  /// "\n" is the key that ends a line, "\x03" the one that interrupts.
  void type(const std::string& keys);
  /// Waits for the end.
  int status();

 private:
  struct System;
  std::unique_ptr<System> system_;
};

/// The events of this thread and, where messages are sent to windows, one with this caption.
class EventLoop {
 public:
  explicit EventLoop(const std::string& caption);
  ~EventLoop();
  EventLoop(const EventLoop&) = delete;
  EventLoop& operator=(const EventLoop&) = delete;

  /// Handles what is pending.
  void process() const;

 private:
  void* window_ = nullptr;
};

/// Ends this process as a kill from outside does: nothing more is done.
[[noreturn]] void kill_this_process();

/// What a test has done in another process: this test program, started to do nothing else. The work makes nothing that
/// is left behind when it is killed, and nothing that is not `given`.
class SecondProcess {
 public:
  using Work = int (*)(const std::string& given);  // the process's exit status
  SecondProcess(const std::string& name, Work work) : name_(name) { all()[name] = work; }

  std::string argument(const std::string& given) const { return mark + name_ + "=" + given; }
  Start start(const std::string& given) const { return {.program = program_file(), .arguments = {argument(given)}}; }

  /// Whether the program was started for that; its `status` then.
  static bool run(const std::vector<std::string>& arguments, int& status) {
    if (arguments.empty() || !arguments[0].starts_with(mark)) return false;
    const std::string rest = arguments[0].substr(mark.size());
    const std::size_t end = rest.find('=');
    status = all().at(rest.substr(0, end))(rest.substr(end + 1));
    return true;
  }

 private:
  static inline const std::string mark = "--second-process=";
  static std::map<std::string, Work>& all() {
    static std::map<std::string, Work> works;
    return works;
  }
  const std::string name_;
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
