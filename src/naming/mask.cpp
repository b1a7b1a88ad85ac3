#include "naming/mask.h"

#include "text/cut.h"

namespace quorvel {
namespace {

std::string two_digits(int number) {
  const std::string digits = std::to_string(number);
  return digits.size() < 2 ? "0" + digits : digits;
}

}  // namespace

std::string expand_folder(std::string_view path, const MaskValues& values) {
  std::string text(path);
  replace_all(text, "[show]", values.show);
  replace_all(text, "[s]", std::to_string(values.season));
  replace_all(text, "[ss]", two_digits(values.season));
  return text;
}

std::string expand_name(std::string_view mask, const MaskValues& values) {
  std::string text = expand_folder(mask, values);
  replace_all(text, "[e]", std::to_string(values.episode));
  replace_all(text, "[ee]", two_digits(values.episode));
  replace_all(text, "[title]", values.title);
  return text;
}

}  // namespace quorvel
