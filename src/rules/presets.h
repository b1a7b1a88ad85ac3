#pragma once

#include <optional>
#include <string_view>

#include "rules/filters.h"

namespace quorvel {

/// How a media server wants files to be called: folders below the one for all shows, and a mask.
struct Preset {
  std::string_view name, title;
  std::string_view folder, mask;
};

extern const Preset presets[3];

/// Null when there is none of that name.
const Preset* preset_named(std::string_view name);

/// The folder up to the first one in it that tokens make: what the user has chosen. Ends in a separator; empty when
/// there is nothing before.
std::string chosen_folder(std::string folder);

/// A rule for all files.
AFilter rule_for_all(int action, std::string folder, std::string mask, Existing existing = Existing::Ask);

}  // namespace quorvel
