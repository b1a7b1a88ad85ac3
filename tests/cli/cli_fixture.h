#pragma once

#include <gtest/gtest.h>

#include <regex>

#include "child_process.h"
#include "file_tools.h"
#include "listings_service.h"
#include "system_facts.h"
#include "temporary_folder.h"

namespace quorvel::testing {

using Arguments = std::vector<std::string>;
const std::string good = "The Harbour Lights - 1x0";

/// The built program on real files, with a home of its own, against the stand-in service.
struct Cli : ::testing::Test {
  const TemporaryFolder folder;
  ListingsService service;
  const std::unique_ptr<Files> files = system_files();
  std::string out, error;  // of the last run, the first without its times

  Cli() {
    for (const char* const name : {"home", "in", "work"}) files->create_folder(folder / name);
    settings()->erase_all();
  }
  ~Cli() override { settings()->erase_all(); }
  /// As they are now.
  std::unique_ptr<KeyValueStore> settings() const { return settings_of(*files, folder / "home"); }
  void add(const Arguments& names) const {
    for (const std::string& name : names) write_file(folder / ("in/" + name), name);
  }
  Start start(const Arguments& arguments, bool terminal) const {
    return {QUORVEL_CLI,       arguments,         folder / "in", user_at(folder / "home", service.base() + "/"),
            folder / "../out", folder / "../err", terminal};
  }
  int run(const Arguments& arguments) {
    const int status = ChildProcess(start(arguments, false)).status();
    out = std::regex_replace(contents(folder / "../out"), std::regex("\\(\\d+:\\d\\d:\\d\\d( [AP]M)?\\) "), "> ");
    error = contents(folder / "../err");
    return status;
  }
};

}  // namespace quorvel::testing
