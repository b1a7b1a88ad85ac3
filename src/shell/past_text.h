#pragma once

#include <string>

#include "fileops/past_undo.h"
#include "history/history.h"
#include "platform/clock.h"

/// What the history says, in words.
namespace quorvel {

struct DeedWords {
  const char *infinitive, *participle;  // "move", "moved"
  const char *noun, *nouns;             // "move", "moves"
};
DeedWords deed_words(Deed deed);

/// "done", "undone", "failed", or "under way".
const char* outcome_word(const PastOperation& operation);

/// "2026-11-22 14:05", in the user's time zone.
std::string time_text(const Clock& clock, std::chrono::sys_seconds time);

/// "3 renamed, 1 moved, 1 failed, all undone".
std::string counts_text(const PastPass& pass);

/// "14:05" of today, else with the date.
std::string short_time_text(const Clock& clock, std::chrono::sys_seconds time);

/// "Undo 12 renamings and 1 move of 14:05?", for what can be undone of the pass.
std::string undo_question(const PastPass& pass, const Clock& clock);

/// "Pass 12, 2026-11-22 14:05: 3 renamed".
std::string summary(const PastPass& pass, const Clock& clock);

/// "renamed /a/x.mkv -> /a/y.mkv", and what became of it if that is not all.
std::string line_of(const PastOperation& operation);

/// "/a/y.mkv -> /a/x.mkv".
std::string undone_line(const PastUndo::Outcome& outcome);

}  // namespace quorvel
