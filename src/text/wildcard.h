#pragma once

#include <string_view>

namespace quorvel {

/// Whether `pattern` describes the whole of `subject`: "*" is any run of characters, "?" one character, "#" one digit
/// 0-9, "[...]" one character of the list, in which "a-c" is a range; every other character is itself, case included.
/// Inside a list "*", "?" and "#" are themselves, and a "-" at either end is one. An empty list fits nothing, and a "["
/// that no "]" follows is itself. The time is at most the product of both lengths.
bool matches(std::string_view subject, std::string_view pattern);

}  // namespace quorvel
