#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <string_view>
#include <vector>

#include "platform/key_value_store.h"
#include "platform/user_interface.h"
#include "queue/settings.h"

namespace quorvel {

/// The program cannot go on, and the user has seen why. It ends at once, with everything as it is.
class ProgramEnd : public std::exception {};

/// The stored settings as the program reads and writes them.
class SettingsStore {
 public:
  SettingsStore(KeyValueStore& store, UserInterface& ui) : store_(store), ui_(ui) {}

  /// Empty when the value is missing or no text; cut before the first NUL.
  std::string read_string(const std::string& name) const;

  /// 0 when the value is missing, no number, or above 32,767.
  std::int16_t read_number(const std::string& name) const;

  /// Every preference; one that is missing or makes no sense gets its default.
  void read_preferences(Settings& settings) const;

  /// When a value cannot be stored, these show why and throw ProgramEnd.
  void write_number(const std::string& name, std::int32_t number);
  void write_preferences(const Settings& settings);

 private:
  void write(const std::vector<KeyValueStore::Named>& values, std::string_view line_break);

  KeyValueStore& store_;
  UserInterface& ui_;
};

}  // namespace quorvel
