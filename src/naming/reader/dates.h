#pragma once

#include <optional>

#include "naming/reader/reading.h"
#include "naming/reader/tokens.h"

namespace quorvel::reader {

struct DateMark {
  std::size_t first = 0, last = 0;
  Date date;
  bool certain = false;  // no other order of its numbers is a date
  std::optional<Date> other;
};

/// Of television; what is yet to come included.
constexpr bool is_year(int number) {
  return number >= 1920 && number <= 2059;
}

/// Whether it is in the calendar, of the years of television.
bool is_date(const Date& date);

/// The first date in a name, in any order that is one.
std::optional<DateMark> find_date(const Name& name);

/// A number that people write for a year of television.
inline bool is_year(const Token& token) {
  return token.is_number() && token.size() == 4 && is_year(token.number);
}

}  // namespace quorvel::reader
