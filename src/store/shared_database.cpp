#include "store/shared_database.h"

#include <sqlite3.h>

#include <filesystem>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/native.h"
#include "text/cut.h"
#include "text/failure.h"
#include "text/percent.h"

namespace quorvel {
namespace {

constexpr int busy_ms = 2000;  // far above what any of our transactions takes
constexpr int put_aside_limit = 3;
constexpr const char* log_suffix = "-wal";
constexpr const char* index_suffix = "-shm";

class Trouble : public Failure {
 public:
  Trouble(int code, const std::string& reason) : Failure(reason), code_(code & 0xFF) {}

  /// A plain error is a table or a column that is missing, for the statements are sound.
  bool is_damage() const { return code_ == SQLITE_CORRUPT || code_ == SQLITE_NOTADB || code_ == SQLITE_ERROR; }

 private:
  int code_;
};

using Handle = std::unique_ptr<sqlite3, int (*)(sqlite3*)>;
using Prepared = std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)>;

void check(int code, sqlite3* handle) {
  if (code != SQLITE_OK) throw Trouble(code, sqlite3_errmsg(handle));
}

Handle connect(const std::string& name, int flags) {
  sqlite3* opened = nullptr;
  const int code = sqlite3_open_v2(name.c_str(), &opened, flags | SQLITE_OPEN_NOMUTEX, nullptr);
  Handle handle(opened, sqlite3_close);
  check(code, opened);
  sqlite3_busy_timeout(opened, busy_ms);
  return handle;
}

/// Without links among the folders: SQLite can be told to refuse links, but then refuses them everywhere in a path.
std::string without_links(const std::string& folder) {
  std::error_code failed;
  const std::filesystem::path path = std::filesystem::canonical(std::u8string(folder.begin(), folder.end()), failed);
  if (failed) return folder;
  const std::u8string bytes = (path / "").u8string();
  return {bytes.begin(), bytes.end()};
}

std::string address_of(const std::string& path) {
  std::string address = percent_encoded(path);
  replace_all(address, percent_encoded({&native::separator, 1}), "/");
  return (path.starts_with('/') ? "file://" : "file:///") + address;
}

}  // namespace

class SharedDatabase::Connection {
 public:
  /// With all that is in the file at the address `original`, if given. Makes the tables where there are none. Throws
  /// Trouble, also when nothing can be written.
  Connection(const Contents& contents, const std::string& name, int flags, const std::string& original = {})
      : contents_(contents), handle_(connect(name, flags)) {
    if (!original.empty()) copy(original);
    prepare();
  }

  std::int64_t perform(std::size_t statement, const std::vector<Value>& values, const OnRow& on_row);
  std::int64_t perform_both(const Call& first, const Call& second);

 private:
  void copy(const std::string& original);
  void prepare();
  void run(const char* sql) { check(sqlite3_exec(handle_.get(), sql, nullptr, nullptr, nullptr), handle_.get()); }
  Prepared prepared(const char* sql) {
    sqlite3_stmt* statement = nullptr;
    check(sqlite3_prepare_v3(handle_.get(), sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr), handle_.get());
    return {statement, sqlite3_finalize};
  }

  const Contents& contents_;
  Handle handle_;
  std::vector<Prepared> prepared_;  // as its statements, and then what begins and ends a transaction
};

void SharedDatabase::Connection::copy(const std::string& original) {
  const Handle source = connect(original, SQLITE_OPEN_READONLY | SQLITE_OPEN_URI);
  sqlite3_backup* const copying = sqlite3_backup_init(handle_.get(), "main", source.get(), "main");
  check(copying == nullptr ? SQLITE_NOMEM : SQLITE_OK, handle_.get());
  sqlite3_backup_step(copying, -1);
  check(sqlite3_backup_finish(copying), handle_.get());
}

void SharedDatabase::Connection::prepare() {
  run(("PRAGMA page_size = " + std::to_string(contents_.page_size) + "; PRAGMA synchronous = NORMAL; BEGIN IMMEDIATE")
          .c_str());
  const Prepared asking = prepared("PRAGMA user_version");
  const int found = sqlite3_step(asking.get()) == SQLITE_ROW ? sqlite3_column_int(asking.get(), 0) : 0;
  check(sqlite3_reset(asking.get()), handle_.get());
  if (found > contents_.version) throw Trouble(SQLITE_MISMATCH, "it was made by a newer version of this program");
  if (found < contents_.version) run(contents_.tables);
  run("COMMIT");
  // Refused where another copy is just doing the same, and where the file system cannot; the file is as safe then.
  sqlite3_exec(handle_.get(), "PRAGMA journal_mode = WAL", nullptr, nullptr, nullptr);
  for (const char* const sql : contents_.statements) prepared_.push_back(prepared(sql));
  for (const char* const sql : {"BEGIN IMMEDIATE", "COMMIT"}) prepared_.push_back(prepared(sql));
}

namespace {

/// The row that a statement is at.
class StatementRow : public SharedDatabase::Row {
 public:
  explicit StatementRow(sqlite3_stmt* step) : step_(step) {}

