#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

#include "platform/files.h"
#include "platform/log.h"

namespace quorvel {

/// One SQLite file in the work folder that several running copies of the program share.
///
/// Where the file cannot be opened or written, or is a newer version's, which is told once, all is kept for this run
/// alone, with what can be read of the file at its beginning; so it is in a dry run, without a word. A damaged file is
/// put aside, under its name and ".bak", and begun anew.
class SharedDatabase {
 public:
  /// What is in it.
  struct Contents {
    const char* file_name;
    int version;         // of the tables
    const char* tables;  // makes them and sets the version
    std::span<const char* const> statements;
    const char* without_it;  // what the user is told where it cannot be used
    int page_size = 4096;    // bytes; a change costs a page at least
  };

  /// Nothing, a number, or bytes.
  using Value = std::variant<std::monostate, std::int64_t, std::string>;

  /// A row of an answer, as far as the next step of the statement.
  class Row {
   public:
    virtual ~Row() = default;
    virtual std::int64_t number(int column) const = 0;
    virtual std::string bytes(int column) const = 0;
    virtual bool has(int column) const = 0;
  };
  using OnRow = std::function<void(const Row&)>;

  /// `work_dir` ends in a separator; it is read at the first call.
  SharedDatabase(Files& files, Log& log, const std::string& work_dir, Contents contents);
  ~SharedDatabase();

  /// Carries out a statement with these values for its parameters. Returns the number of the row that was put in last.
  /// Never throws but what `on_row` throws.
  std::int64_t perform(std::size_t statement, const std::vector<Value>& values, const OnRow& on_row = {});

  /// Carries out both or neither, at the cost of one. Returns what the second does.
  struct Call {
    std::size_t statement;
    std::vector<Value> values;
  };
  std::int64_t perform_both(const Call& first, const Call& second);

 private:
  class Connection;

  /// Where all is kept, the best first. A copy is memory that begins with what the file holds, with or without what is
  /// only in the log beside it, as the latest is while other copies of the program run.
  enum class Place { File, CopyWithLog, Copy, Memory };

  std::int64_t attempt(const std::function<std::int64_t(Connection&)>& work);
  std::unique_ptr<Connection> open();
  bool put_aside();
  std::string path() const { return work_dir_ + contents_.file_name; }

  Files& files_;
  Log& log_;
  const std::string& work_dir_;
  const Contents contents_;
  Place place_;
  std::optional<FileStamp> opened_;  // what the file was before it was opened
  int put_aside_count_ = 0;
  std::unique_ptr<Connection> connection_;
};

}  // namespace quorvel
