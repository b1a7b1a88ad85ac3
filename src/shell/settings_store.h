#pragma once

#include <cstdint>
#include <exception>
#include <string>

#include "platform/context_menu.h"
#include "platform/file_operation.h"
#include "platform/files.h"
#include "platform/key_value_store.h"
#include "platform/log.h"
#include "platform/user_interface.h"
#include "queue/settings.h"

namespace quorvel {

/// The user has been told why the program cannot go on. It ends at once, with everything as it is.
class ProgramEnd : public std::exception {};

/// The user's preferences and where they are kept.
class SettingsStore {
 public:
  SettingsStore(KeyValueStore& store, UserInterface& ui) : store_(store), ui_(ui) {}

  /// Empty when the value is missing or no text; cut before the first NUL.
  std::string read_string(const std::string& name) const;

  /// 0 when the value is missing, no number, or above 32,767.
  std::int16_t read_number(const std::string& name) const;

  /// When the value cannot be stored, tell the user and throw ProgramEnd.
  void write_string(const std::string& name, const std::string& text);
  void write_number(const std::string& name, std::int32_t number);

 private:
  [[noreturn]] void end_program(const std::string& text);

  KeyValueStore& store_;
  UserInterface& ui_;
};

/// The accepted extensions as stored, or the default ones when that text is too short to be meant.
std::string stored_types(const SettingsStore& store);

/// What reading the settings at start-up needs besides them.
struct SettingsEnvironment {
  Files& files;
  FileOperation& shell;
  Log& log;
  ContextMenu* context_menu;  // null where the program has no entries in any menu
};

/// Brings the stored settings to the program's version: a first run and an older version drop the caches, whose format
/// may have changed. `version` is "major.minor".
void update_settings_version(SettingsStore& store, const std::string& version, const std::string& work_dir,
                             const SettingsEnvironment& environment);

/// Fills in all but the work directory and gives the log level. Installs the context menu's entries when the user has
/// not decided on them yet.
LogLevel load_settings(const SettingsStore& store, Settings& settings, const SettingsEnvironment& environment);

}  // namespace quorvel
