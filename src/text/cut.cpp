#include "text/cut.h"

namespace quorvel {

std::vector<std::string_view> split(std::string_view text, std::string_view separator) {
  std::vector<std::string_view> pieces;
  std::size_t start = 0;
  for (std::size_t at; (at = text.find(separator, start)) != std::string_view::npos; start = at + separator.size()) {
    pieces.push_back(text.substr(start, at - start));
  }
  pieces.push_back(text.substr(start));
  return pieces;
}

std::string_view trim(std::string_view text) {
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

bool is_whole_list(std::string_view answer) {
  constexpr std::string_view blanks = " \t\r\n";
  const std::size_t first = answer.find_first_not_of(blanks);
  return first != std::string_view::npos && answer[first] == '[' && answer[answer.find_last_not_of(blanks)] == ']';
}

void replace_all(std::string& text, std::string_view what, std::string_view with) {
  std::size_t at = text.find(what);
  if (at == std::string::npos) return;
  std::string replaced;
  std::size_t start = 0;
  for (; at != std::string::npos; at = text.find(what, start)) {
    replaced.append(text, start, at - start).append(with);
    start = at + what.size();
  }
  text = replaced.append(text, start);
}

}  // namespace quorvel
