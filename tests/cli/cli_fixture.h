#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>

#include "child_process.h"
#include "file_tools.h"
#include "listings_service.h"
#include "platform/native.h"
#include "platform/system.h"
#include "temporary_folder.h"

namespace quorvel::testing {

/// The built program on real files, with a home of its own, against the stand-in service.
struct Cli : ::testing::Test {
  struct Result {
    int status = -1;
    std::string out, error;
  };
  using Arguments = std::vector<std::string>;

  TemporaryFolder folder;
  ListingsService service;
  const std::unique_ptr<Files> files = system_files();
  std::map<std::string, std::string> environment = user_at(folder / "home", service.base() + "/");

  Cli() {
    for (const char* const name : {"home", "in"}) files->create_folder(folder / name);
    settings()->erase_all();
  }
  ~Cli() override { settings()->erase_all(); }
  /// As they are now.
  std::unique_ptr<KeyValueStore> settings() const { return settings_of(*files, folder / "home"); }
  void add(const std::string& name) { write_file(folder / ("in/" + name), name); }
  bool exists(const std::string& name) const { return files->exists(folder / name); }
  Start command(const Arguments& arguments) const {
    return {.program = QUORVEL_CLI, .arguments = arguments, .folder = folder / "in", .environment = environment};
  }
  Result run(const Arguments& arguments) const {
    Start start = command(arguments);
    start.out = folder / "out";
    start.error = folder / "err";
    const int status = ChildProcess(start).status();
    return {status, std::regex_replace(contents(start.out), std::regex("\\(\\d+:\\d\\d:\\d\\d( [AP]M)?\\) "), "> "),
            contents(start.error)};
  }
  /// The settings that a first run leaves.
  void expect_first_settings() const {
    const std::unique_ptr<KeyValueStore> stored = settings();
    EXPECT_EQ(stored->read_string(""), "3.4");
    EXPECT_EQ(stored->read_number("context"), 0u);
    EXPECT_FALSE(stored->read_string("types") || stored->read_number("nocache"));
  }
};

}  // namespace quorvel::testing
