#include "cli/read_names.h"

#include <iostream>

#include "naming/reader/reading.h"
#include "platform/console.h"
#include "text/json_text.h"

namespace quorvel::cli {
namespace {

constexpr std::size_t piece = 65536;

std::string date_text(const Date& date) {
  const auto two_digits = [](int number) { return (number < 10 ? "-0" : "-") + std::to_string(number); };
  return std::to_string(date.year) + two_digits(date.month) + two_digits(date.day);
}

std::string list_text(const std::vector<int>& numbers, const char* separator) {
  std::string text;
  for (const int number : numbers) text.append(text.empty() ? "" : separator).append(std::to_string(number));
  return text;
}

/// "season 2, episodes 5, 6".
std::string number_text(const Reading& reading) {
  std::string text;
  const auto add = [&text](const std::string& more) { text.append(text.empty() ? "" : ", ").append(more); };
  const auto add_list = [&add](const char* word, const std::vector<int>& numbers) {
    if (!numbers.empty()) add(word + std::string(numbers.size() == 1 ? " " : "s ") + list_text(numbers, ", "));
  };
  if (reading.season && !reading.episodes.empty()) add("season " + std::to_string(*reading.season));
  add_list("episode", reading.episodes);
  add_list("absolute number", reading.absolute);
  if (reading.date) add(date_text(*reading.date));
  return text;
}

std::string for_people(const std::string& name, const Reading& reading) {
  if (!reading.has_numbers()) return name + ": no episode\n";
  std::string show = reading.show.empty() ? "no show" : "\"" + reading.show + "\"";
  if (reading.year) show += " (" + std::to_string(*reading.year) + ")";
  if (!reading.country.empty()) show += " (" + reading.country + ")";
  return name + ": " + show + ", " + number_text(reading) + (reading.special ? ", special" : "") +
         (reading.certain ? "" : " (not certain)") + "\n";
}

std::string for_programs(const std::string& name, const Reading& reading) {
  std::string line;
  const auto key = [&line](const char* word) { line.append(line.empty() ? "{\"" : ",\"").append(word).append("\":"); };
  const auto text = [&](const char* word, const std::string& value) {
    key(word);
    value.empty() ? void(line += "null") : append_json(line, value);
  };
  const auto number = [&](const char* word, const std::optional<int>& value) {
    key(word);
    line += value ? std::to_string(*value) : "null";
  };
  const auto list = [&](const char* word, const std::vector<int>& value) {
    key(word);
    line += value.empty() ? "null" : "[" + list_text(value, ",") + "]";
  };
  const auto flag = [&](const char* word, bool value) {
    key(word);
    line += value ? "true" : "false";
  };
  key("name");
  append_json(line, name);
  text("show", reading.show);
  number("year", reading.year);
  text("country", reading.country);
  number("season", reading.season);
  list("episodes", reading.episodes);
  list("absolute", reading.absolute);
  text("date", reading.date ? date_text(*reading.date) : "");
  number("part", reading.part);
  flag("special", reading.special);
  flag("certain", reading.certain);
  return line + "}\n";
}

class Teller {
 public:
  explicit Teller(bool as_json) : as_json_(as_json) {}

  void tell(const std::string& name) {
    const Reading reading = read_name(name);
    lines_ += as_json_ ? for_programs(name, reading) : for_people(name, reading);
    if (lines_.size() >= piece) write();
  }

  void tell_input() {
    std::ios::sync_with_stdio(false);
    std::string line;
    for (bool first = true; std::getline(std::cin, line); first = false) {
      if (first && line.starts_with("\xEF\xBB\xBF")) line.erase(0, 3);  // some programs of Windows begin with this mark
      if (line.ends_with('\r')) line.pop_back();
      if (!line.empty()) tell(line);
      if (std::cin.rdbuf()->in_avail() <= 0) write();  // whoever sends names one by one sees each answer at once
    }
  }

  void write() {
    console::write_out(lines_);
    lines_.clear();
  }

 private:
  bool as_json_;
  std::string lines_;
};

}  // namespace

void read_names(const std::vector<std::string>& names, bool as_json) {
  Teller teller(as_json);
  for (const std::string& name : names) name == "-" ? teller.tell_input() : teller.tell(name);
  teller.write();
}

}  // namespace quorvel::cli
