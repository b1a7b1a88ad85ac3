#include "platform/temporary_name.h"

#include <random>

namespace quorvel {

std::string random_letters() {
  static constexpr std::string_view letters = "abcdefghijklmnopqrstuvwxyz0123456789";
  std::random_device random;
  std::uniform_int_distribution<std::size_t> letter(0, letters.size() - 1);
  std::string text;
  for (int i = 0; i < 6; ++i) text += letters[letter(random)];
  return text;
}

}  // namespace quorvel
