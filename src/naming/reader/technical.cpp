#include "naming/reader/technical.h"

#include <algorithm>
#include <iterator>

#include "text/characters.h"

namespace quorvel::reader {
namespace {

bool is_hexadecimal(std::string_view lowered) {
  return std::all_of(lowered.begin(), lowered.end(),
                     [](char byte) { return is_digit(byte) || (byte >= 'a' && byte <= 'f'); });
}

void mark(Name& name, std::size_t first, std::size_t last, std::uint32_t kinds) {
  for (std::size_t i = first; i < last && i < name.count(); ++i) {
    name.tokens[i].technical = true;
    name.tokens[i].kinds |= kinds;
  }
}

bool is_lines(int number) {
  return number >= 240 && number <= 4320;
}

/// The size of a picture: "1280x720", but not "2016x231", a season that is a year.
bool is_picture(int width, int height) {
  return height >= 200 && width <= 4 * height && height <= 2 * width;
}

bool is_codec(std::string_view word, int number) {
  return (word == "x" || word == "h") && number >= 263 && number <= 266;
}

/// Units that a number stands glued to.
std::uint32_t unit(std::string_view word, int number) {
  if (word == "p" && is_lines(number)) return Resolution;
  if (word == "月新番" || word == "月番") return Site;
  constexpr std::string_view units[] = {"bit", "bits", "fps", "hz", "khz", "kbps", "kbit", "mbps", "mb",
                                        "gb",  "mib",  "gib", "kb", "ch",  "chs",  "mbit", "audio"};
  return std::ranges::find(units, word) == std::end(units) ? 0U
         : word.starts_with("ch") || word.starts_with("k") ? Sound
                                                           : Codec;
}

/// The chunk that starts at `i`: what its tokens say together, and how many of them do.
struct Found {
  std::size_t count = 0;
  std::uint32_t kinds = 0;
};

/// "ABCD1234", also outside brackets; a date has no letters, and a word no digits.
bool is_checksum(std::string_view chunk) {
  return chunk.size() == 8 && is_hexadecimal(chunk) && chunk.find_first_of("0123456789") != std::string_view::npos &&
         chunk.find_first_of("abcdef") != std::string_view::npos;
}

/// "720p", "10bit", "1280x720", "720phdtv".
Found number_with_unit(const Name& name, std::size_t i, std::size_t count) {
  const Token &token = name.at(i), &next = name.at(i + 1), &third = name.at(i + 2);
  if (!token.is_number() || count < 2 || !next.is_word()) return {};
  const std::string_view word = name.lowered(next);
  if (const std::uint32_t kinds = unit(word, token.number)) return {2, kinds};
  if (word.starts_with("p") && is_lines(token.number) && token.size() >= 3 &&
      (find_word(word.substr(1)).kinds & technical_kinds) != 0) {
    return {2, Resolution};
  }
  const bool cross = word == "x" || word == "×";
  if (count >= 3 && cross && third.is_number() && is_picture(token.number, third.number)) return {3, Resolution};
  return {};
}

/// "x264", "DD5", "Hi10P".
Found word_with_number(const Name& name, std::size_t i, std::size_t count) {
  const Token &token = name.at(i), &next = name.at(i + 1);
  if (!token.is_word() || count < 2 || !next.is_number()) return {};
  const std::string_view word = name.lowered(token);
  if (is_codec(word, next.number)) return {2, Codec};
  if (word.starts_with("hi") && next.number >= 8 && next.number <= 10) return {count, Codec};
  if (token.is(Weak)) return {};
  if (token.is(Sound) && next.size() == 1) return {2, Sound};
  if (token.is(Source | Codec)) return {count, token.kinds};
  return {};
}

Found find_in_chunk(const Name& name, std::size_t i, std::size_t end) {
  const Token &token = name.at(i), &next = name.at(i + 1);
  const std::size_t count = end - i;
  if (i > 0 && !token.is_glued() && name.at(end - 1).end - token.begin == 8 && is_checksum(name.lowered(i, end))) {
    return {count, Release};
  }
  const std::uint32_t whole = count > 1 ? find_word(name.lowered(i, end)).kinds : token.kinds;
  if ((whole & technical_kinds) != 0 && (whole & Weak) == 0) return {count, whole};
  if (name.is_word(i, "v") && token.is_glued() && name.at(i - 1).is_number() && next.is_number() && next.is_glued() &&
      next.size() == 1) {
    return {2, EndWord};  // "12v2": a second version
  }
  const Found number = number_with_unit(name, i, count);
  return number.count > 0 ? number : word_with_number(name, i, count);
}

bool is_glued_by(const Token& token, std::uint16_t gap) {
  return token.gap == gap;
}

struct Pair {
  std::string_view first, second;
  std::uint32_t kind = 0;
};
constexpr Pair pairs[] = {
    {"web", "dl", Source},     {"web", "rip", Source}, {"blu", "ray", Source}, {"hd", "tv", Source},
    {"sd", "tv", Source},      {"dvd", "rip", Source}, {"dvd", "raw", Source}, {"bd", "rip", Source},
    {"bd", "remux", Source},   {"tv", "rip", Source},  {"hd", "dvd", Source},  {"dual", "audio", Sound},
    {"multi", "audio", Sound}, {"dts", "hd", Sound},   {"vc", "1", Codec},
};

/// Two chunks that belong together: "H.264", "WEB-DL", "Blu-Ray", "5.1".
Found find_pair(const Name& name, std::size_t i) {
  const Token& token = name.at(i);
  const Token& next = name.at(i + 1);
  if (next.is_end() || next.is_glued()) return {};
  const std::string_view word = name.lowered(token), after = name.lowered(next);
  if (token.is_word() && next.is_number() && is_codec(word, next.number)) return {2, Codec};
  for (const Pair& pair : pairs) {
    if (word == pair.first && after == pair.second) return {2, pair.kind};
  }
  if (token.is_number() && next.is_number() && next.gap == Other && is_picture(token.number, next.number)) {
    return {2, Resolution};  // "1280*720"
  }
  const bool unglued = !token.is_glued() || name.at(i - 1).is(Sound);
  if (token.is_number() && token.size() == 1 && unglued && is_glued_by(next, Dot) && next.is_number() &&
      next.size() == 1 && next.number <= 1) {
    // The loudspeakers; a show may be called "2.0", so only beside other such words.
    const bool after_sound = name.at(i - 1).technical || name.at(i - 1).is(Sound | Codec);
    const bool before_technical = name.at(i + 2).is(technical_kinds) && !name.at(i + 2).is(Weak);
    if (after_sound || before_technical || name.is_word(i + 2, "ch"))
      return {name.is_word(i + 2, "ch") ? 3U : 2U, Sound};
  }
  if (token.is_number() && token.size() == 2 && is_glued_by(next, Dot) && next.is_number() &&
      name.is_word(i + 2, "fps")) {
    return {3, Codec};
  }
  return {};
}

bool has_top_level_domain(const Name& name, std::size_t i) {
  constexpr std::string_view domains[] = {"com", "org",  "net", "info", "ru", "to",  "me", "tv",
                                          "eu",  "se",   "es",  "cc",   "ws", "biz", "io", "co",
                                          "fr",  "club", "xyz", "pl",   "in", "nu",  "pt", "hu"};
  const Token& token = name.at(i);
  return token.is_word() && is_glued_by(token, Dot) &&
         std::ranges::find(domains, name.lowered(token)) != std::end(domains);
}

/// A site's name from `first`: "www.site.com", or within brackets of its own also "site.com". Its size; 0 for none.
std::size_t site_size(const Name& name, std::size_t first, std::size_t last) {
  const bool www = name.is_word(first, "www");
  for (std::size_t i = first + 1; i < last && i < first + 8; ++i) {
    if (name.at(i).follows(Blank | Open | Close)) break;
    if (has_top_level_domain(name, i) && (www ? i > first + 1 : true)) return i + 1 - first;
  }
  return 0;
}

void mark_group(Name& name, Group& group) {
  const std::size_t size = group.last - group.first;
  if (size == 0) return;
  const std::string_view inner =
      std::string_view(name.lower)
          .substr(name.at(group.first).begin, name.at(group.last - 1).end - name.at(group.first).begin);
  const bool has_digit = std::ranges::any_of(inner, is_digit);
  const bool hash = is_hexadecimal(inner) && (inner.size() == 8 || inner.size() >= 16) && (has_digit || group.square);
  if (hash || site_size(name, group.first, group.last) == size) mark(name, group.first, group.last, Release);
  std::size_t technical = 0, weak = 0;
  for (std::size_t i = group.first; i < group.last; ++i) {
    const Token& token = name.at(i);
    if (token.technical && token.is(technical_kinds)) {
      ++technical;
    } else if (token.is(technical_kinds | Language)) {
      ++weak;
    }
  }
  // "[1080p][HEVC GROUP]": one word that is no other's makes the rest of the brackets its company.
  group.technical = group.curly || technical > 0 || weak == size;
  if (group.technical && technical + weak > 0 && group.first > 0) {
    for (std::size_t i = group.first; i < group.last; ++i) {
      const bool number = name.at(i).is_number() && !name.at(i).is_glued() && name.stands_alone(i);
      if (number || name.at(i).is(technical_kinds | Language)) mark(name, i, i + 1, 0);
    }
  }
}

}  // namespace

void mark_technical(Name& name) {
  // "site.com_Show"; other endings are words, too.
  if (const std::size_t size = site_size(name, 0, name.count()); !name.at(size).follows(Dot)) {
    const std::string_view ending = name.lowered(name.at(size - 1));
    if (ending == "com" || ending == "org" || ending == "net") mark(name, 0, size, Site);
  }
  for (std::size_t i = 0; i < name.count();) {
    const std::size_t end = name.chunk_end(i);
    while (i < end) {
      Found found = find_in_chunk(name, i, end);
      if (found.count == 0 && name.is_word(i, "www")) found = {site_size(name, i, name.count()), Site};
      if (const Found pair = find_pair(name, i); pair.count > 0) found = pair;
      mark(name, i, i + found.count, found.kinds);
      // "AAC2.0", "DD5.1": the second half of the number.
      if (found.kinds & Sound) {
        const Token &whole = name.at(i + found.count - 1), &half = name.at(i + found.count);
        if (whole.is_number() && whole.size() == 1 && half.is_number() && half.size() == 1 && half.gap == Dot) {
          mark(name, i + found.count, i + found.count + 1, Sound);
        }
      }
      i += std::max<std::size_t>(found.count, 1);
    }
  }
  for (Group& group : name.groups) mark_group(name, group);
  // A bare "720" or "1080" beside words that say more of the same.
  bool said = false;
  for (const Token& token : name.tokens) said = said || (token.technical && token.is(Resolution));
  for (std::size_t i = 1; i < name.count() && !said; ++i) {
    const Token& token = name.at(i);
    const int number = token.number;
    if (!token.is_plain_number() || token.is_glued() || !name.stands_alone(i)) continue;
    if (number != 480 && number != 576 && number != 720 && number != 1080 && number != 2160) continue;
    if (token.follows_spaced_dash()) continue;  // "Show - 1080"
    const bool beside = name.at(i + 1).technical || name.at(i - 1).technical || name.at(i + 1).is(technical_kinds);
    if (number >= 1080 || beside) mark(name, i, i + 1, Resolution);
  }
}

namespace {

/// "3f2504e0-4f89-41d3-9a0c-0305e82c3301"
bool is_guid(std::string_view lowered) {
  constexpr std::size_t size = 36, longest = 40;
  if (lowered.size() < size || lowered.size() > longest) return false;
  for (std::size_t i = 0; i < size; ++i) {
    const bool dash = i == 8 || i == 13 || i == 18 || i == 23;
    if (dash ? lowered[i] != '-' : !is_hexadecimal(lowered.substr(i, 1))) return false;
  }
  return true;
}

}  // namespace

bool is_meaningless(const Name& name) {
  if (name.count() == 0) return true;
  const Token& second = name.at(1);
  // "IMG_1234", "VID_20240131_101112": cameras' names
  if (name.at(0).is(CameraWord) && second.is_number() && second.size() >= 2 && !second.follows_spaced_dash())
    return true;
  // "1001_20110418190000": recorders' names
  const auto counts = [](const Token& token) { return token.is_number() || token.is_end(); };
  const auto is_time = [](const Token& token) { return token.size() > 8; };
  if (std::ranges::all_of(name.tokens, counts) && std::ranges::any_of(name.tokens, is_time)) return true;
  if (is_guid(name.lower)) return true;
  for (std::size_t i = 0, end = 0; i < name.count(); i = end) {
    end = name.chunk_end(i);
    constexpr std::uint32_t shortest = 10;  // of several random words
    const bool random = end > i + 1 && name.at(end - 1).end - name.at(i).begin >= shortest;
    if (end - i != name.count() && !random) return false;
  }
  const std::string_view lowered = name.lowered(0, name.count());
  std::size_t digits = 0, changes = 0;
  for (std::size_t i = 0; i < lowered.size(); ++i) {
    const bool digit = is_digit(lowered[i]);
    if (digit) ++digits;
    if (i > 0 && digit != is_digit(lowered[i - 1])) ++changes;
  }
  if (lowered.size() >= 10 && digits > 0 && digits < lowered.size() && is_hexadecimal(lowered)) return true;
  // "harbourlightss01e02e03" has pairs of digits only.
  const auto is_pair = [](const Token& token) { return !token.is_number() || token.size() == 2; };
  return lowered.size() >= 16 && changes >= 5 && !std::ranges::all_of(name.tokens, is_pair);
}

}  // namespace quorvel::reader
