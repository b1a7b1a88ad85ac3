#pragma once

#include <optional>
#include <string>

namespace quorvel {

/// `body` with a comment line that tells later whether the program has written just this text. It holds `note`, which
/// is free of line breaks. The line comes first, or behind a "#!" line.
std::string signed_text(const std::string& body, const std::string& note);

/// The note of a signed text. Empty for any other text, and when a single byte has been changed since.
std::optional<std::string> note_in(const std::string& text);

}  // namespace quorvel
