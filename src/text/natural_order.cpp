#include "text/natural_order.h"

#include <algorithm>

#include "text/case.h"

namespace quorvel {

/// The number of digits goes before them: of two numbers without leading zeros the longer one is the larger.
std::string natural_key(std::string_view text) {
  constexpr std::string_view digits = "0123456789";
  const std::string lowered = lower_case(text);
  std::string key;
  for (std::string_view rest = lowered; !rest.empty();) {
    const std::size_t number = std::min(rest.find_first_of(digits), rest.size());
    key += rest.substr(0, number);
    rest.remove_prefix(number);
    if (rest.empty()) break;
    const std::size_t end = std::min(rest.find_first_not_of(digits), rest.size());
    const std::size_t first = std::min(rest.find_first_not_of('0'), end), size = end - first;
    key.append({'0', static_cast<char>(std::min<std::size_t>(size, 255))}).append(rest.substr(first, size));
    rest.remove_prefix(end);
  }
  return key;
}

}  // namespace quorvel
