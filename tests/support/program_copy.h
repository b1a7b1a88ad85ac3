#pragma once

#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "fake_ports.h"
#include "platform/linux/disk_files.h"
#include "platform/linux/gio_file_operation.h"
#include "platform/linux/key_file_store.h"
#include "shell/session.h"
#include "temporary_folder.h"

namespace quorvel::testing {

/// One copy of the program, on real files and settings.
struct ProgramCopy {
  ProgramCopy() {
    for (const char* const name : {"data", "program"}) std::filesystem::create_directory(folder / name);
    session.log.on_line = [this](const std::string& line, bool) { events.list.push_back(line); };
  }
  std::string file(const std::string& name) {
    std::filesystem::create_directories(std::filesystem::path(folder / name).parent_path());
    std::ofstream(folder / name) << "x";
    return folder / name;
  }
  std::vector<std::string> happened() { return std::exchange(events.list, {}); }

  TemporaryFolder folder;
  Events events;
  FakeUi ui{events};
  FakeWindow window{events};
  FakeChannel channel{events};
  FakeMenu menu{events};
  FakeClock clock{events};
  NoSocket socket;
  DiskFiles files;
  GioFileOperation shell{[](auto, auto) { return true; }};
  KeyFileStore store{files, folder / "config/Quorvel/settings.ini"};
  Session session{{store, shell, files, socket, ui, clock, &menu},
                  {folder / "data", folder / "program", {}, "http://127.0.0.1"}};
};

}  // namespace quorvel::testing
