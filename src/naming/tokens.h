#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

/// The tokens of masks and folders as users meet them; what they stand for is in mask.h.
namespace quorvel {

/// What a token tells of. Only the first kind has a value for every file.
enum class TokenKind { Always, Show, Episode, FileName };

struct Token {
  std::string_view text, meaning;
  TokenKind kind;
  bool in_folder = true;       // else it means nothing there
  bool tells_episode = false;  // it differs from one episode to the next
};

extern const std::span<const Token> tokens;

/// What in a folder or a mask is likely to be a mistake, although all of it can be a name: words in brackets that are
/// no tokens, braces without their counterpart, a mask that gives all episodes one name. Sentences for the user.
std::vector<std::string> remarks_on_folder(std::string_view folder);
std::vector<std::string> remarks_on_mask(std::string_view mask);

}  // namespace quorvel
