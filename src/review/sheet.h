#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <variant>
#include <vector>

#include "fileops/batch.h"
#include "queue/processor.h"
#include "queue/queue_view.h"
#include "queue/settings.h"
#include "queue/work_queue.h"

namespace quorvel {

/// What stands in the way of an item's operation, or that nothing does.
enum class Mark : std::uint8_t {
  Ready,
  RightAlready,
  Uncertain,
  TwoForOneName,
  ShowUnclear,
  TargetExists,
  ShowUnknown,
  EpisodeUnknown,
  Unfit,  // no rule fits, or no name can be made
  Changed
};

/// What a mark asks of the user: nothing, a decision, or help with a problem.
enum class Need : std::uint8_t { Nothing, Decision, Help };
Need need_of(Mark mark);

/// The items of the queue that a pass has planned, or not been able to plan, for the user to look at, to correct and to
/// apply. Items are numbered as in the queue.
class ReviewSheet {
 public:
  struct Parts {
    const Settings& settings;
    WorkQueue& queue;
    Processor& processor;
    const Batch& batch;
    QueueView& view;
  };

  /// Items whose names say the same show.
  struct Group {
    std::string key;         // no other one's, and its own for good
    std::string read_as;     // the show as it was read, or what an exception puts in its place
    std::string found;       // the show that was found for it; empty where none was
    std::vector<int> items;  // in the queue's order
  };

  enum class Filter : std::uint8_t { All, Decisions, Problems };

  explicit ReviewSheet(Parts parts) : parts_(parts) {}

  /// Looks at the queue and at the drives anew, after a pass and in the middle of one.
  void refresh();

  bool is_empty() const { return rows_.empty(); }
  /// Whether any operation waits for the user's word.
  bool is_waiting() const;

  bool holds(int item) const { return rows_.contains(item); }
  const std::vector<Group>& groups() const { return groups_; }
  bool shows(int item, Filter filter) const;

  // Of an item that is in the sheet.

  Mark mark(int item) const { return rows_.at(item).mark; }
  /// The mark in a word or two, and in full, lines ending in CR LF.
  std::string mark_text(int item) const;
  std::string reason(int item) const;
  std::string old_name(int item) const { return parts_.queue.at(item).filename; }
  /// Empty where none could be made.
  std::string new_name(int item) const;
  /// What the new name is edited as: without its extension.
  std::string name_to_edit(int item) const;
  /// "2x05-06", "2011-04-18"; empty where the name says nothing.
  std::string numbers(int item) const;
  /// Where the file goes; empty where that is not known.
  std::string folder(int item) const;
  /// What goes along.
  const std::vector<FileJob>& companions(int item) const { return parts_.queue.at(item).companions; }
  /// Whether that is another one than where it is.
  bool moves(int item) const;

  /// "12 files, 11 ready, 1 needs a decision".
  std::string heading() const;

  // What is to be done.

  bool may_tick(int item) const { return parts_.queue.at(item).is_planned && mark(item) != Mark::RightAlready; }
  bool is_ticked(int item) const { return rows_.at(item).is_ticked; }
  void tick(const std::vector<int>& items, bool on);
  void tick_all_ready();
  /// How many are ticked.
  int ticked() const;

  // Corrections. Each gives a sentence that says why it cannot be made, or nothing.

  /// The file is to have this name, without the extension.
  std::string rename(int item, const std::string& name);
  /// The file has these numbers: "2x05", "S02E05", and with exact names "2x05-06", a date and an absolute number. It is
  /// looked up again.
  std::string correct(int item, const std::string& numbers);
  /// What correct() would refuse these numbers with.
  std::string refusal_of(const std::string& numbers) const;

  /// Does what is ticked, and cancels the rest. Files change while it runs, and events run.
  void apply();
  /// Cancels all.
  void cancel();

 private:
  struct Row {
    Mark mark = Mark::Ready;
    bool is_ticked = false;   // by the user, or because it is ready
    std::string trouble;      // that the drives make, or others in the sheet
    bool is_related = false;  // its mark may depend on what else is ticked
  };

  std::variant<Reading, std::string> read_numbers(const std::string& numbers) const;
  void collect();
  void weigh_all();
  void weigh(const std::vector<int>& items);
  Mark mark_of_planned(int item, Batch::Trouble::Kind trouble) const;
  Mark mark_of_failed(int item) const;
  void relate(const std::vector<int>& planned);
  std::vector<int> planned() const;
  std::vector<int> leave();

  const Parts parts_;
  std::vector<Group> groups_;
  std::map<int, Row> rows_;  // by item
};

}  // namespace quorvel
