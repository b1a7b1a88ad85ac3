#include "naming/reader/reading_text.h"

namespace quorvel {

std::string date_text(const Date& date) {
  const auto two_digits = [](int number) { return (number < 10 ? "-0" : "-") + std::to_string(number); };
  return std::to_string(date.year) + two_digits(date.month) + two_digits(date.day);
}

std::string number_text(const Reading& reading) {
  std::string text;
  const auto add = [&text](const std::string& more) { text.append(text.empty() ? "" : ", ").append(more); };
  const auto add_list = [&add](const char* word, const std::vector<int>& numbers) {
    for (std::size_t i = 0; i < numbers.size(); ++i) {
      add((i > 0 ? "" : word + std::string(numbers.size() == 1 ? " " : "s ")) + std::to_string(numbers[i]));
    }
  };
  if (reading.season && !reading.episodes.empty()) add("season " + std::to_string(*reading.season));
  add_list("episode", reading.episodes);
  add_list("absolute number", reading.absolute);
  if (reading.date) add(date_text(*reading.date));
  if (text.empty() && reading.special) add("the special \"" + reading.episode_title + "\"");
  return text;
}

std::string show_text(const Reading& reading) {
  std::string text = reading.show.empty() ? "no show" : "\"" + reading.show + "\"";
  if (reading.year) text += " (" + std::to_string(*reading.year) + ")";
  if (!reading.country.empty()) text += " (" + reading.country + ")";
  return text;
}

}  // namespace quorvel
