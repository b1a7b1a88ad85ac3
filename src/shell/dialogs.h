#pragma once

#include <functional>
#include <string>

#include "queue/queue_item.h"
#include "rules/exceptions.h"
#include "shell/settings_store.h"

/// What the dialogs say and decide, however they look.
namespace quorvel {

/// What became of an item, a line each; nothing for one that has not been taken or is being worked on.
struct ItemInfo {
  std::string filename, status, new_name, description;
  bool operator==(const ItemInfo&) const = default;
};
ItemInfo item_info(const QueueItem& item);

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
