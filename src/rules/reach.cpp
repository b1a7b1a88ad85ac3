#include "rules/reach.h"

#include <algorithm>

#include "text/case.h"
#include "text/wildcard.h"

namespace quorvel {
namespace {

/// The texts that fit a pattern, or the others. They are in lower case.
struct Texts {
  std::string_view pattern;
  bool fit = true;
};

bool is_plain(std::string_view pattern) {
  return pattern.find_first_of("*?#[") == std::string_view::npos;
}

bool fits_all(std::string_view pattern) {
  return pattern.find_first_not_of('*') == std::string_view::npos;
}

/// A capital letter, which only a file edited by hand can have. In a list it may stand beside others.
bool fits_none(std::string_view pattern) {
  return pattern.find('[') == std::string_view::npos && lower_case(pattern) != pattern;
}

bool is_within(std::string_view inner, std::string_view outer) {
  return fits_all(outer) || fits_none(inner) || inner == outer || (is_plain(inner) && matches(inner, outer));
}

bool is_apart(std::string_view a, std::string_view b) {
  return fits_none(a) || fits_none(b) || (is_plain(a) && !matches(a, b)) || (is_plain(b) && !matches(b, a));
}

bool is_empty(const Texts& texts) {
  return texts.fit ? fits_none(texts.pattern) : fits_all(texts.pattern);
}

bool is_all(const Texts& texts) {
  return is_empty({texts.pattern, !texts.fit});
}

bool is_within(const Texts& inner, const Texts& outer) {
  if (is_empty(inner) || is_all(outer)) return true;
  if (inner.fit) return outer.fit ? is_within(inner.pattern, outer.pattern) : is_apart(inner.pattern, outer.pattern);
  return !outer.fit && is_within(outer.pattern, inner.pattern);
}

/// Whether `a` is in one of `all`, or two of these leave nothing over.
bool is_covered(const Texts& a, const std::vector<Texts>& all) {
  return is_empty(a) || std::ranges::any_of(all, [&](const Texts& one) {
           const auto holds_the_others = [&](const Texts& other) { return is_within({one.pattern}, other); };
           return is_within(a, one) || (!one.fit && std::ranges::any_of(all, holds_the_others));
         });
}

std::vector<Texts> texts_of(std::span<const AFilter> rules, std::string AFilter::*pattern, int AFilter::*condition) {
  std::vector<Texts> texts;
  for (const AFilter& rule : rules) {
    if (rule.enabled && !(rule.*pattern).empty()) texts.push_back({rule.*pattern, rule.*condition == Equals});
  }
  return texts;
}

/// Whether `rule` gets no file below these. Types and names have nothing to do with each other, so what is left of
/// both is left of each, and rules take all files where they take all types or all names.
bool take_all_of(std::span<const AFilter> rules, const AFilter& rule) {
  static constexpr Texts everything{"*"};
  const std::vector<Texts> types = texts_of(rules, &AFilter::fileType, &AFilter::fileTypeCondition),
                           names = texts_of(rules, &AFilter::showName, &AFilter::showNameCondition);
  if (is_covered(everything, types) || is_covered(everything, names)) return true;
  const auto all_covered = [](const std::vector<Texts>& some, const std::vector<Texts>& by) {
    return std::ranges::all_of(some, [&](const Texts& one) { return is_covered(one, by); });
  };
  return all_covered(texts_of({&rule, 1}, &AFilter::fileType, &AFilter::fileTypeCondition), types) &&
         all_covered(texts_of({&rule, 1}, &AFilter::showName, &AFilter::showNameCondition), names);
}

}  // namespace

std::string why_never_used(std::span<const AFilter> rules, std::size_t at) {
  const AFilter& rule = rules[at];
  const std::span above = rules.first(at);
  if (!rule.enabled || !take_all_of(above, rule)) return {};
  if (take_all_of({}, rule)) return "No file fits it.";
  const auto taker = std::ranges::find_if(above, [&](const AFilter& other) { return take_all_of({&other, 1}, rule); });
  return (taker == above.end() ? std::string("The rules") : "\"" + taker->description + "\"") +
         " above it takes every file that fits it.";
}

int place_for_new(const std::vector<AFilter>& rules) {
  const AFilter any = FilterFormat::defaults().front();
  std::size_t place = 0;
  while (place < rules.size() && !take_all_of({rules.data(), place + 1}, any)) ++place;
  return static_cast<int>(place) + 1;
}

}  // namespace quorvel
