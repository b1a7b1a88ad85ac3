#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "store/shared_database.h"

namespace quorvel {

/// An answer of the listings service, kept.
struct StoredAnswer {
  std::string text;
  std::chrono::sys_seconds fetched;
};

/// What the exact way keeps of one run for the next: the service's answers, and which show the user has chosen for a
/// name. No call throws; what cannot be kept in the file is kept for this run alone.
class AnswerStore {
 public:
  /// `work_dir` ends in a separator; it is read at the first call.
  AnswerStore(Files& files, Log& log, const std::string& work_dir);

  /// `request` is the part of the address behind the service's own.
  std::optional<StoredAnswer> answer(const std::string& request);
  void keep_answer(const std::string& request, const StoredAnswer& answer);

  /// The id of the show that the user has chosen for a name; `name` in the form in which names are compared.
  std::optional<int> choice(const std::string& name);
  void keep_choice(const std::string& name, int show_id);
  void forget_choice(const std::string& name);

 private:
  SharedDatabase database_;
};

}  // namespace quorvel
