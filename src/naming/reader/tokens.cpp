#include "naming/reader/tokens.h"

#include <algorithm>
#include <array>
#include <utility>

#include "text/case.h"
#include "text/characters.h"

namespace quorvel::reader {
namespace {

constexpr int highest_number = 100'000'000;  // a date of eight digits is less; sums and multiples fit
constexpr int deepest = 4;                   // brackets within brackets; deeper ones count for nothing

constexpr std::u32string_view opening = U"([{【「『（［〔《";
constexpr std::u32string_view square_opening = U"[【「『［〔";
constexpr std::u32string_view closing = U")]}】」』）］〕》";

bool is_one_of(char32_t character, std::u32string_view characters) {
  return characters.find(character) != std::u32string_view::npos;
}

/// 0 to 9, full-width digits included; -1 for all else.
int digit_of(char32_t character) {
  if (is_digit(character)) return static_cast<int>(character - '0');
  if (character >= 0xFF10 && character <= 0xFF19) return static_cast<int>(character - 0xFF10);
  return -1;
}

/// What a character that is neither letter nor digit does between two tokens; 0 for letters and digits.
std::uint16_t gap_of(char32_t character) {
  switch (character) {
    case ' ':
    case '_':
    case '\t':
    case 0xA0:
    case 0x3000:
      return Blank;
    case '.':
      return Dot;
    case '-':
    case 0x2010:
    case 0x2011:
    case 0x2012:
    case 0x2013:
    case 0x2014:
    case 0x2015:
    case 0x2212:
      return Dash;
    case '+':
    case '&':
      return Plus;
    case ',':
    case ';':
    case 0x3001:
    case 0xFF0C:
      return Comma;
    case '~':
    case 0x301C:
    case 0xFF5E:
      return Tilde;
    case '#':
    case 0x2116:
      return Hash;
    default:
      break;
  }
  if (is_one_of(character, opening)) return Open;
  if (is_one_of(character, closing)) return Close;
  const bool punctuation = character >= 0x80 && ((character >= 0x2018 && character <= 0x203A) ||
                                                 (character >= 0x2600 && character <= 0x26FF) || character == 0x30FB ||
                                                 character == 0xFF01 || character == 0xFF1A || character == 0xFF1F);
  if (character < 0x80 ? !is_ascii_letter(character) && digit_of(character) < 0 : punctuation) return Other;
  return 0;
}

struct Character {
  char32_t code = 0;
  std::uint32_t size = 1;
};

/// The character at `at`; a stray byte counts as a letter.
Character character_at(std::string_view text, std::size_t at) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(at);
  const std::uint32_t size = lead < 0xC2 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF5 ? 4 : 1;
  if (size == 1 || at + size > text.size()) return {lead, 1};
  char32_t code = lead & (0x7FU >> size);
  for (std::size_t i = 1; i < size; ++i) {
    if ((byte(at + i) & 0xC0) != 0x80) return {stray_byte_base + lead, 1};
    code = code << 6 | (byte(at + i) & 0x3F);
  }
  return {code, size};
}

// The letters that stand glued to words of the same alphabet: in front of a number, and behind one.
constexpr std::u32string_view ordinal_marks = U"第제";
constexpr std::u32string_view counters = U"話话集回季期화회편기部";
constexpr std::u32string_view chinese_digits = U"一二三四五六七八九";

/// The number that Chinese digits at `at` write, up to 99, with its size in bytes; 0 when there is none.
std::pair<int, std::uint32_t> chinese_number(std::string_view text, std::size_t at) {
  int value = 0, tens = 0;
  bool has_tens = false;
  std::uint32_t size = 0;
  while (at + size < text.size()) {
    const Character next = character_at(text, at + size);
    const std::size_t digit = chinese_digits.find(next.code);
    if (next.code == U'十' && !has_tens) {
      has_tens = true;
      tens = value == 0 ? 1 : value;
      value = 0;
    } else if (digit != std::u32string_view::npos && value == 0) {
      value = static_cast<int>(digit) + 1;
    } else {
      break;
    }
    size += next.size;
  }
  return {tens * 10 + value, size};
}

}  // namespace

