#include "support/known_names.h"

#include <simdjson.h>
#include <utf8proc.h>

#include <cstdlib>
#include <fstream>

#include "naming/reader/reading_text.h"
#include "text/characters.h"
#include "text/failure.h"
#include "text/numbers.h"

namespace quorvel::testing {
namespace {

using simdjson::dom::element;
using simdjson::dom::object;

std::optional<int> number(const object& line, std::string_view key) {
  const auto value = line[key].get_int64();
  return value.error() == simdjson::SUCCESS ? std::optional(static_cast<int>(value.value_unsafe())) : std::nullopt;
}

std::optional<std::string> text(const object& line, std::string_view key) {
  const auto value = line[key].get_string();
  return value.error() == simdjson::SUCCESS ? std::optional(std::string(value.value_unsafe())) : std::nullopt;
}

std::vector<int> list(const object& line, std::string_view key) {
  std::vector<int> numbers;
  const auto array = line[key].get_array();
  if (array.error() != simdjson::SUCCESS) return numbers;
  for (const element each : array.value_unsafe()) numbers.push_back(static_cast<int>(each.get_int64().value()));
  return numbers;
}

std::optional<Date> date(const object& line) {
  const std::optional<std::string> written = text(line, "date");
  if (!written) return {};
  if (written->size() != 10) throw Failure("\"" + *written + "\" is no date such as 2011-04-18");
  const std::string_view day = *written;
  return Date{to_number(day.substr(0, 4)), to_number(day.substr(5, 2)), to_number(day.substr(8))};
}

KnownName known_name(const object& line) {
  KnownName known;
  known.name = std::string(line["name"].get_string().value());
  known.show = text(line, "show");
  Reading& meaning = known.meaning;
  meaning.season = number(line, "season");
  meaning.episodes = list(line, "episodes");
  meaning.absolute = list(line, "absolute");
  meaning.date = date(line);
  meaning.year = number(line, "year");
  meaning.country = text(line, "country").value_or("");
  meaning.part = number(line, "part");
  meaning.special = line["special"].get_bool().error() == simdjson::SUCCESS;
  meaning.certain = line["certain"].get_bool().error() != simdjson::SUCCESS && meaning.has_numbers();
  if (const auto other = line["other"].get_object(); other.error() == simdjson::SUCCESS) {
    meaning.other = OtherNumbers{number(other.value_unsafe(), "season"), list(other.value_unsafe(), "episodes"),
                                 list(other.value_unsafe(), "absolute"), date(other.value_unsafe())};
  }
  meaning.resolution = text(line, "resolution").value_or("");
  meaning.source = text(line, "source").value_or("");
  meaning.group = text(line, "group").value_or("");
  meaning.episode_title = text(line, "episode_title").value_or("");
  return known;
}

/// Its letters and digits without accents, in lower case; years and countries at the end are cut off.
std::string compared(std::string_view show) {
  utf8proc_uint8_t* mapped = nullptr;
  const auto options =
      static_cast<utf8proc_option_t>(UTF8PROC_DECOMPOSE | UTF8PROC_COMPAT | UTF8PROC_STRIPMARK | UTF8PROC_CASEFOLD);
  const utf8proc_ssize_t size = utf8proc_map(reinterpret_cast<const utf8proc_uint8_t*>(show.data()),
                                             static_cast<utf8proc_ssize_t>(show.size()), &mapped, options);
  std::u32string words;
  if (size >= 0) words = decode({reinterpret_cast<const char*>(mapped), static_cast<std::size_t>(size)});
  std::free(mapped);
  for (char32_t& letter : words) {
    const auto category = utf8proc_category(static_cast<utf8proc_int32_t>(letter));
    const bool kept =
        category <= UTF8PROC_CATEGORY_LO || (category >= UTF8PROC_CATEGORY_ND && category <= UTF8PROC_CATEGORY_NO);
    if (!kept) letter = ' ';
  }
  const auto trim = [&words] {
    while (words.ends_with(U' ')) words.pop_back();
  };
  trim();
  for (int i = 0; i < 2; ++i) {
    const std::size_t blank = words.rfind(U' ');
    if (blank == std::u32string::npos) break;
    const std::u32string last = words.substr(blank + 1);
    const bool year = last.size() == 4 && (last.starts_with(U"19") || last.starts_with(U"20"));
    if (!year && last != U"us" && last != U"uk" && last != U"au" && last != U"nz" && last != U"ca") break;
    words.resize(blank);
    trim();
  }
  std::erase(words, U' ');
  return encode(words);
}

}  // namespace

std::vector<KnownName> known_names(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw Failure("The file " + path + " cannot be read");
  std::vector<KnownName> names;
  simdjson::dom::parser parser;
  int count = 0;
  for (std::string line; std::getline(file, line);) {
    ++count;
    try {
      names.push_back(known_name(parser.parse(line).get_object().value()));
    } catch (const simdjson::simdjson_error& error) {
      throw Failure("Line " + std::to_string(count) + " of " + path + ": " + error.what());
    }
  }
  return names;
}

bool same_numbers(const KnownName& known, const Reading& reading) {
  const Reading& meaning = known.meaning;
  if (meaning.date) return reading.date == meaning.date;
  if (!meaning.absolute.empty() && reading.absolute == meaning.absolute) return !reading.season || meaning.season;
  if (!meaning.episodes.empty()) return reading.season == meaning.season && reading.episodes == meaning.episodes;
  return !meaning.has_numbers() && !reading.has_numbers();
}

bool same_show(const KnownName& known, const Reading& reading) {
  return !known.show || compared(*known.show) == compared(reading.show);
}

std::string described(const std::string& show, const Reading& reading) {
  return "\"" + show + "\" " + number_text(reading) + (reading.certain ? " certain |" : " |") + reading.resolution +
         "|" + reading.source + "|" + reading.group + "|" + reading.episode_title;
}

}  // namespace quorvel::testing
