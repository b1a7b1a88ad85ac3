#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/files.h"
#include "platform/key_value_store.h"

/// Programs that run beside a test. One definition per system.
namespace quorvel::testing {

/// How a program is started.
struct Start {
  std::string program;
  std::vector<std::string> arguments = {};
  std::string folder = {};                              // empty: the test's own
  std::map<std::string, std::string> environment = {};  // in place of the test's own variables of these names
  std::string out = {}, error = {};                     // files for its output, which else is dropped
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
  /// The most bytes of memory that it held, once it has ended.
  std::uint64_t most_memory() const;

 private:
  struct System;
  std::unique_ptr<System> system_;
};

/// This test program once more, for the test "SecondProcess.NAME" alone, which is no test by itself. To be killed it
/// must leave nothing behind, so it makes no folder of its own: told_by_first() is what is given here.
Start second_process(const std::string& name, const std::string& told);
std::string told_by_first();

/// Ends this process as a kill from outside does: nothing more is done.
[[noreturn]] void kill_this_process();

/// The variables that give the terminal program a home of its own there, and this listings service.
std::map<std::string, std::string> user_at(const std::string& home, const std::string& api_base);

/// The settings that the terminal program has stored then, which on some systems are the same for every home.
std::unique_ptr<KeyValueStore> settings_of(Files& files, const std::string& home);
/// Settings that are kept apart from the user's own and gone with the folder.
std::unique_ptr<KeyValueStore> settings_in(Files& files, const std::string& folder);
/// The folder of its rules and caches.
std::string data_folder_of(const std::string& home);

}  // namespace quorvel::testing
