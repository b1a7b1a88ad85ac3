#include "catalogue/answer_store.h"

#include <array>

namespace quorvel {
namespace {

enum Statement : std::size_t { FindAnswer, KeepAnswer, FindChoice, KeepChoice, ForgetChoice };
constexpr std::array statements = {
    "SELECT fetched, text FROM answers WHERE request = CAST(?1 AS TEXT)",
    "REPLACE INTO answers (request, fetched, text) VALUES (CAST(?1 AS TEXT), ?2, ?3)",
    "SELECT show_id FROM choices WHERE name = CAST(?1 AS TEXT)",
    "REPLACE INTO choices (name, show_id) VALUES (CAST(?1 AS TEXT), ?2)",
    "DELETE FROM choices WHERE name = CAST(?1 AS TEXT)",
};
constexpr SharedDatabase::Contents contents = {
    "quorvel.db", 1,
    "CREATE TABLE answers (request TEXT PRIMARY KEY, fetched INTEGER NOT NULL, text BLOB NOT NULL);"
    "CREATE TABLE choices (name TEXT PRIMARY KEY, show_id INTEGER NOT NULL) WITHOUT ROWID;"
    "PRAGMA user_version = 1;",
    statements, "What is looked up and what is chosen is kept for this run alone"};

}  // namespace

AnswerStore::AnswerStore(Files& files, Log& log, const std::string& work_dir)
    : database_(files, log, work_dir, contents) {}

std::optional<StoredAnswer> AnswerStore::answer(const std::string& request) {
  std::optional<StoredAnswer> answer;
  database_.perform(FindAnswer, {request}, [&](const SharedDatabase::Row& row) {
    answer = {row.bytes(1), std::chrono::sys_seconds(std::chrono::seconds(row.number(0)))};
  });
  return answer;
}

void AnswerStore::keep_answer(const std::string& request, const StoredAnswer& answer) {
  database_.perform(KeepAnswer, {request, std::int64_t{answer.fetched.time_since_epoch().count()}, answer.text});
}

std::optional<int> AnswerStore::choice(const std::string& name) {
  std::optional<int> show;
  database_.perform(FindChoice, {name},
                    [&](const SharedDatabase::Row& row) { show = static_cast<int>(row.number(0)); });
  return show;
}

void AnswerStore::keep_choice(const std::string& name, int show_id) {
  database_.perform(KeepChoice, {name, std::int64_t{show_id}});
}

void AnswerStore::forget_choice(const std::string& name) {
  database_.perform(ForgetChoice, {name});
}

}  // namespace quorvel