  std::int64_t number(int column) const override { return sqlite3_column_int64(step_, column); }
  bool has(int column) const override { return sqlite3_column_type(step_, column) != SQLITE_NULL; }
  std::string bytes(int column) const override {
    const auto* const bytes = static_cast<const char*>(sqlite3_column_blob(step_, column));
    return bytes == nullptr ? std::string()
                            : std::string(bytes, static_cast<std::size_t>(sqlite3_column_bytes(step_, column)));
  }

 private:
  sqlite3_stmt* step_;
};

}  // namespace

std::int64_t SharedDatabase::Connection::perform(std::size_t statement, const std::vector<Value>& values,
                                                 const OnRow& on_row) {
  sqlite3_stmt* const step = prepared_[statement].get();
  int parameter = 0;
  for (const Value& value : values) {
    ++parameter;
    if (const auto* const number = std::get_if<std::int64_t>(&value)) {
      sqlite3_bind_int64(step, parameter, *number);
    } else if (const auto* const bytes = std::get_if<std::string>(&value)) {
      sqlite3_bind_blob64(step, parameter, bytes->data(), bytes->size(), SQLITE_STATIC);
    } else {
      sqlite3_bind_null(step, parameter);
    }
  }
  const StatementRow row(step);
  const auto reset = [](sqlite3_stmt* done) { sqlite3_reset(done); };
  const std::unique_ptr<sqlite3_stmt, decltype(reset)> ending(step, reset);  // also when on_row throws
  while (sqlite3_step(step) == SQLITE_ROW) {
    if (on_row) on_row(row);
  }
  check(sqlite3_reset(step), handle_.get());
  return sqlite3_last_insert_rowid(handle_.get());
}

std::int64_t SharedDatabase::Connection::perform_both(const Call& first, const Call& second) {
  const std::size_t begin = contents_.statements.size(), commit = begin + 1;
  perform(begin, {}, {});
  perform(first.statement, first.values, {});
  const std::int64_t row = perform(second.statement, second.values, {});
  perform(commit, {}, {});
  return row;  // any Trouble ends the connection, and with it the transaction
}

SharedDatabase::SharedDatabase(Files& files, Log& log, const std::string& work_dir, Contents contents)
    : files_(files),
      log_(log),
      work_dir_(work_dir),
      contents_(contents),
      place_(files.are_real() ? Place::File : Place::CopyWithLog) {}

SharedDatabase::~SharedDatabase() = default;

/// Whether the file can be opened again: put aside by this copy of the program, or already by another one.
bool SharedDatabase::put_aside() {
  if (++put_aside_count_ > put_aside_limit) return false;
  const std::unique_ptr<HeldFile> held = files_.hold(path());
  if (!held) return false;
  if (!opened_ || files_.stamp(path()) != opened_) return true;
  for (const char* const suffix : {"", log_suffix}) {
    const std::optional<std::string> bytes = suffix[0] == '\0' ? held->read() : files_.read(path() + suffix);
    if (bytes && !files_.replace(path() + ".bak" + suffix, *bytes)) return false;
  }
  // First what a new file must not be taken to belong to.
  if (!files_.remove(path() + log_suffix) || !files_.remove(path() + index_suffix)) return false;
  held->remove();
  log_.debug_log(path() + " was damaged. It is kept as " + path() + ".bak, and begun anew", LogLevel::Normal);
  return true;
}

/// Throws Trouble. What is only read keeps no trace: nothing is locked, made or cleared up beside it.
std::unique_ptr<SharedDatabase::Connection> SharedDatabase::open() {
  std::string original;
  switch (place_) {
    case Place::File:
      if (files_.is_link(path())) throw Trouble(SQLITE_CANTOPEN, "it is a link, and nothing is written through links");
      opened_ = files_.stamp(path());
      return std::make_unique<Connection>(contents_, without_links(work_dir_) + contents_.file_name,
                                          SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOFOLLOW);
    case Place::CopyWithLog:
      // Without a log, one would be made.
      if (!files_.exists(path() + log_suffix)) throw Trouble(SQLITE_CANTOPEN, "no log");
      original = address_of(absolute_path(path())) + "?readonly_shm=1";
      break;
    case Place::Copy:
      original = address_of(absolute_path(path())) + "?immutable=1";
      break;
    case Place::Memory:
      break;
  }
  return std::make_unique<Connection>(contents_, ":memory:", SQLITE_OPEN_READWRITE, original);
}

std::int64_t SharedDatabase::perform(std::size_t statement, const std::vector<Value>& values, const OnRow& on_row) {
  return attempt([&](Connection& connection) { return connection.perform(statement, values, on_row); });
}

std::int64_t SharedDatabase::perform_both(const Call& first, const Call& second) {
  return attempt([&](Connection& connection) { return connection.perform_both(first, second); });
}

std::int64_t SharedDatabase::attempt(const std::function<std::int64_t(Connection&)>& work) {
  while (true) {
    try {
      if (!connection_) connection_ = open();
      return work(*connection_);
    } catch (const Trouble& trouble) {
      connection_.reset();
      if (place_ == Place::Memory) return 0;
      if (place_ == Place::File) {
        if (trouble.is_damage() && put_aside()) continue;
        log_.debug_log(path() + " cannot be used: " + trouble.what() + ". " + contents_.without_it, LogLevel::Normal);
      }
      place_ = trouble.is_damage() ? Place::Memory : static_cast<Place>(static_cast<int>(place_) + 1);
    }
  }
}

}  // namespace quorvel
