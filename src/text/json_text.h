#pragma once

#include <string>
#include <string_view>

namespace quorvel {

/// Appends `value` as a string of JSON, in quotes. A stray byte of a file name, for which JSON has no form, becomes
/// U+FFFD.
void append_json(std::string& json, std::string_view value);

}  // namespace quorvel
