#pragma once

#include <string>
#include <vector>

#include "shell/session.h"

/// The user's preferences, and the entries in the file manager's context menu that go with them.
namespace quorvel {

/// Start-up's step. A first run and a version whose caches may have another format drop the caches; then the
/// preferences are read, and the menu's entries installed when the user has not decided on them yet.
void load_preferences(Session& session);

/// The OK of the preferences dialog: `wanted` holds the file types as the user has typed them. Brings the menu's
/// entries up to date and stores everything. False, with nothing changed, when there are no types; the user is asked
/// for some.
bool apply_preferences(Session& session, Settings wanted);

/// Each turns one setting on or off, and stores nothing else.
void turn_exact_names(Session& session, bool on);
void turn_review_first(Session& session, bool on);

/// The folders whose new files the window takes, and whether it does; it cannot without any. Stores that.
void set_watched(Session& session, const std::vector<std::string>& folders, bool watching);

/// What to tell after a pass in which this many names lost characters that exact names would have kept; empty when
/// there is nothing to tell, or the user does not want to hear of it.
std::string lost_characters_notice(const Session& session, int count);
inline constexpr int lost_characters_message = 2;  // its number, by which the user switches it off

/// For uninstalling: the entries of the types that are stored, and those of folders and video files.
void remove_menu_entries(Session& session);

}  // namespace quorvel
