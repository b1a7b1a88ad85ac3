#pragma once

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

/// For uninstalling: the entries of the types that are stored, and those of folders and video files.
void remove_menu_entries(Session& session);

}  // namespace quorvel
