#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/clock.h"
#include "platform/files.h"
#include "platform/log.h"
#include "store/shared_database.h"

namespace quorvel {

/// What an operation does, or did. The first five are numbered as the actions of rules are. A folder is tidied away
/// into the trash when its last file has gone, and made again.
enum class Deed : std::uint8_t {
  Renamed = 1,
  Moved = 2,
  Copied = 3,
  HardLinked = 4,
  SymbolicLinked = 5,
  SetAside = 8,
  Trashed = 9,
  Tidied = 10,
  Made = 11
};

constexpr bool is_link(Deed deed) {
  return deed == Deed::HardLinked || deed == Deed::SymbolicLinked;
}

/// Whether the file is where it was as well afterwards.
constexpr bool leaves_source(Deed deed) {
  return deed == Deed::Copied || is_link(deed);
}

/// One operation on a file, as the history has it.
struct PastOperation {
  enum Outcome : std::uint8_t { UnderWay, Done, Failed };

  std::int64_t id = 0, pass = 0;
  std::chrono::sys_seconds time;
  Deed deed = Deed::Renamed;
  std::string old_path, new_path;  // in full; no new one of what went to the trash
  std::optional<FileStamp> stamp;  // of the file at its new path once it is done, at its old one before
  std::int64_t undoes = 0;         // the operation that this one took back; 0 when it did not
  std::int64_t group = 0;          // of those that are one for the user: the number of its first; 0 for one alone
  bool leads = false;              // its group, to which the others belong
  Outcome outcome = UnderWay;
  bool undone = false;  // since
  std::string reason;   // why it failed

  static constexpr std::int64_t per_pass = 1'000'000;  // what a pass's number is times in those of its operations

  /// Whether it was done and is still so. What a pass itself has taken back never was, for the user.
  bool is_undoable() const { return outcome == Done && !undone && (undoes == 0 || undoes / per_pass != pass); }
};

/// The operations of one pass, or of one undoing, in their order.
struct PastPass {
  std::int64_t id = 0;
  std::chrono::sys_seconds time;
  bool is_undoing = false;
  std::vector<PastOperation> operations;

  /// Those that can be taken back.
  int undoable() const;
};

/// What the program has done to files, kept for later runs in the file history.db in the work folder. Each operation is
/// in there before it begins. No call throws; what cannot be kept in the file is known in this run alone.
class History {
 public:
  History(Files& files, const Clock& clock, Log& log, const std::string& work_dir);

  /// Whether there is anything in it, perhaps; asking it something makes the file.
  bool exists() const;

  /// As long as it lives, what happens belongs to a pass of its own.
  class Pass {
   public:
    explicit Pass(History& history) : history_(history), outer_(history.pass_) { history.pass_ = this; }
    ~Pass() {
      history_.write_end();
      history_.pass_ = outer_;
    }
    Pass(const Pass&) = delete;
    Pass& operator=(const Pass&) = delete;

    /// 0 while nothing has happened in it.
    std::int64_t id() const { return id_; }

   private:
    friend History;
    History& history_;
    Pass* const outer_;
    std::int64_t id_ = 0;
    int count_ = 0;  // of its operations
  };

  /// As long as it lives, what happens is one for the user: files that belong to another one, and then that one.
  class Group {
   public:
    explicit Group(History& history) : history_(history), outer_(history.group_) { history.group_ = this; }
    ~Group() { history_.group_ = outer_; }
    Group(const Group&) = delete;
    Group& operator=(const Group&) = delete;

    /// Whether what comes next is the one that the others belong to.
    void leads(bool leads) { leads_ = leads; }

   private:
    friend History;
    History& history_;
    Group* const outer_;
    std::int64_t id_ = 0;
    bool leads_ = false;
  };

  /// The operation, of which deed, paths, stamp and what it undoes count, is about to begin, in the pass that was begun
  /// last. `owner` is a name that no other process has at the time. Sets its id.
  void begin(PastOperation& operation, const std::string& owner);
  /// It has ended, as its outcome, its stamp and its reason say. That is written with the next beginning, or at the end
  /// of the pass: until then it counts as under way.
  void end(PastOperation operation);

  /// The last passes in which anything was done or tried, the latest first.
  std::vector<PastPass> passes(int count);
  std::optional<PastPass> pass(std::int64_t id);
  std::optional<PastOperation> operation(std::int64_t id);
  /// The last operation that put a file to `path`, in full, and was not undone.
  std::optional<PastOperation> last_to(const std::string& path);
  /// The last one of a file that was at `path`, undone or not, that was no undoing.
  std::optional<PastOperation> last_from(const std::string& path);
  /// The operation, with the others of its group in its pass that can be undone.
  std::vector<PastOperation> group_of(const PastOperation& operation);
  /// The last pass, of those before that number, with something that can be undone, which is no undoing itself; 0 when
  /// there is none.
  std::int64_t last_undoable_pass(std::int64_t before = max_pass);

  /// Operations that were begun and not ended, and files that were set aside, with the owners.
  std::vector<std::pair<PastOperation, std::string>> under_way();

  /// What is older goes, but for what is under way.
  void forget_before(std::chrono::sys_seconds time);

 private:
  static constexpr std::int64_t max_pass = 1'000'000'000'000;

  std::optional<PastOperation> last(std::size_t statement, const std::string& path);
  void write_end();
  static PastOperation operation_in(const SharedDatabase::Row& row);
  std::int64_t now() const;

  Files& files_;
  const Clock& clock_;
  const std::string& work_dir_;
  SharedDatabase database_;
  Pass* pass_ = nullptr;              // the innermost
  Group* group_ = nullptr;            // the innermost
  std::optional<PastOperation> end_;  // not written yet
};

}  // namespace quorvel
