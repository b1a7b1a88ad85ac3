#include "history/history.h"

#include <algorithm>
#include <array>
#include <utility>

namespace quorvel {
namespace {

/// The operations of a pass stand side by side, so each costs one page of the file.
constexpr std::int64_t per_pass = PastOperation::per_pass;

enum Statement : std::size_t {
  BeginPass,
  Begin,
  JoinGroup,
  End,
  MarkUndone,
  LastPasses,
  OnePass,
  Operations,
  LastTo,
  LastFrom,
  LastUndoable,
  StillUnderWay,
  ForgetOperations,
  ForgetPasses,
  ForgetGroups,
};

#define QUORVEL_COLUMNS                                                                                 \
  "id, time, deed, old_path, new_path, device, file, size, modified, undoes, outcome, undone, reason, " \
  "coalesce((SELECT part FROM groups WHERE groups.id = operations.id), 0)"

// An undoing that was itself undone leaves no trace in what it had undone: what came of that is an operation of its
// own.
constexpr std::array statements = {
    // Taking an undoing back does the thing again.
    "INSERT INTO passes (time, is_undoing) VALUES (?1, coalesce((SELECT NOT is_undoing FROM passes WHERE id = ?2), 0))",
    "INSERT INTO operations (id, time, deed, old_path, new_path, device, file, size, modified, undoes, owner) "
    "VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11)",
    // The number of its group, below zero for the one that leads it.
    "INSERT OR REPLACE INTO groups (id, part) VALUES (?1, ?2)",
    "UPDATE operations SET outcome = ?2, device = ?3, file = ?4, size = ?5, modified = ?6, reason = ?7 WHERE id = ?1",
    "UPDATE operations SET undone = 1 WHERE id = (SELECT undoes FROM operations WHERE id = ?1)",
    "SELECT id, time, is_undoing FROM passes ORDER BY id DESC LIMIT ?1",
    "SELECT id, time, is_undoing FROM passes WHERE id = ?1",
    "SELECT " QUORVEL_COLUMNS " FROM operations WHERE id >= ?1 AND id < ?2 ORDER BY id",
    "SELECT " QUORVEL_COLUMNS
    " FROM operations WHERE new_path = ?1 AND outcome = 1 AND NOT undone ORDER BY id DESC LIMIT 1",
    "SELECT " QUORVEL_COLUMNS
    " FROM operations WHERE old_path = ?1 AND outcome = 1 AND undoes = 0 ORDER BY id DESC LIMIT 1",
    "SELECT id FROM operations WHERE id < ?1 AND outcome = 1 AND NOT undone AND undoes / 1000000 <> id / 1000000 AND "
    "NOT "
    "(SELECT is_undoing FROM passes WHERE passes.id = operations.id / 1000000) ORDER BY id DESC LIMIT 1",
    "SELECT " QUORVEL_COLUMNS
    ", owner FROM operations WHERE outcome = 0 OR (deed = 8 AND outcome = 1 AND NOT undone) ORDER BY id",
    "DELETE FROM operations WHERE time < ?1 AND outcome <> 0",
    "DELETE FROM passes WHERE time < ?1 AND NOT EXISTS "
    "(SELECT 1 FROM operations WHERE operations.id >= passes.id * 1000000 AND operations.id < (passes.id + 1) * "
    "1000000)",
    "DELETE FROM groups WHERE id < (SELECT min(id) FROM operations)",
};
#undef QUORVEL_COLUMNS

constexpr SharedDatabase::Contents contents = {
    "history.db",
    2,
    "CREATE TABLE IF NOT EXISTS passes (id INTEGER PRIMARY KEY, time INTEGER NOT NULL, is_undoing INTEGER NOT NULL);"
    "CREATE TABLE IF NOT EXISTS operations (id INTEGER PRIMARY KEY, time INTEGER NOT NULL, deed INTEGER NOT NULL,"
    " old_path BLOB NOT NULL, new_path BLOB NOT NULL, device INTEGER, file INTEGER, size INTEGER, modified INTEGER,"
    " undoes INTEGER NOT NULL, outcome INTEGER NOT NULL DEFAULT 0, undone INTEGER NOT NULL DEFAULT 0, reason BLOB,"
    " owner BLOB NOT NULL);"
    "CREATE TABLE IF NOT EXISTS groups (id INTEGER PRIMARY KEY, part INTEGER NOT NULL);"
    "PRAGMA user_version = 2;",
    statements,
    "What is done to files is kept for this run alone, and can be undone in it alone",
    1024};

using Value = SharedDatabase::Value;

/// The system's numbers have all 64 bits.
Value value_of(const std::optional<FileStamp>& stamp, std::uint64_t FileStamp::*member) {
  return stamp ? Value(static_cast<std::int64_t>((*stamp).*member)) : Value();
}

Value time_in(const std::optional<FileStamp>& stamp) {
  return stamp ? Value(stamp->modified_ns) : Value();
}

SharedDatabase::Call end_of(const PastOperation& operation) {
  const std::optional<FileStamp>& stamp = operation.stamp;
  return {End,
          {operation.id, std::int64_t{operation.outcome}, value_of(stamp, &FileStamp::device),
           value_of(stamp, &FileStamp::id), value_of(stamp, &FileStamp::size), time_in(stamp), operation.reason}};
}

std::chrono::sys_seconds seconds(std::int64_t count) {
  return std::chrono::sys_seconds(std::chrono::seconds(count));
}

}  // namespace

int PastPass::undoable() const {
  return static_cast<int>(std::ranges::count_if(operations, &PastOperation::is_undoable));
}

History::History(Files& files, const Clock& clock, Log& log, const std::string& work_dir)
    : files_(files), clock_(clock), work_dir_(work_dir), database_(files, log, work_dir, contents) {}

bool History::exists() const {
  return files_.exists(work_dir_ + contents.file_name);
}

std::int64_t History::now() const {
  return std::chrono::floor<std::chrono::seconds>(clock_.utc()).time_since_epoch().count();
}

void History::begin(PastOperation& operation, const std::string& owner) {
  Pass single(*this);
  Pass& pass = single.outer_ == nullptr ? single : *single.outer_;
  if (pass.id_ == 0) pass.id_ = database_.perform(BeginPass, {now(), operation.undoes / per_pass});
  operation.pass = pass.id_;
  operation.id = pass.id_ * per_pass + ++pass.count_;
  if (group_ != nullptr) {
    if (group_->id_ == 0) group_->id_ = operation.id;
    operation.group = group_->id_;
    operation.leads = group_->leads_;
    database_.perform(JoinGroup, {operation.id, operation.leads ? -operation.group : operation.group});
  }
  const std::optional<FileStamp>& stamp = operation.stamp;
  const SharedDatabase::Call begun = {
      Begin,
      {operation.id, now(), static_cast<std::int64_t>(operation.deed), operation.old_path, operation.new_path,
       value_of(stamp, &FileStamp::device), value_of(stamp, &FileStamp::id), value_of(stamp, &FileStamp::size),
       time_in(stamp), operation.undoes, owner}};
  if (const std::optional<PastOperation> before = std::exchange(end_, {})) {
    database_.perform_both(end_of(*before), begun);
  } else {
    database_.perform(begun.statement, begun.values);
  }
}

void History::end(PastOperation operation) {
  write_end();
  // What others can see at once does not wait: that an operation is undone.
  const bool waits = pass_ != nullptr && operation.undoes == 0;
  end_ = std::move(operation);
  if (!waits) write_end();
}

void History::write_end() {
  const std::optional<PastOperation> operation = std::exchange(end_, {});
  if (!operation) return;
  const SharedDatabase::Call ended = end_of(*operation);
  if (operation->undoes != 0 && operation->outcome == PastOperation::Done) {
    database_.perform_both(ended, {MarkUndone, {operation->id}});
  } else {
    database_.perform(ended.statement, ended.values);
  }
}

PastOperation History::operation_in(const SharedDatabase::Row& row) {
  PastOperation operation;
  operation.id = row.number(0);
  operation.pass = operation.id / per_pass;
  operation.time = seconds(row.number(1));
  operation.deed = static_cast<Deed>(row.number(2));
  operation.old_path = row.bytes(3);
  operation.new_path = row.bytes(4);
  if (row.has(7)) {
    operation.stamp = FileStamp{.device = static_cast<std::uint64_t>(row.number(5)),
                                .id = static_cast<std::uint64_t>(row.number(6)),
                                .size = static_cast<std::uint64_t>(row.number(7)),
                                .modified_ns = row.number(8)};
  }
  operation.undoes = row.number(9);
  operation.outcome = static_cast<PastOperation::Outcome>(row.number(10));
  operation.undone = row.number(11) != 0;
  operation.reason = row.bytes(12);
  const std::int64_t part = row.number(13);
  operation.group = part < 0 ? -part : part;
  operation.leads = part < 0;
  return operation;
}

std::optional<PastPass> History::pass(std::int64_t id) {
  write_end();
  std::optional<PastPass> pass;
  database_.perform(OnePass, {id}, [&](const SharedDatabase::Row& row) {
    pass = {row.number(0), seconds(row.number(1)), row.number(2) != 0, {}};
  });
  if (!pass) return {};
  database_.perform(Operations, {id * per_pass, (id + 1) * per_pass},
                    [&](const SharedDatabase::Row& row) { pass->operations.push_back(operation_in(row)); });
  return pass;
}

std::vector<PastPass> History::passes(int count) {
  write_end();
  std::vector<std::int64_t> ids;
  database_.perform(LastPasses, {std::int64_t{count}},
                    [&](const SharedDatabase::Row& row) { ids.push_back(row.number(0)); });
  std::vector<PastPass> passes;
  for (const std::int64_t id : ids) {
    if (std::optional<PastPass> found = pass(id)) passes.push_back(std::move(*found));
  }
  return passes;
}

std::optional<PastOperation> History::operation(std::int64_t id) {
  write_end();
  std::optional<PastOperation> operation;
  database_.perform(Operations, {id, id + 1}, [&](const SharedDatabase::Row& row) { operation = operation_in(row); });
  return operation;
}

std::optional<PastOperation> History::last_to(const std::string& path) {
  return last(LastTo, path);
}

std::optional<PastOperation> History::last_from(const std::string& path) {
  return last(LastFrom, path);
}

std::optional<PastOperation> History::last(std::size_t statement, const std::string& path) {
  write_end();
  std::optional<PastOperation> operation;
  database_.perform(statement, {path}, [&](const SharedDatabase::Row& row) { operation = operation_in(row); });
  return operation;
}

std::vector<PastOperation> History::group_of(const PastOperation& operation) {
  if (operation.group == 0) return {operation};
  std::optional<PastPass> found = pass(operation.pass);
  if (!found) return {operation};
  std::erase_if(found->operations, [&](const PastOperation& each) {
    return each.id != operation.id && (each.group != operation.group || !each.is_undoable());
  });
  return std::move(found->operations);
}

std::int64_t History::last_undoable_pass(std::int64_t before) {
  write_end();
  std::int64_t id = 0;
  database_.perform(LastUndoable, {before * per_pass},
                    [&](const SharedDatabase::Row& row) { id = row.number(0) / per_pass; });
  return id;
}

std::vector<std::pair<PastOperation, std::string>> History::under_way() {
  write_end();
  std::vector<std::pair<PastOperation, std::string>> found;
  database_.perform(StillUnderWay, {},
                    [&](const SharedDatabase::Row& row) { found.emplace_back(operation_in(row), row.bytes(14)); });
  return found;
}

void History::forget_before(std::chrono::sys_seconds time) {
  write_end();
  const std::int64_t limit = time.time_since_epoch().count();
  database_.perform(ForgetOperations, {limit});
  database_.perform(ForgetPasses, {limit});
  database_.perform(ForgetGroups, {});
}

}  // namespace quorvel
