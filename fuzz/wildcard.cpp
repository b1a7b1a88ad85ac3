#include <vector>

#include "fuzz_support.h"
#include "text/characters.h"
#include "text/wildcard.h"

using namespace quorvel;

namespace {

/// The end of the element at the pattern's start, and whether it describes the character.
std::pair<std::size_t, bool> element(std::u32string_view pattern, char32_t character) {
  const std::size_t close = pattern[0] == U'[' ? pattern.find(U']', 1) : pattern.npos;
  if (pattern[0] == U'?') return {1, true};
  if (pattern[0] == U'#') return {1, character >= U'0' && character <= U'9'};
  if (close == pattern.npos) return {1, pattern[0] == character};
  bool listed = false;
  for (std::size_t i = 1; i < close; i += i + 2 < close && pattern[i + 1] == U'-' ? 3 : 1) {
    const char32_t last = i + 2 < close && pattern[i + 1] == U'-' ? pattern[i + 2] : pattern[i];
    listed = listed || (pattern[i] <= character && character <= last);
  }
  return {close + 1, listed};
}

/// By trying every way, each only once.
bool slow_match(std::u32string_view subject, std::u32string_view pattern, std::vector<int>& known, std::size_t width) {
  if (pattern.empty()) return subject.empty();
  int& answer = known[pattern.size() * width + subject.size()];
  if (answer >= 0) return answer == 1;
  bool fits = false;
  if (pattern[0] == U'*') {
    fits = slow_match(subject, pattern.substr(1), known, width) ||
           (!subject.empty() && slow_match(subject.substr(1), pattern, known, width));
  } else if (!subject.empty()) {
    const auto [end, described] = element(pattern, subject[0]);
    fits = described && slow_match(subject.substr(1), pattern.substr(end), known, width);
  }
  answer = fits ? 1 : 0;
  return fits;
}

}  // namespace

/// The pattern, a line end, the subject. Patterns that take exponential time would run into the time-out.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view input = fuzz::text_of(data, size);
  const std::size_t end = std::min(input.find('\n'), size);
  const std::string_view pattern = input.substr(0, end), subject = input.substr(std::min(end + 1, size));
  const bool fits = matches(subject, pattern);
  if (size > 300) return 0;
  const std::u32string characters = decode(subject), elements = decode(pattern);
  std::vector<int> known((characters.size() + 1) * (elements.size() + 1), -1);
  fuzz::check(fits == slow_match(characters, elements, known, characters.size() + 1), "both ways agree");
  return 0;
}
