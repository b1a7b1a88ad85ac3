#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

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
/// No call throws. Where the file cannot be opened or written, which is told once, all is kept for this run alone. A
/// damaged file is put aside, under its name and ".bak", and begun anew.
class AnswerStore {
 public:
  /// `work_dir` ends in a separator; it is read at the first call.
  AnswerStore(Log& log, const std::string& work_dir);
  ~AnswerStore();

  /// `request` is the part of the address behind the service's own.
  std::optional<StoredAnswer> answer(const std::string& request);
  void keep_answer(const std::string& request, const StoredAnswer& answer);

  /// The id of the show that the user has chosen for a name; `name` in the form in which names are compared.
  std::optional<int> choice(const std::string& name);
  void keep_choice(const std::string& name, int show_id);
  void forget_choice(const std::string& name);

 private:
  struct Database;

  Log& log_;
  const std::string& work_dir_;
  std::unique_ptr<Database> database_;
};

}  // namespace quorvel
