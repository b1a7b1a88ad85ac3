#include "cli/read_names.h"

#include <iostream>

#include "naming/reader/reading_text.h"
#include "platform/console.h"
#include "text/json_text.h"

namespace quorvel::cli {
namespace {

constexpr std::size_t piece = 65536;

std::string for_people(const std::string& name, const Reading& reading) {
  if (!reading.names_episode()) return name + ": no episode\n";
  return name + ": " + show_text(reading) + ", " + number_text(reading) +
         (reading.special && reading.has_numbers() ? ", special" : "") + (reading.certain ? "" : " (not certain)") +
         "\n";
}

std::string for_programs(const std::string& name, const Reading& reading) {
  return JsonObject()
             .text("name", name)
             .text("show", reading.show)
             .number("year", reading.year)
             .text("country", reading.country)
             .number("season", reading.season)
             .numbers("episodes", reading.episodes)
             .numbers("absolute", reading.absolute)
             .text("date", reading.date ? date_text(*reading.date) : "")
             .number("part", reading.part)
             .flag("special", reading.special)
             .flag("certain", reading.certain)
             .line() +
         "\n";
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
