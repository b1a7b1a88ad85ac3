#include "catalogue/answer_store.h"

#include <sqlite3.h>

#include <array>
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

constexpr int version = 1;  // of the tables
constexpr const char* tables =
    "CREATE TABLE answers (request TEXT PRIMARY KEY, fetched INTEGER NOT NULL, text BLOB NOT NULL);"
    "CREATE TABLE choices (name TEXT PRIMARY KEY, show_id INTEGER NOT NULL) WITHOUT ROWID;"
    "PRAGMA user_version = 1;";

// Each takes a key, a number and a text, as far as it has parameters, and gives a number and a text.
enum Statement : std::size_t { FindAnswer, KeepAnswer, FindChoice, KeepChoice, ForgetChoice };
constexpr std::array statements = {
    "SELECT fetched, text FROM answers WHERE request = ?1",
    "REPLACE INTO answers (request, fetched, text) VALUES (?1, ?2, ?3)",
    "SELECT show_id, NULL FROM choices WHERE name = ?1",
    "REPLACE INTO choices (name, show_id) VALUES (?1, ?2)",
    "DELETE FROM choices WHERE name = ?1",
};

constexpr int busy_ms = 2000;  // far above what any of our transactions takes
constexpr int put_aside_limit = 3;
constexpr const char* file_name = "quorvel.db";
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

class AnswerStore::Database {
 public:
  /// With all that is in the file at the address `original`, if given. Makes the tables where there are none. Throws
  /// Trouble, also when nothing can be written.
  Database(const std::string& name, int flags, const std::string& original = {}) : handle_(connect(name, flags)) {
    if (!original.empty()) copy(original);
    prepare();
  }

  std::optional<Row> perform(std::size_t statement, const std::string& key, std::int64_t number,
                             const std::string& text);

 private:
  void copy(const std::string& original);
  void prepare();
  void run(const char* sql) { check(sqlite3_exec(handle_.get(), sql, nullptr, nullptr, nullptr), handle_.get()); }
  Prepared prepared(const char* sql) {
    sqlite3_stmt* statement = nullptr;
    check(sqlite3_prepare_v3(handle_.get(), sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr), handle_.get());
    return {statement, sqlite3_finalize};
  }

  Handle handle_;
  std::vector<Prepared> prepared_;  // as in `statements`
};

void AnswerStore::Database::copy(const std::string& original) {
  const Handle source = connect(original, SQLITE_OPEN_READONLY | SQLITE_OPEN_URI);
  sqlite3_backup* const copying = sqlite3_backup_init(handle_.get(), "main", source.get(), "main");
  check(copying == nullptr ? SQLITE_NOMEM : SQLITE_OK, handle_.get());
  sqlite3_backup_step(copying, -1);
  check(sqlite3_backup_finish(copying), handle_.get());
}

void AnswerStore::Database::prepare() {
  run("PRAGMA synchronous = NORMAL; BEGIN IMMEDIATE");
  const Prepared asking = prepared("PRAGMA user_version");
  const int found = sqlite3_step(asking.get()) == SQLITE_ROW ? sqlite3_column_int(asking.get(), 0) : 0;
  check(sqlite3_reset(asking.get()), handle_.get());
  if (found > version) throw Trouble(SQLITE_MISMATCH, "it was made by a newer version of this program");
  if (found < version) run(tables);
  run("COMMIT");
  // Refused where another copy is just doing the same, and where the file system cannot; the file is as safe then.
  sqlite3_exec(handle_.get(), "PRAGMA journal_mode = WAL", nullptr, nullptr, nullptr);
  for (const char* const sql : statements) prepared_.push_back(prepared(sql));
}

std::optional<AnswerStore::Row> AnswerStore::Database::perform(std::size_t statement, const std::string& key,
                                                               std::int64_t number, const std::string& text) {
  sqlite3_stmt* const step = prepared_[statement].get();
  // A statement refuses what it has no parameter for, which does no harm.
  sqlite3_bind_text64(step, 1, key.data(), key.size(), SQLITE_STATIC, SQLITE_UTF8);
  sqlite3_bind_int64(step, 2, number);
  sqlite3_bind_blob64(step, 3, text.data(), text.size(), SQLITE_STATIC);
  std::optional<Row> row;
  if (sqlite3_step(step) == SQLITE_ROW) {
    const auto* const bytes = static_cast<const char*>(sqlite3_column_blob(step, 1));
    row = {sqlite3_column_int64(step, 0), std::string(bytes, static_cast<std::size_t>(sqlite3_column_bytes(step, 1)))};
  }
  check(sqlite3_reset(step), handle_.get());
  return row;
}

AnswerStore::AnswerStore(Files& files, Log& log, const std::string& work_dir)
    : files_(files), log_(log), work_dir_(work_dir), place_(files.are_real() ? Place::File : Place::CopyWithLog) {}

AnswerStore::~AnswerStore() = default;

std::string AnswerStore::path() const {
  return work_dir_ + file_name;
}

/// Whether the file can be opened again: put aside by this copy of the program, or already by another one.
bool AnswerStore::put_aside() {
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
std::unique_ptr<AnswerStore::Database> AnswerStore::open() {
  std::string original;
  switch (place_) {
    case Place::File:
      if (files_.is_link(path())) throw Trouble(SQLITE_CANTOPEN, "it is a link, and nothing is written through links");
      opened_ = files_.stamp(path());
      return std::make_unique<Database>(without_links(work_dir_) + file_name,
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
  return std::make_unique<Database>(":memory:", SQLITE_OPEN_READWRITE, original);
}

std::optional<AnswerStore::Row> AnswerStore::perform(std::size_t statement, const std::string& key, std::int64_t number,
                                                     const std::string& text) {
  while (true) {
    try {
      if (!database_) database_ = open();
      return database_->perform(statement, key, number, text);
    } catch (const Trouble& trouble) {
      database_.reset();
      if (place_ == Place::Memory) return {};
      if (place_ == Place::File) {
        if (trouble.is_damage() && put_aside()) continue;
        log_.debug_log(path() + " cannot be used: " + trouble.what() +
                           ". What is looked up and what is chosen is kept for this run alone",
                       LogLevel::Normal);
      }
      place_ = trouble.is_damage() ? Place::Memory : static_cast<Place>(static_cast<int>(place_) + 1);
    }
  }
}

std::optional<StoredAnswer> AnswerStore::answer(const std::string& request) {
  std::optional<Row> row = perform(FindAnswer, request);
  if (!row) return {};
  return StoredAnswer{std::move(row->text), std::chrono::sys_seconds(std::chrono::seconds(row->number))};
}

void AnswerStore::keep_answer(const std::string& request, const StoredAnswer& answer) {
  perform(KeepAnswer, request, answer.fetched.time_since_epoch().count(), answer.text);
}

std::optional<int> AnswerStore::choice(const std::string& name) {
  const std::optional<Row> row = perform(FindChoice, name);
  return row ? std::optional(static_cast<int>(row->number)) : std::nullopt;
}

void AnswerStore::keep_choice(const std::string& name, int show_id) {
  perform(KeepChoice, name, show_id);
}

void AnswerStore::forget_choice(const std::string& name) {
  perform(ForgetChoice, name);
}

}  // namespace quorvel