Name::Name(std::string_view text) : text(text), lower(lower_ascii(text)) {
  tokens.reserve(48);
  for (std::size_t at = 0; at < text.size();) {
    const Character first = character_at(text, at);
    if (const std::uint16_t separates = gap_of(first.code)) {
      separate(separates, first.code, at, at + first.size);
      at += first.size;
    } else if (digit_of(first.code) >= 0) {
      at = add_number(at);
    } else {
      at = add_word(at);
    }
  }
  while (open_ >= 0) close_group(text.size());
  add(Token::Kind::End, text.size(), text.size(), 0);
}

void Name::separate(std::uint16_t gap, char32_t code, std::size_t begin, std::size_t end) {
  gap_ |= gap;
  if (gap == Open && ++depth_ <= deepest) {
    groups.push_back({.square = is_one_of(code, square_opening),
                      .curly = code == '{',
                      .outer = open_,
                      .first = tokens.size(),
                      .begin = static_cast<std::uint32_t>(begin),
                      .inner = static_cast<std::uint32_t>(end)});
    open_ = static_cast<int>(groups.size()) - 1;
  } else if (gap == Close && depth_ > 0 && depth_-- <= deepest) {
    close_group(end);
  }
}

void Name::close_group(std::size_t end) {
  Group& group = groups[static_cast<std::size_t>(open_)];
  group.last = tokens.size();
  group.end = static_cast<std::uint32_t>(end);
  open_ = group.outer;
}

void Name::add(Token::Kind kind, std::size_t begin, std::size_t end, int number) {
  Token token;
  token.kind = kind;
  token.gap = std::exchange(gap_, std::uint16_t{0});
  token.group = open_;
  token.begin = static_cast<std::uint32_t>(begin);
  token.end = static_cast<std::uint32_t>(end);
  token.number = number;
  if (kind == Token::Kind::Word) {
    const std::string_view word = lowered(token);
    const Word& known = is_ascii(word) ? find_word(word) : find_word(lower_case(word));
    token.kinds = known.kinds;
    token.number = known.number;
  }
  tokens.push_back(token);
}

std::size_t Name::add_number(std::size_t at) {
  std::size_t end = at;
  int value = 0;
  for (Character next; end < text.size(); end += next.size) {
    next = character_at(text, end);
    if (digit_of(next.code) < 0) break;
    value = value < highest_number / 10 ? value * 10 + digit_of(next.code) : highest_number;
  }
  add(Token::Kind::Number, at, end, value);
  return add_counter(end);
}

std::size_t Name::add_counter(std::size_t at) {
  if (at == text.size()) return at;
  const Character counter = character_at(text, at);
  if (!is_one_of(counter.code, counters)) return at;
  add(Token::Kind::Word, at, at + counter.size, 0);
  return at + counter.size;
}

std::size_t Name::add_word(std::size_t at) {
  const Character first = character_at(text, at);
  std::size_t end = at + first.size;
  if (is_one_of(first.code, ordinal_marks)) {
    const auto [value, size] = chinese_number(text, end);
    if (size > 0) {
      add(Token::Kind::Word, at, end, 0);
      add(Token::Kind::Number, end, end + size, value);
      return add_counter(end + size);
    }
  }
  while (end < text.size()) {
    const Character next = character_at(text, end);
    const bool apostrophe = (next.code == '\'' || next.code == 0x2019) && end + next.size < text.size() &&
                            is_ascii_letter(character_at(text, end + next.size).code);
    const bool ends = gap_of(next.code) != 0 || digit_of(next.code) >= 0 || is_one_of(next.code, ordinal_marks);
    if (ends && !apostrophe) break;
    end += next.size;
  }
  add(Token::Kind::Word, at, end, 0);
  return end;
}

std::size_t Name::chunk_end(std::size_t i) const {
  ++i;
  while (i < count() && tokens[i].is_glued()) ++i;
  return i;
}

bool Name::stands_alone(std::size_t i) const {
  const Token& next = at(i + 1);
  return !next.is_glued() || next.is_end() || next.technical || next.is(EndWord | CounterWord);
}

}  // namespace quorvel::reader
