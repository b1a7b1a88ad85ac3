#include "rules/presets.h"

#include <algorithm>
#include <string>
#include <utility>

#include "naming/file_names.h"
#include "naming/tokens.h"
#include "platform/native.h"

namespace quorvel {

// What the servers' own documentation says, as of 2026: seasons have folders with two digits, "Season 00" for specials.
// A special without a number goes by its title. Of several episodes Kodi wants each, the others the first and the last.
// Jellyfin says nothing of dates, so there everything goes by its number.
const Preset presets[3] = {
    {"jellyfin", "Jellyfin", "[show]{ ([year])}/Season [ss]", "[show]{ S[ss]E[ee-]} - [title]"},
    {"plex", "Plex", "[show]{ ([year])}/Season {[dated-year]|[ss]}",
     "[show]{ ([year])}{ - [dated]| - s[ss]e[ee-]} - [title]"},
    {"kodi", "Kodi", "[show]{ ([year])}/Season [ss]", "[show]{ - [dated]| S[ss]E[ee+]} - [title]"},
};

const Preset* preset_named(std::string_view name) {
  const auto* const found = std::ranges::find(presets, name, &Preset::name);
  return found == std::end(presets) ? nullptr : found;
}

std::string chosen_folder(std::string folder) {
  folder = with_native_separators(std::move(folder));
  const auto made = std::ranges::min(tokens, {}, [&](const Token& token) { return folder.find(token.text); });
  const std::size_t end = folder.find(made.text);
  if (end == std::string::npos) return folder.empty() ? folder : with_separator(folder);
  return folder.substr(0, folder.rfind(native::separator, end) + 1);
}

AFilter rule_for_all(int action, std::string folder, std::string mask, Existing existing) {
  AFilter rule = FilterFormat::defaults().front();
  rule.action = action;
  rule.existing = existing;
  rule.path = folder.empty() ? std::move(folder) : with_separator(with_native_separators(std::move(folder)));
  rule.mask = std::move(mask);
  return rule;
}

}  // namespace quorvel
