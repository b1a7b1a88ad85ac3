#pragma once

#include <string>
#include <vector>

#include "fake_listings.h"
#include "fake_ports.h"
#include "platform/system.h"
#include "shell/session.h"
#include "temporary_folder.h"

namespace quorvel::testing {

/// What a session stands on: real files, and fakes for what cannot be had.
struct TestPorts {
  TemporaryFolder folder;
  Events events;
  FakeUi ui{events};
  FakeClock clock{events};
  FakeKeyValues key_values;
  std::unique_ptr<Files> files = system_files();
  std::unique_ptr<FileOperation> shell = system_file_operation({}, {});

  TestPorts() { files->create_folder(folder / "data"); }
  void write(const std::string& relative, const std::string& bytes) const {
    if (!files->replace(folder / relative, bytes)) throw Failure("cannot write " + relative);
  }
  std::string read(const std::string& relative) const { return files->read(folder / relative).value_or("(missing)"); }
  bool exists(const std::string& relative) const { return files->exists(folder / relative); }
};

/// A whole session, with the listings service behind its socket.
struct TestSession : TestPorts {
  FakeMenu menu{events};
  FakeListings service;
  Session session{
      {key_values, *shell, *files, service, ui, clock, &menu},
      {.application_data = folder / "data", .program = folder / "program", .work_dir = {}, .api_base = service.base()}};

  TestSession() { files->create_folder(folder / "in"); }

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

}  // namespace quorvel::testing
