#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "platform/files.h"
#include "platform/log.h"

namespace quorvel {

/// An answer of the listings service, kept.
struct StoredAnswer {
  std::string text;
  std::chrono::sys_seconds fetched;
};

/// What the exact way keeps of one run for the next, in one file in the work folder that several running copies share:
/// the service's answers, and which show the user has chosen for a name.
///
/// No call throws. Where the file cannot be opened or written, or is a newer version's, which is told once, all is kept
/// for this run alone, with what can be read of the file at its beginning; so it is in a dry run, without a word. A
/// damaged file is put aside, under its name and ".bak", and begun anew.
class AnswerStore {
 public:
  /// `work_dir` ends in a separator; it is read at the first call.
  AnswerStore(Files& files, Log& log, const std::string& work_dir);
  ~AnswerStore();

  /// `request` is the part of the address behind the service's own.
  std::optional<StoredAnswer> answer(const std::string& request);
  void keep_answer(const std::string& request, const StoredAnswer& answer);

  /// The id of the show that the user has chosen for a name; `name` in the form in which names are compared.
  std::optional<int> choice(const std::string& name);
  void keep_choice(const std::string& name, int show_id);
  void forget_choice(const std::string& name);

 private:
  class Database;
  struct Row {
    std::int64_t number = 0;
    std::string text;
  };

  /// Where all is kept, the best first. A copy is memory that begins with what the file holds, with or without what is
  /// only in the log beside it, as the latest is while other copies of the program run.
  enum class Place { File, CopyWithLog, Copy, Memory };

  std::optional<Row> perform(std::size_t statement, const std::string& key, std::int64_t number = 0,
                             const std::string& text = {});
  std::unique_ptr<Database> open();
  bool put_aside();
  std::string path() const;

  Files& files_;
  Log& log_;
  const std::string& work_dir_;
  Place place_;
  std::optional<FileStamp> opened_;  // what the file was before it was opened
  int put_aside_count_ = 0;
  std::unique_ptr<Database> database_;
};

}  // namespace quorvel
