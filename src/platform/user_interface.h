#pragma once

#include <optional>
#include <string>
#include <vector>

namespace quorvel {

/// What changes in one row of the queue list. Absent values stay as they are.
struct RowUpdate {
  enum Icon { DoneIcon = 1, FailedIcon = 2, WaitingIcon = 3, LookIcon = 4 };  // the last: a person should look at it

  bool scroll_into_view = false;
  std::optional<Icon> icon;
  std::optional<std::string> new_name;
  std::optional<std::string> status;
  bool select = false;
  bool operator==(const RowUpdate&) const = default;
};

/// One row of the filter list or of the exceptions list.
struct ListRow {
  std::string key = {};
  std::vector<std::string> cells;
  std::string tip = {};  // shown while the pointer rests on the row
  bool operator==(const ListRow&) const = default;
};

struct ConfirmationQuestion {
  std::string title;
  std::string question;
  std::string source;
  std::string destination;
};

/// The standard icons of the message box.
enum class MessageIcon { Error = 32513, Question = 32514, Warning = 32515, Information = 32516 };

/// The user interface as the core sees it. Events run only inside process_events, catch_up, ask_confirmation and
/// show_message.
class UserInterface {
 public:
  virtual ~UserInterface() = default;

  /// A new last row of the queue list; `index` counts from 1.
  virtual void add_row(int index, const std::string& filename) = 0;

  /// Throws Failure when there is no such row.
  virtual void update_row(int index, const RowUpdate& update) = 0;

  /// All rows of the list, in order, in place of those shown before.
  virtual void show_filters(const std::vector<ListRow>& rows) = 0;
  virtual void show_exceptions(const std::vector<ListRow>& rows) = 0;

  /// Lets pending events run and comes back. May do nothing when it did so a moment ago.
  virtual void process_events() = 0;

  /// The same, but never does nothing: what has changed is to be seen before something takes its time.
  virtual void catch_up() { process_events(); }

  /// The user's answer, or empty when the question was closed without one.
  virtual std::optional<bool> ask_confirmation(const ConfirmationQuestion& question) = 0;

  /// `id` above 0: the user may switch this message off. "#" in `text` is a line break.
  virtual void show_message(int id, const std::string& title, const std::string& text, MessageIcon icon) = 0;

  /// Arms the one-shot timer whose tick starts a pass of the queue processor.
  virtual void arm_start_timer() = 0;

  /// Asks the main window to close, which ends the program.
  virtual void close() = 0;
};

}  // namespace quorvel
