#include "naming/reader/show.h"

#include <algorithm>
#include <utility>

#include "naming/reader/bare_numbers.h"
#include "naming/reader/dates.h"
#include "naming/reader/marks.h"
#include "text/characters.h"

namespace quorvel::reader {
namespace {

/// Tokens, the last one excluded.
struct Span {
  std::size_t first = 0, last = 0;
  bool empty() const { return last <= first; }
};

const Group* group_of(const Name& name, std::size_t i) {
  const int id = name.at(i).group;
  return id < 0 ? nullptr : &name.groups[static_cast<std::size_t>(id)];
}

bool is_upper(std::string_view word) {
  return std::ranges::all_of(word, is_capital);
}

bool is_all_numbers(const Name& name, Span span) {
  for (std::size_t i = span.first; i < span.last; ++i) {
    if (!name.at(i).is_number()) return false;
  }
  return true;
}

/// The words as people write them: what stands in for blanks becomes blanks, and brackets that say nothing of the show
/// are left out.
std::string words_of(const Name& name, Span span, bool keep_brackets) {
  std::string text, between;
  if (span.empty()) return text;
  const std::string_view raw =
      name.text.substr(name.at(span.first).begin, name.at(span.last - 1).end - name.at(span.first).begin);
  const bool spaces = raw.find(' ') != std::string_view::npos;
  const bool dashes_are_blanks =
      name.text.find_first_of(" ._") == std::string_view::npos && !is_all_numbers(name, span);
  std::size_t end = 0;  // of what has been read
  for (std::size_t i = span.first; i < span.last; ++i) {
    const Token& token = name.at(i);
    const Group* const group = group_of(name, i);
    if (group != nullptr && (group->technical || (group->square && !keep_brackets)) && group->first > span.first) {
      between += name.text.substr(end, group->begin - end);
      end = group->end;
      i = group->last - 1;
      continue;
    }
    if (!text.empty()) {
      between += name.text.substr(end, token.begin - end);
      if (between.empty() && !token.is_glued()) between = ' ';
      const bool one_dot = between == ".";
      const bool acronym = one_dot && name.at(i - 1).size() == 1 && token.size() == 1;
      const bool figures = one_dot && is_all_numbers(name, span);
      for (char& byte : between) {
        const bool stands_for_blank =
            byte == '_' || (byte == '.' && !acronym && !figures && !spaces) || (byte == '-' && dashes_are_blanks);
        if (stands_for_blank) byte = ' ';
      }
      text += std::exchange(between, {});
    }
    if (text.empty() && group != nullptr && !group->square && group->first == i && group->last < span.last) text += '(';
    text += name.written(token);
    end = token.end;
  }
  // "What If...?"
  const std::string_view rest = name.text.substr(name.at(span.last - 1).end);
  const std::string_view marks = rest.substr(0, rest.find_first_not_of(".!?'"));
  text += marks.substr(0, marks.find_last_of("!?") + 1);  // none of them where there is neither
  return text;
}

/// Blanks joined, and an open bracket closed.
std::string tidy(const std::string& text) {
  std::string result;
  for (const char byte : text) {
    if (byte == ' ' && (result.empty() || result.back() == ' ')) continue;
    result += byte;
  }
  const std::size_t open = result.rfind('(');
  if (open != std::string::npos && result.find(')', open) == std::string::npos) result += ')';
  return result;
}

/// Takes year and country off the end of the show's tokens.
void take_year_and_country(const Name& name, Span& span, Reading& reading) {
  while (span.last > span.first + 1) {
    const Token& token = name.at(span.last - 1);
    const Group* const group = group_of(name, span.last - 1);
    const bool alone = group != nullptr && group->last == span.last && group->first > span.first;
    if (alone && is_year(name.at(group->first)) && group->last - group->first <= 2) {
      reading.year = name.at(group->first).number;
      span.last = group->first;
    } else if (group == nullptr && is_year(token) && !token.is_glued() && !reading.year) {
      reading.year = token.number;
      --span.last;
    } else if (token.is_word() && token.is(Country) && is_upper(name.written(token)) &&
               (alone ? group->first + 1 == group->last : group == nullptr && token.follows(Blank | Dot)) &&
               reading.country.empty()) {
      reading.country = name.written(token);
      --span.last;
    } else {
      return;
    }
  }
}

/// "(Group) Show", but not "(500) Nights", nor "(Un)Clear".
bool is_round_group_in_front(const Name& name, const Group& group) {
  if (group.begin != 0 || !name.at(group.first).is_word()) return false;
  return name.at(group.last).follows(Blank | Dot) || is_upper(name.written(name.at(group.first)));
}

/// Where the show's tokens start: behind groups and sites in front.
std::size_t behind_front(const Name& name, std::size_t last) {
  std::size_t first = 0;
  // Somebody passed the group's file on: "Somebody.[Group] Show".
  if (name.count() > 1 && (!name.at(1).follows(Blank) || name.at(0).is_number()) && name.at(0).group < 0) {
    const Group* const behind = group_of(name, 1);
    if (behind != nullptr && behind->square && !behind->technical && behind->last < last) first = 1;
  }
  while (first < last) {
    const Group* group = group_of(name, first);
    while (group != nullptr && group->outer >= 0) group = &name.groups[static_cast<std::size_t>(group->outer)];
    if (group != nullptr && group->first == first && group->last <= last &&
        (group->square || group->technical || is_round_group_in_front(name, *group))) {
      first = group->last;
    } else if (name.at(first).technical && name.at(first).is(Site | Resolution)) {
      ++first;
    } else {
      break;
    }
  }
  return first;
}

/// With the letters that only some languages have: "Café", "Łódź".
bool is_latin_word(std::string_view word) {
  return is_ascii(word) || std::ranges::all_of(decode(word), [](char32_t character) {
           return character < 0x370 || (character >= 0x1E00 && character < 0x1F00) || character == U'\u2019';
         });
}

bool is_latin(const Name& name, Span span) {
  bool has_letters = false;
  for (std::size_t i = span.first; i < span.last; ++i) {
    if (!is_latin_word(name.written(name.at(i)))) return false;
    has_letters = has_letters || (name.at(i).is_word() && name.at(i).size() > 1);
  }
  return has_letters;
}

/// "Маяк / Lighthouse S01E02": one show in two languages. The service knows the Latin one.
Span alternative(const Name& name, Span span, std::size_t numbers_first) {
  if (name.text.find(" / ") == std::string_view::npos) return span;
  Span part = span;
  for (std::size_t i = span.first; i <= name.count(); ++i) {
    const Token& token = name.at(i);
    const bool slash =
        i > span.first &&
        name.text.substr(name.at(i - 1).end, token.begin - name.at(i - 1).end).find(" / ") != std::string_view::npos;
    const bool ends = token.is_end() || slash || token.technical || i == numbers_first || season_at(name, i);
    if (ends && part.last > i) part.last = i;
    if (!slash) continue;
    if (!part.empty() && is_latin(name, part)) return part;
    part = {i, name.count()};
  }
  return !part.empty() && is_latin(name, part) ? part : span;
}

/// "[Group] 纸月 Paper Moon", "纸月.Paper.Moon": of the names in two scripts, the Latin one.
Span latin_part(const Name& name, Span span) {
  for (std::size_t i = span.first + 1; i < span.last; ++i) {
    if (!starts_with_group(name) && name.at(i).gap != Dot) continue;
    if (!is_latin_word(name.written(name.at(i - 1))) && is_latin(name, {i, span.last})) return {i, span.last};
  }
  return span;
}

/// "[Group][Show][12]": with nothing outside brackets, the show stands in the last but the first of them.
Span in_brackets(const Name& name, std::size_t last) {
  Span found;
  for (const Group& group : name.groups) {
    if (group.last > last || group.first >= last) break;
    if (group.outer >= 0 || group.first == group.last || group.technical) continue;
    const Span inside{group.first, group.last};
    if (found.first == 0 || (!is_latin(name, found) && is_latin(name, inside))) found = inside;
  }
  return found;
}

Span show_span(const Name& name, const Numbers& numbers, Reading& reading) {
  std::size_t last = numbers.found() ? numbers.first : name.count();
  Span span{behind_front(name, last), last};
  // What the numbers' brackets open with is not the show's.
  const Group* const own = numbers.found() ? group_of(name, numbers.first) : nullptr;
  if (own != nullptr && own->first < last) {
    span.last = std::max(own->first, span.first);
    if (is_year(name.at(own->first))) reading.year = name.at(own->first).number;
    if (span.empty()) span = {own->first, last};  // "[Group][Show Season 2][05]"
  }
  for (std::size_t i = span.first; i < span.last; ++i) {
    if (const std::optional<Mark> season = season_at(name, i); season && !season->weak && season->last <= span.last) {
      if (i > span.first) {
        span.last = i;
      } else if (season->last < span.last) {
        span.first = season->last;
      }
      break;
    }
  }
  for (std::size_t i = span.first + 1; i < span.last; ++i) {
    const Token& token = name.at(i);
    if (token.technical && token.is(technical_kinds) && group_of(name, i) == nullptr) {
      span.last = i;
      break;
    }
  }
  // "03-Show.5x03", "01 - Show - 5x03", "01. Show 5x03": the episode's number once more, or a place in a list
  const Token& front = name.at(span.first);
  if (!numbers.episodes.empty() && front.is_number() && span.last > span.first + 1) {
    const Token& second = name.at(span.first + 1);
    const bool padded = name.is_padded(front);
    const bool apart = second.follows_spaced_dash() || second.gap == (Dot | Blank);
    if ((front.number == numbers.episodes.front() && second.follows(Dash)) || (padded && apart)) ++span.first;
  }
  // "(2004) Show"
  const Group* const dated = group_of(name, span.first);
  if (dated != nullptr && dated->last == span.first + 1 && is_year(name.at(span.first)) && span.last > dated->last) {
    reading.year = name.at(span.first).number;
    ++span.first;
  }
  // "01. S02E05": a place in a list.
  const bool listed = span.last == span.first + 1 && name.at(span.first).is_number() && name.at(span.last).follows(Dot);
  if (listed && name.at(span.last).follows(Blank)) span.last = span.first;
  // "Show 2011-04-18 S05E09"
  if (numbers.found()) {
    const std::optional<DateMark> date = find_date(name);
    if (date && date->certain && date->first > span.first && date->last <= span.last) {
      span.last = date->first;
      reading.date = date->date;
    }
  }
  for (const Group* group = nullptr; !span.empty() && (group = group_of(name, span.last - 1)) != nullptr &&
                                     group->technical && group->last == span.last;) {
    span.last = group->first;
  }
  // "Show 313-315 S16E03-05": the numbers count over all seasons.
  if (numbers.episodes.size() > 1 && span.last > span.first + 2) {
    const Token &low = name.at(span.last - 2), &high = name.at(span.last - 1);
    if (low.is_number() && high.is_number() && high.gap == Dash &&
        high.number - low.number + 1 == static_cast<int>(numbers.episodes.size())) {
      for (int number = low.number; number <= high.number; ++number) reading.absolute.push_back(number);
      span.last -= 2;
    }
  }
  while (numbers.date && span.last > span.first + 1 && name.at(span.last - 1).is(DateWord) &&
         span.last == numbers.first)
    --span.last;  // "Show Fri 22 Apr 2011"
  // "Show - Episode 312 [S05E06]", "Show - Vol. 3 - Episode 12", "Show No.12"
  if (span.last > span.first + 2 && name.at(span.last - 1).is_number() && span.last == numbers.first) {
    const Token& word = name.at(span.last - 2);
    const bool letter = word.is(EpisodeLetter) && name.at(span.last - 1).is_glued();
    const bool counts = (letter || (word.is(EpisodeWord) && word.size() > 1)) && numbers.season;
    if (counts) reading.absolute = {name.at(span.last - 1).number};
    if (counts || (word.is(VolumeWord) && word.follows(Dash))) span.last -= 2;
  }
  if (span.last > span.first + 1 && span.last == numbers.first && name.is_word(span.last - 1, "no") &&
      name.at(span.last - 1).gap == Blank && name.at(span.last).gap == Dot)
    --span.last;
  // "Show - 112 - S05E06", "[Group] Show 214 10x14": the number counts over all seasons. Not in "[Group] Room 104
  // 1x03".
  if (span.last > span.first + 1 && numbers.season) {
    const Token& number = name.at(span.last - 1);
    const bool dashed = number.follows_spaced_dash() && name.at(span.last).follows(Dash | Open);
    const bool counted = number.gap == Blank && starts_with_group(name) && numbers.season > 1 &&
                         !numbers.episodes.empty() && number.number > numbers.episodes.front() &&
                         span.last == numbers.first && reading.absolute.empty();
    if (number.is_number() && !is_year(number) && (dashed || counted)) {
      reading.absolute = {number.number};
      --span.last;
    }
  }
  return span;
}

/// The tokens of one kind that stand together first, as they are written.
std::string first_of_kind(const Name& name, std::uint32_t kind) {
  for (std::size_t i = 0; i < name.count(); ++i) {
    if (!name.at(i).technical || !name.at(i).is(kind)) continue;
    std::size_t last = i + 1;
    while (name.at(last).technical && name.at(last).is(kind) && (name.at(last).is_glued() || name.at(last).gap == Dash))
      ++last;
    return std::string(name.text.substr(name.at(i).begin, name.at(last - 1).end - name.at(i).begin));
  }
  return {};
}

std::string group_name(const Name& name) {
  if (name.count() < 2) return {};
  if (starts_with_group(name)) {
    const Group& group = name.groups.front();
    if (group.first == group.last) return {};
    return std::string(name.text.substr(group.inner, name.at(group.last - 1).end - group.inner));
  }
  const Token& last = name.at(name.count() - 1);
  std::size_t first = name.count() - 1;
  while (name.at(first).is_glued()) --first;
  if (last.group >= 0 || name.at(first).technical || name.at(first).gap != Dash || !name.at(first - 1).technical)
    return {};
  return std::string(name.text.substr(name.at(first).begin, last.end - name.at(first).begin));
}

}  // namespace

std::string plain_text(const Name& name, std::size_t first, std::size_t last) {
  return tidy(words_of(name, {first, last}, false));
}

std::string plain_title(const Name& name, std::size_t from) {
  Span span{from, from};
  while (!name.at(span.last).is_end() && !name.at(span.last).technical) ++span.last;
  // "The.Title.GERMAN.1080p"
  while (span.last > span.first + 1 && name.at(span.last - 1).is(Language | technical_kinds) &&
         !name.at(span.last).is_end() && is_upper(name.written(name.at(span.last - 1)))) {
    --span.last;
  }
  return tidy(words_of(name, span, false));
}

void read_surroundings(const Name& name, const Numbers& numbers, Reading& reading) {
  Span span = show_span(name, numbers, reading);
  std::size_t title_from = numbers.last;
  if (span.empty() && numbers.date && numbers.first == 0) {
    span = {numbers.last, numbers.last};  // "2011-04-18 - Show"
    while (!name.at(span.last).is_end() && !name.at(span.last).technical) ++span.last;
    title_from = span.last;
    // "2011-04-18 20-15 Show", "20110418-2015 Show", "2011-04-18 20-15-00": the time
    std::size_t behind_time = span.first;
    while (behind_time < span.last && name.at(behind_time).is_number()) ++behind_time;
    const bool is_time =
        behind_time > span.first + 1 || (name.at(span.first).size() == 4 && name.at(span.first).gap == Dash);
    if (is_time) span.first = behind_time;
  }
  if (span.empty() && numbers.first == 0 && !numbers.absolute.empty() && name.at(0).size() >= 3) {
    span = {numbers.last, numbers.last};  // "003. Show - Title"
    do ++span.last;
    while (span.last < name.count() && !name.at(span.last).follows_spaced_dash());
    if (span.last >= name.count()) span.last = span.first;
    if (!span.empty()) title_from = span.last;
  }
  if (span.empty() && starts_with_group(name) && numbers.first == name.groups.front().last &&
      name.at(numbers.first).group < 0) {
    // "[Group] 12 - Show"
    span = {numbers.last, numbers.last};
    while (!name.at(span.last).is_end() && !name.at(span.last).technical && name.at(span.last).group < 0) ++span.last;
    title_from = span.last;
  }
  if (span.empty() && starts_with_group(name) && numbers.first > 0) span = in_brackets(name, numbers.first);
  span = alternative(name, span, numbers.first);
  span = latin_part(name, span);
  take_year_and_country(name, span, reading);
  std::string show = words_of(name, span, false);
  if (span.last == numbers.first && numbers.letters_before <= show.size())
    show.resize(show.size() - numbers.letters_before);
  reading.show = tidy(show);
  reading.resolution = first_of_kind(name, Resolution);
  reading.source = first_of_kind(name, Source);
  reading.group = group_name(name);
  if (numbers.found()) reading.episode_title = plain_title(name, title_from);
}

void read_show_folder(const Name& name, Reading& reading) {
  Span span = show_span(name, Numbers{}, reading);
  if (span.last > span.first) {
    if (const std::optional<Mark> season = season_at(name, span.first); season && season->last >= span.last)
      span.last = span.first;
  }
  // "Show - Complete Season 2", "Show Complete Series"
  const bool complete_series = span.last > span.first + 2 && name.is_word(span.last - 1, "series");
  if (complete_series && name.is_word(span.last - 2, "complete")) --span.last;
  if (span.last > span.first + 1 && name.is_word(span.last - 1, "complete")) --span.last;
  take_year_and_country(name, span, reading);
  reading.show = tidy(words_of(name, span, false));
}

}  // namespace quorvel::reader
