#include "naming/reader/specials.h"

#include "naming/reader/bare_numbers.h"
#include "naming/reader/show.h"

namespace quorvel::reader {

namespace {

/// "A Special Day" is a title, "Show - Special", "Show Special [720p]" and "Show - Special Day" are specials.
bool stands_apart(const Name& name, std::size_t i) {
  const Token& next = name.at(i + 1);
  return name.at(i).follows_spaced_dash() || next.is_end() || next.technical || next.follows(Dash | Open | Close);
}

}  // namespace

void read_special(const Name& name, bool in_folder_of_specials, Reading& reading) {
  std::size_t word = name.count(), dash = 0;
  for (std::size_t i = name.count(); i-- > 0;) {
    const Token& token = name.at(i);
    if (token.is(ExtraWord | SampleWord | FilmWord)) return;
    if (token.is(SpecialWord) && !token.technical && i > 0 && stands_apart(name, i)) word = i;
    if (i > 0 && token.follows_spaced_dash()) dash = i;
  }
  if (!in_folder_of_specials && (word == name.count() || last_year_of(name) > 0)) return;
  const std::size_t first = starts_with_group(name) ? name.groups.front().last : 0;
  const std::size_t show_end = dash > first ? dash : word < name.count() ? word : first;
  if (show_end == first && !in_folder_of_specials) return;
  reading.season = 0;
  reading.special = true;
  reading.show = plain_text(name, first, show_end);
  // "Show - Special - Title", "Show - Christmas Special", "Show Special Title"
  const bool word_alone = word == show_end && (name.at(word + 1).follows(Dash) || show_end != dash);
  reading.episode_title = plain_title(name, word_alone ? word + 1 : show_end);
}

}  // namespace quorvel::reader
