#include "transport/retry_after.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>

#include "text/characters.h"
#include "text/cut.h"
#include "text/numbers.h"

namespace quorvel {
namespace {

constexpr auto months = std::to_array<std::string_view>(
    {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"});

int year_of(std::string_view text) {
  const int number = leading_number(text);
  return text.size() > 2 ? number : number + (number < 70 ? 2000 : 1900);
}

/// "Sun, 06 Nov 1994 08:49:37 GMT", "Sunday, 06-Nov-94 08:49:37 GMT", "Sun Nov  6 08:49:37 1994": the day comes before
/// the year in all of them, and nothing else is a number, a month or holds a colon.
std::optional<std::chrono::sys_seconds> http_date(std::string text) {
  std::replace_if(
      text.begin(), text.end(), [](char character) { return character == ',' || character == '-'; }, ' ');
  unsigned day = 0, month = 0;
  int year = -1;
  std::optional<std::chrono::seconds> time;
  for (const std::string_view word : split(text, " ")) {
    const auto* const named = std::find(months.begin(), months.end(), word);
    if (named != months.end()) {
      month = static_cast<unsigned>(named - months.begin()) + 1;
    } else if (word.empty() || !is_digit(word.front())) {
      continue;
    } else if (const std::vector<std::string_view> parts = split(word, ":"); parts.size() == 3) {
      time = std::chrono::hours(leading_number(parts[0])) + std::chrono::minutes(leading_number(parts[1])) +
             std::chrono::seconds(leading_number(parts[2]));
    } else if (day == 0) {
      day = static_cast<unsigned>(leading_number(word));
    } else {
      year = year_of(word);
    }
  }
  const auto date = std::chrono::year(year) / std::chrono::month(month) / std::chrono::day(day);
  if (!date.ok() || year < 0 || !time) return {};
  return std::chrono::sys_days(date) + *time;
}

}  // namespace

std::chrono::seconds time_to_wait(std::string_view retry_after, std::string_view date, std::chrono::sys_seconds now) {
  if (!retry_after.empty() && is_digit(retry_after.front())) return std::chrono::seconds(leading_number(retry_after));
  const auto until = http_date(std::string(retry_after));
  if (!until) return {};
  return std::max(std::chrono::seconds(0), *until - http_date(std::string(date)).value_or(now));
}

}  // namespace quorvel
