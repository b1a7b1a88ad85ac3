#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "rules/filters.h"

/// Which files get as far as a rule. Only what is sure is said: of two patterns with wildcards it is often not known
/// whether one fits all that the other does.
namespace quorvel {

/// Why the rule at `at`, counted from 0, never gets a file; empty when it may get one, or is switched off.
std::string why_never_used(std::span<const AFilter> rules, std::size_t at);

/// Where a new rule gets files, counted from 1: above the first rule that takes all that is left; last where there is
/// no such rule.
int place_for_new(const std::vector<AFilter>& rules);

}  // namespace quorvel
