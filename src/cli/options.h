#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "platform/key_value_store.h"
#include "rules/filters.h"

namespace quorvel::cli {

/// What the user has asked for.
struct Options {
  bool dry_run = false;
  std::optional<std::string> work_dir;
  std::vector<KeyValueStore::Named> settings;  // for this run
  std::vector<std::string> paths;
  bool read = false;  // only tell what the paths say
  bool json = false;
  std::optional<AFilter> rule;                      // in place of the user's
  std::optional<int> show_id;                       // of all paths
  bool choose = false;                              // ask which show is meant
  bool forget = false;                              // what was chosen before
  std::optional<int> history;                       // how many passes to tell, instead of all else
  std::optional<std::string> plan;                  // to be carried out, instead of all else
  bool watch = false;                               // take the files that come into the paths, until interrupted
  bool undo = false;                                // take a pass back, instead of all else
  std::vector<std::string> after_item, after_pass;  // commands, in words
  std::optional<std::string> log;                   // where what is told is kept as well
  std::optional<int> pass;                          // which; without it the last one
};

/// Nothing is to be run: the program prints this and ends.
struct Ending {
  int status = 0;
  std::string text;  // for standard output with status 0, else for standard error
};

std::variant<Options, Ending> parse_options(int argc, char** argv);

}  // namespace quorvel::cli
