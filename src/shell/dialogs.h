#pragma once

#include <functional>
#include <string>

#include "platform/clock.h"
#include "platform/files.h"
#include "platform/launcher.h"
#include "queue/queue_item.h"
#include "rules/exceptions.h"
#include "shell/settings_store.h"

/// What the dialogs say and decide, however they look.
namespace quorvel {

/// What is told about an item.
struct ItemInfo {
  // What became of it, a line each; nothing for one that has not been taken or is being worked on.
  std::string filename = {}, status = {}, new_name = {}, description = {};
  std::string old_path = {}, new_path = {};  // in full; no new one before it is known and after it was given up
  std::string show_address = {}, episode_address = {};  // in double quotes; empty where the service gave none
  bool operator==(const ItemInfo&) const = default;
};
/// `clock` tells how old the listings are.
ItemInfo item_info(const QueueItem& item, const Clock& clock);

/// The address of a web page; empty for anything else, as the service writes null where there is none.
std::string page_address(const std::string& address);

/// A message says what cannot be opened.
void open_page(Launcher& launcher, UserInterface& ui, const std::string& address);

/// The same for a folder.
void open_folder(Launcher& launcher, UserInterface& ui, const Files& files, const std::string& folder);

/// The folder that holds the item's file as it is now, or that held it last.
std::string folder_of(const QueueItem& item, const Files& files);

/// `text`, or as much of its start as fits below `width` with "..." after it. `measure` gives a text's width.
std::string fitted(const std::string& text, int width, const std::function<int(const std::string&)>& measure);

/// A message's text as it is shown: "#" breaks the line.
std::string message_lines(std::string text);

/// Whether the user does not want to see the message of this number any more; one below 1 is always shown.
bool is_switched_off(const SettingsStore& store, int message);
void switch_off(SettingsStore& store, int message);

enum class NewException { Added, NoDetectedName, NoNewName, NotSaved };

/// Adds an exception and shows the list. When that cannot be done, a message says why.
NewException add_exception(ExceptionList& exceptions, UserInterface& ui, const std::string& detected_name,
                           const std::string& new_name);

}  // namespace quorvel
