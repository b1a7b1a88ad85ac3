#include "shell/preferences.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "shell/dialogs.h"
#include "shell/version.h"
#include "text/case.h"
#include "text/characters.h"
#include "text/cut.h"
#include "text/failure.h"

namespace quorvel {
namespace {

constexpr auto versions_with_old_caches = std::to_array<std::string_view>({"3.1", "3.2", "3.3"});
constexpr const char* folders_and_videos = "DIR";
constexpr int cache_warning = 1;  // the message's number, by which the user can switch it off

/// A folder of that name that holds anything else is somebody else's, and only the caches in it go.
void drop_caches(Session& session) {
  using Request = FileOperationRequest;
  const std::string cache = session.cache.path();
  if (!session.ports.files.exists(cache)) return;
  if (const std::optional<std::string> foreign = session.cache.foreign_use()) {
    session.log.debug_log("The folder " + cache + " is kept, for it " + *foreign, LogLevel::Normal);
    if (session.cache.is_link()) return;
    for (const char* const extension : {".qc", ".epc"}) {
      for (const std::string& file : session.cache.files(extension)) session.ports.files.remove(file);
    }
    return;
  }
  const int code = session.ports.shell.perform(
      {Request::Delete, cache, "", Request::Silent | Request::NoConfirmation | Request::SimpleProgress});
  if (code != 0) {
    session.log.debug_log("Unable to delete " + cache + " (" + std::to_string(code) + ")", LogLevel::Normal);
  }
}

void update_version(Session& session) {
  const std::string stored = session.settings_store.read_string("");
  const bool has_old_caches = std::find(versions_with_old_caches.begin(), versions_with_old_caches.end(), stored) !=
                              versions_with_old_caches.end();
  if (!stored.empty() && !has_old_caches) return;
  std::vector<KeyValueStore::Named> values = {{"", short_version}};
  if (stored.empty()) values.emplace_back("context", std::uint32_t{Settings::NotInstalled});
  try {
    session.ports.key_values.write(values);
  } catch (const Failure& failure) {
    // Where nothing can be stored, as in a container, the program works all the same.
    session.log.debug_log(std::string("Unable to store the settings: ") + failure.what(), LogLevel::Normal);
  }
  drop_caches(session);
}

void install_types(ContextMenu* menu, const std::string& types) {
  if (menu == nullptr) return;
  for (const std::string_view type : split(types, ";")) menu->install(std::string(type));
  menu->install(folders_and_videos);
}

void remove_types(ContextMenu* menu, const std::string& types) {
  if (menu == nullptr) return;
  for (const std::string_view type : split(types, ";")) menu->remove(std::string(type));
}

/// Without dots, without a ";" at the end, and in lower case.
std::string cleaned(std::string types) {
  std::erase(types, '.');
  if (types.ends_with(';')) types.pop_back();
  return lower_case(types);
}

}  // namespace

void load_preferences(Session& session) {
  update_version(session);
  Settings& settings = session.settings;
  session.settings_store.read_preferences(settings);
  if (settings.context == Settings::NotInstalled && session.ports.context_menu != nullptr) {
    session.log.debug_log("Setting up context menu entries", LogLevel::Verbose);
    install_types(session.ports.context_menu, settings.types);
    settings.context = Settings::Installed;
  }
  session.log.set_level(settings.logging);
}

bool apply_preferences(Session& session, Settings wanted) {
  UserInterface& ui = session.ports.ui;
  if (length(wanted.types) < types_setting.min_length) {
    ui.show_message(0, "Filetypes Required",
                    "Please enter at least one filetype. Multiple filetypes can be seperated with semicolons.",
                    MessageIcon::Information);
    return false;
  }
  if (wanted.nocache) {
    ui.show_message(
        cache_warning, "Not Recommended",
        "Disabling the cache is for troubleshooting only. The program will operate a lot slower with no cache",
        MessageIcon::Warning);
  }
  wanted.types = cleaned(wanted.types);
  ContextMenu* const menu = session.ports.context_menu;
  remove_types(menu, session.settings.types);
  session.settings = wanted;
  session.log.set_level(wanted.logging);
  session.settings_store.write_preferences(wanted);
  if (wanted.context == Settings::Installed) {
    install_types(menu, wanted.types);
  } else if (menu != nullptr) {
    menu->remove(folders_and_videos);
  }
  return true;
}

void turn_exact_names(Session& session, bool on) {
  session.settings.exact = on;
  session.settings_store.write_number("exact", on ? 1 : 0);
}

void set_watched(Session& session, const std::vector<std::string>& folders, bool watching) {
  session.settings.watched.clear();
  for (const std::string& folder : folders) session.settings.watched += folder + "\n";
  session.settings.watching = watching && !folders.empty();
  session.settings_store.write_preferences(session.settings);
}

void turn_review_first(Session& session, bool on) {
  session.settings.review = on;
  session.settings_store.write_number("review", on ? 1 : 0);
}

std::string lost_characters_notice(const Session& session, int count) {
  if (count == 0 || session.settings.exact || is_switched_off(session.settings_store, lost_characters_message))
    return {};
  const std::string names = count == 1 ? "1 name has" : std::to_string(count) + " names have";
  return names + " lost characters. Exact names keep them.";
}

void remove_menu_entries(Session& session) {
  Settings stored;
  session.settings_store.read_preferences(stored);
  ContextMenu* const menu = session.ports.context_menu;
  remove_types(menu, stored.types);
  if (menu != nullptr) menu->remove(folders_and_videos);
}

}  // namespace quorvel
