#include "naming/reader/dates.h"

#include <algorithm>
#include <chrono>

namespace quorvel::reader {
namespace {

constexpr int first_year_to_come = 2028;
constexpr int last_short_year = 30;  // two digits mean the years that files have been named in

int full_year(const Token& token) {
  return token.number <= last_short_year ? 2000 + token.number : token.number;
}

/// Whether another digit stands glued to the token, so that it is no number of its own.
bool is_free(const Name& name, std::size_t first, std::size_t last) {
  const Token& before = name.at(first);
  const bool has_year = is_year(before) || before.size() == 8;
  const bool behind_word = has_year && name.at(first - 1).is_word() && name.at(first - 1).size() > 2;
  const bool time = name.is_word(last, "t") && name.at(last + 1).is_number();
  return (!before.is_glued() || behind_word) && (name.at(last).is_end() || time || !name.at(last).is_glued());
}

std::optional<DateMark> numeric_date(const Name& name, std::size_t i) {
  const Token &a = name.at(i), &b = name.at(i + 1), &c = name.at(i + 2);
  if (!a.is_number() || !b.is_number() || !c.is_number() || !is_free(name, i, i + 3)) return {};
  if (b.gap != c.gap || a.technical || b.technical || c.technical) return {};
  std::optional<Date> best, other;
  const auto consider = [&](const Token& year, const Token& month, const Token& day) {
    const Date date{full_year(year), month.number, day.number};
    if (!is_date(date) || date == best) return;
    if (!best) {
      best = date;
    } else if (!other) {
      other = date;
    }
  };
  if (is_year(a)) {
    consider(a, b, c);
    if (!best) consider(a, c, b);
  } else if (is_year(c)) {
    // Days come first in most of the world, and always where dots stand between; slashes and dashes are used by both.
    consider(c, b, a);
    consider(c, a, b);
  } else if (a.size() == 2 && b.size() == 2 && c.size() == 2) {
    // Nobody names files of years to come.
    if (full_year(a) < first_year_to_come) consider(a, b, c);
    consider(c, b, a);
    consider(c, a, b);
    consider(a, b, c);
  }
  if (!best) return {};
  return DateMark{i, i + 3, *best, !other, other};
}

/// "20110418", and "18042011" where that is the only way.
std::optional<DateMark> compact_date(const Name& name, std::size_t i) {
  const Token& token = name.at(i);
  if (!token.is_plain_number() || !is_free(name, i, i + 1)) return {};
  if (name.at(i - 1).is_number() && name.at(i - 1).size() == 8) return {};
  const int number = token.number;
  const Token& time = name.at(i + 1);
  if (time.is_number() && time.size() == 6) return {};  // "20230415_101112": cameras name their films so
  if (token.size() == 8) {
    const Date year_first{number / 10000, number / 100 % 100, number % 100};
    const Date year_last{number % 10000, number / 10000 % 100, number / 1000000};
    if (is_date(year_first)) return DateMark{i, i + 1, year_first, true, {}};
    if (is_date(year_last)) return DateMark{i, i + 1, year_last, false, {}};
  } else if (token.size() == 6) {
    const Date date{2000 + number / 10000, number / 100 % 100, number % 100};
    if (date.year <= 2000 + last_short_year && is_date(date)) return DateMark{i, i + 1, date, false, {}};
  }
  return {};
}

/// "18 April 2011", "18th of Apr 2011", "April 18, 2011", "2011 Apr 18".
std::optional<DateMark> written_date(const Name& name, std::size_t i) {
  const Token& month = name.at(i);
  if (!month.is(MonthName)) return {};
  if (const Token& behind = name.at(i + 1); behind.is_number()) {
    const std::size_t next = i + (name.at(i + 2).is(OrdinalEnd) ? 3 : 2);
    const Date year_last{name.at(next).number, month.number, behind.number};
    const Date year_first{name.at(i - 1).number, month.number, behind.number};
    if (is_date(year_last)) return DateMark{i, next + 1, year_last, true, {}};
    if (is_date(year_first)) return DateMark{i - 1, next, year_first, true, {}};
  }
  std::size_t day = i;
  while (day > 0 && (day == i || name.at(day).is(OrdinalEnd | OfWord))) --day;
  const Token& year = name.at(i + 1);
  if (name.at(day).is_number() && year.is_number() && (is_year(year) || year.size() == 2)) {
    const Date date{full_year(year), month.number, name.at(day).number};
    if (is_date(date)) return DateMark{day, i + 2, date, is_year(year), {}};
  }
  return {};
}

}  // namespace

bool is_date(const Date& date) {
  const auto fits_a_byte = [](int number) { return static_cast<unsigned>(number < 100 ? number : 0); };
  const std::chrono::year_month_day day{std::chrono::year(date.year), std::chrono::month(fits_a_byte(date.month)),
                                        std::chrono::day(fits_a_byte(date.day))};
  return is_year(date.year) && day.ok();
}

std::optional<DateMark> find_date(const Name& name) {
  // One with a full year anywhere is better than one with two digits further in front.
  std::optional<DateMark> second_best;
  for (std::size_t i = name.named; i < name.count(); ++i) {
    for (const auto& found : {numeric_date(name, i), written_date(name, i), compact_date(name, i)}) {
      if (found && found->certain) return found;
      if (!second_best) second_best = found;
    }
  }
  return second_best;
}

}  // namespace quorvel::reader
