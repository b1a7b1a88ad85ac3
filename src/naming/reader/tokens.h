#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "naming/reader/words.h"

/// A name taken apart: words, numbers, what stands between them, and the brackets around them.
namespace quorvel::reader {

/// What stands in front of a token; several at once where several stand there. Nothing: it is glued to the one before.
enum Gap : std::uint16_t {
  Blank = 1,  // also "_"
  Dot = 2,
  Dash = 4,
  Open = 8,
  Close = 16,
  Plus = 32,  // also "&"
  Comma = 64,
  Tilde = 128,
  Hash = 256,
  Other = 512,
  Start = 1024,  // the first token
};

struct Token {
  enum class Kind : std::uint8_t { Word, Number, End };
  Kind kind = Kind::End;
  bool technical = false;   // says how the file was made, not what it holds
  std::uint16_t gap = 0;    // between the token before and this one
  int group = -1;           // the innermost brackets it stands in
  int number = 0;           // its value; of a word, what the table of words says
  std::uint32_t kinds = 0;  // WordKind, of a word
  std::uint32_t begin = 0, end = 0;

  bool is_word() const { return kind == Kind::Word; }
  bool is_number() const { return kind == Kind::Number; }
  /// One that does not say how the file was made.
  bool is_plain_number() const { return is_number() && !technical; }
  bool is_end() const { return kind == Kind::End; }
  bool is(std::uint32_t wanted) const { return (kinds & wanted) != 0; }
  bool is_glued() const { return gap == 0; }
  bool follows(std::uint16_t wanted) const { return (gap & wanted) != 0; }
  /// " - ", "_-_", ".-."
  bool follows_spaced_dash() const { return follows(Dash) && follows(Blank | Dot); }
  std::uint32_t size() const { return end - begin; }
};

/// A pair of brackets and the tokens between them.
struct Group {
  bool square = false;  // of the kinds that release groups, numbers and hashes stand in; not "(", not "{"
  bool technical = false;
  bool curly = false;
  int outer = -1;
  std::size_t first = 0, last = 0;     // tokens, the last one excluded
  std::uint32_t begin = 0, inner = 0;  // in the text: of the opening bracket, and what follows it
  std::uint32_t end = 0;               // what follows the closing bracket
};

/// One component of a path, without its extension.
struct Name {
  explicit Name(std::string_view text);

  std::string_view text;
  std::string lower;  // of the same length: only ASCII letters are changed
  std::vector<Token> tokens;
  std::vector<Group> groups;
  std::size_t named = 0;  // tokens at the start that are the show's name, as the folder has it

  std::size_t count() const { return tokens.size() - 1; }
  /// The token, or before the first and past the last one the end: it has no kinds, and its gap is what ends the name.
  const Token& at(std::size_t i) const { return tokens[std::min(i, tokens.size() - 1)]; }
  std::string_view written(const Token& token) const { return text.substr(token.begin, token.size()); }
  bool is_padded(const Token& number) const { return text[number.begin] == '0'; }
  std::string_view lowered(const Token& token) const {
    return std::string_view(lower).substr(token.begin, token.size());
  }
  std::string_view lowered(std::size_t first, std::size_t last) const {
    return std::string_view(lower).substr(tokens[first].begin, tokens[last - 1].end - tokens[first].begin);
  }
  bool is_word(std::size_t i, std::string_view word) const { return at(i).is_word() && lowered(at(i)) == word; }
  /// What follows the last of the tokens that are glued to this one.
  std::size_t chunk_end(std::size_t i) const;
  /// What follows a number: its gap, unless a letter such as the "v2" of a second version comes first.
  bool stands_alone(std::size_t i) const;

 private:
  void separate(std::uint16_t gap, char32_t code, std::size_t begin, std::size_t end);
  void close_group(std::size_t end);
  void add(Token::Kind kind, std::size_t begin, std::size_t end, int number);
  // Each adds what starts at `at` and returns what follows it.
  std::size_t add_number(std::size_t at);
  std::size_t add_counter(std::size_t at);
  std::size_t add_word(std::size_t at);

  std::uint16_t gap_ = Start;
  int open_ = -1, depth_ = 0;
};

}  // namespace quorvel::reader
