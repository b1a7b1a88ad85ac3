#pragma once

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "fake_listings.h"
#include "fake_ports.h"
#include "fake_web.h"
#include "file_tools.h"
#include "platform/system.h"
#include "shell/startup.h"
#include "temporary_folder.h"

namespace quorvel::testing {

/// Real files, of which the operation of that number fails, while others do something.
struct FailingShell : FileOperation {
  const std::unique_ptr<FileOperation> real = system_file_operation({}, {});
  int calls = 0, fails_at = 0, flags = 0;  // of the last one
  std::function<void()> meanwhile = [] {};
  int perform(const FileOperationRequest& request) override {
    flags = request.flags;
    return ++calls == fails_at ? meanwhile(), 5 : real->perform(request);
  }
};

/// What a session stands on: real files, fakes for what cannot be had, and the listings service behind its socket.
struct TestPorts {
  TemporaryFolder folder;
  Events events;
  FakeClock clock{events};
  FakeKeyValues key_values;
  std::unique_ptr<Files> files = system_files();
  std::unique_ptr<FileOperation> shell = system_file_operation({}, {});
  std::unique_ptr<FolderWatch> folder_watch = system_folder_watch();
  FakeDesktop desktop{events};
  FakeListings service;
  FakeWeb web;

  TestPorts() {
    for (const char* const name : {"data", "in", "program"}) files->create_folder(folder / name);
  }
  Ports with(UserInterface& ui) {
    return {key_values, *shell, *files, service, web, ui, clock, &desktop, folder_watch.get()};
  }
  Places places() const { return {folder / "data", folder / "program", {}, service.base()}; }

  /// Makes a file, and the folders that it lacks.
  void make(const std::string& path, const std::string& bytes = "x") const {
    std::filesystem::create_directories(path_of(path).parent_path());
    if (!files->replace(path, bytes)) throw Failure("cannot write " + path);
  }
  void write(const std::string& relative, const std::string& bytes) const { make(folder / relative, bytes); }
  std::string read(const std::string& relative) const { return files->read(folder / relative).value_or("(missing)"); }
  bool exists(const std::string& relative) const { return files->exists(folder / relative); }
  std::vector<std::string> happened() { return std::exchange(events.list, {}); }
};

struct TestSession : TestPorts {
  FakeUi ui{events};
  Session session{with(ui), places()};

  std::string work_dir() const { return folder / "data/Quorvel/"; }

  /// Starts the session with every step logged and everything of the start-up forgotten.
  void start() {
    key_values.numbers["logging"] = 2;
    session.start();
    events.list.clear();
  }

  /// Puts a file that holds its own name into "in" and queues it; its index.
  int add(const std::string& name) {
    write("in/" + name, name);
    session.intake.add_to_queue(folder / ("in/" + name), false);
    return session.queue.count();
  }
  QueueItem& item(int index) { return session.queue.at(index); }

  /// The log without its times, from line `from` on, "|" between lines.
  std::string log(std::size_t from = 0) const {
    std::string text;
    for (; from < session.log.lines().size(); ++from) {
      text += (text.empty() ? "" : "|") + session.log.lines()[from].substr(sizeof("(14:05:33)"));
    }
    return text;
  }
  bool logged(const std::string& line) const { return ("|" + log() + "|").find("|" + line + "|") != std::string::npos; }
};

/// One copy of the desktop program without its window: the log and all that is asked of the ports are events.
struct ProgramCopy : TestSession {
  Startup startup{session, desktop, desktop};

  ProgramCopy() {
    session.log.on_line = [this](const std::string& line, bool) { events.list.push_back(line); };
  }
  StartResult run(const std::vector<std::string>& arguments) {
    return startup.run(parse_command_line(arguments, *files));
  }
  /// Makes a file there; its path.
  std::string file(const std::string& name) { return make(folder / name), folder / name; }
};

}  // namespace quorvel::testing
