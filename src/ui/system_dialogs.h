#pragma once

namespace quorvel::ui {

/// Cancels the dialogs that the system shows for this program by itself: where it picks files or asks about them. They
/// close as soon as their own event loops come to it. False when there is none.
bool cancel_system_dialogs();

}  // namespace quorvel::ui
