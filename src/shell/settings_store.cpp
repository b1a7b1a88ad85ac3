#include "shell/settings_store.h"

#include <limits>

#include "text/characters.h"
#include "text/failure.h"

namespace quorvel {

std::string SettingsStore::read_string(const std::string& name) const {
  const std::string text = store_.read_string(name).value_or(std::string());
  return text.substr(0, text.find('\0'));
}

std::int16_t SettingsStore::read_number(const std::string& name) const {
  const std::uint32_t number = store_.read_number(name).value_or(0);
  return number > std::numeric_limits<std::int16_t>::max() ? std::int16_t{0} : static_cast<std::int16_t>(number);
}

void SettingsStore::read_preferences(Settings& settings) const {
  static const Settings defaults;
  for (const TextSetting& setting : text_settings) {
    const std::string text = read_string(std::string(setting.name));
    settings.*setting.member = length(text) < setting.min_length ? defaults.*setting.member : text;
  }
  for (const NumberSetting& setting : number_settings) setting.read(settings, read_number(std::string(setting.name)));
}

// The two messages differ in their line break; users have searched the web for either.
void SettingsStore::write_number(const std::string& name, std::int32_t number) {
  write({{name, static_cast<std::uint32_t>(number)}}, "#");
}

void SettingsStore::write_preferences(const Settings& settings) {
  std::vector<KeyValueStore::Named> values;
  values.reserve(text_settings.size() + number_settings.size());
  for (const TextSetting& setting : text_settings) values.emplace_back(setting.name, settings.*setting.member);
  for (const NumberSetting& setting : number_settings) {
    values.emplace_back(setting.name, static_cast<std::uint32_t>(setting.get(settings)));
  }
  write(values, "");
}

void SettingsStore::write(const std::vector<KeyValueStore::Named>& values, std::string_view line_break) {
  try {
    store_.write(values);
  } catch (const Failure& failure) {
    const std::string text = std::string("Fatal Error writing data to registry (") + failure.what() + ")";
    ui_.show_message(0, "Error saving settings", text + std::string(line_break) + "The program needs to close",
                     MessageIcon::Error);
    throw ProgramEnd();
  }
}

}  // namespace quorvel
