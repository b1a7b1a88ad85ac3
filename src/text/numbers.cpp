#include "text/numbers.h"

#include <algorithm>
#include <charconv>
#include <string>

#include "text/cut.h"
#include "text/failure.h"

namespace quorvel {

std::int32_t to_number(std::string_view text) {
  std::string_view digits = trim(text);
  if (digits.starts_with('+') && !digits.starts_with("+-")) digits.remove_prefix(1);
  std::int32_t number = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (error != std::errc() || end != digits.data() + digits.size()) {
    throw Failure("\"" + std::string(text.substr(0, 40)) + "\" is not a whole number of 32 bits");
  }
  return number;
}

int leading_number(std::string_view text) {
  constexpr int enough = 1'000'000;
  int number = 0;
  for (const char digit : text.substr(std::min(text.find_first_not_of(' '), text.size()))) {
    if (digit < '0' || digit > '9') break;
    number = std::min(number * 10 + (digit - '0'), enough);
  }
  return number;
}

}  // namespace quorvel
