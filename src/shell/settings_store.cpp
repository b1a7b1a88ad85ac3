#include "shell/settings_store.h"

#include <algorithm>
#include <array>
#include <limits>
#include <string_view>

#include "shell/debug_log.h"
#include "text/characters.h"
#include "text/cut.h"
#include "text/failure.h"

namespace quorvel {
namespace {

constexpr std::array<std::string_view, 3> versions_with_old_caches = {"3.1", "3.2", "3.3"};
constexpr std::size_t shortest_types = 3;

void drop_caches(const std::string& work_dir, const SettingsEnvironment& environment) {
  using Request = FileOperationRequest;
  const std::string cache = work_dir + "cache";
  if (!environment.files.exists(cache)) return;
  const int code = environment.shell.perform({Request::Delete, cache + std::string(2, '\0'), "",
                                              Request::Silent | Request::NoConfirmation | Request::SimpleProgress});
  if (code != 0)
    environment.log.debug_log("Unable to delete " + cache + " (" + std::to_string(code) + ")", LogLevel::Normal);
}

void install_context_menu(const std::string& types, const SettingsEnvironment& environment) {
  environment.log.debug_log("Setting up context menu entries", LogLevel::Verbose);
  for (const std::string_view type : split(types, ";")) environment.context_menu->install(std::string(type));
  environment.context_menu->install("DIR");
}

}  // namespace

std::string SettingsStore::read_string(const std::string& name) const {
  const std::string text = store_.read_string(name).value_or(std::string());
  return text.substr(0, text.find('\0'));
}

std::int16_t SettingsStore::read_number(const std::string& name) const {
  const std::uint32_t number = store_.read_number(name).value_or(0);
  return number > std::numeric_limits<std::int16_t>::max() ? std::int16_t{0} : static_cast<std::int16_t>(number);
}

// The two messages differ in their line break; users have searched the web for either.
void SettingsStore::write_string(const std::string& name, const std::string& text) {
  try {
    store_.write_string(name, text);
  } catch (const Failure& failure) {
    end_program(std::string("Fatal Error writing data to registry (") + failure.what() + ")The program needs to close");
  }
}

void SettingsStore::write_number(const std::string& name, std::int32_t number) {
  try {
    store_.write_number(name, static_cast<std::uint32_t>(number));
  } catch (const Failure& failure) {
    end_program(std::string("Fatal Error writing data to registry (") + failure.what() +
                ")#The program needs to close");
  }
}

void SettingsStore::end_program(const std::string& text) {
  ui_.show_message(0, "Error saving settings", text, MessageIcon::Error);
  throw ProgramEnd();
}

std::string stored_types(const SettingsStore& store) {
  const std::string types = store.read_string("types");
  return length(types) < shortest_types ? default_types : types;
}

void update_settings_version(SettingsStore& store, const std::string& version, const std::string& work_dir,
                             const SettingsEnvironment& environment) {
  const std::string stored = store.read_string("");
  const bool is_old = std::find(versions_with_old_caches.begin(), versions_with_old_caches.end(), stored) !=
                      versions_with_old_caches.end();
  if (!stored.empty() && !is_old) return;
  store.write_string("", version);
  drop_caches(work_dir, environment);
  if (stored.empty()) store.write_number("context", Settings::NotInstalled);
}

LogLevel load_settings(const SettingsStore& store, Settings& settings, const SettingsEnvironment& environment) {
  settings.types = stored_types(store);
  settings.context = std::clamp<int>(store.read_number("context"), Settings::NotInstalled, Settings::Installed);
  if (settings.context == Settings::NotInstalled && environment.context_menu != nullptr) {
    install_context_menu(settings.types, environment);
    settings.context = Settings::Installed;
  }
  settings.confirm = store.read_number("confirm") != 0;
  settings.nocache = store.read_number("nocache") != 0;
  settings.noutf8 = store.read_number("noutf8") != 0;
  settings.autoclose = store.read_number("autoclose") == 1;
  return store.read_number("logging") == static_cast<int>(LogLevel::Verbose) ? LogLevel::Verbose : LogLevel::Normal;
}

}  // namespace quorvel
