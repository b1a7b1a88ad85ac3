#pragma once

#include <cstdint>
#include <string>

#include "platform/launcher.h"
#include "shell/session.h"

namespace quorvel {

inline constexpr const char* no_help_file = "Help File not found in program directory";

/// Where the help file is when it is there.
std::string help_file(const Places& places);

/// The three numbers one after another, with a "0" before a revision of at most 99: 3, 4 and 7 give "3407".
std::string compact_version(int major, int minor, int revision);

/// The commands that lead out of the program. A message says what cannot be opened or started.
class Commands {
 public:
  Commands(Session& session, Launcher& launcher) : session_(session), launcher_(launcher) {}

  void help();

  /// The product's pages: those of the text setting "website", else the program's own.
  void website();

  /// Where they are, without a separator at its end.
  std::string website_address() const;

  /// Starts the updater that the text setting "updater" names. `handle` is the main window's, for it to close.
  void update(std::uintptr_t handle);

 private:
  std::string address() const;
  void open(const std::string& target);
  void show(const std::string& text);

  Session& session_;
  Launcher& launcher_;
};

}  // namespace quorvel
