#pragma once

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "file_tools.h"
#include "session_fixture.h"

namespace quorvel::testing {

/// One copy of the program, as its window and other copies see it.
struct ProgramCopy : TestPorts {
  ProgramCopy() {
    files->create_folder(folder / "program");
    session.log.on_line = [this](const std::string& line, bool) { events.list.push_back(line); };
  }
  void make(const std::string& path) const {
    std::filesystem::create_directories(path_of(path).parent_path());
    write_file(path, "x");
  }
  std::string file(const std::string& name) const { return make(folder / name), folder / name; }
  std::vector<std::string> happened() { return std::exchange(events.list, {}); }

  FakeWindow window{events};
  FakeChannel channel{events};
  FakeMenu menu{events};
  NoSocket socket;
  Session session{{key_values, *shell, *files, socket, ui, clock, &menu},
                  {folder / "data", folder / "program", {}, "http://127.0.0.1"}};
};

}  // namespace quorvel::testing
