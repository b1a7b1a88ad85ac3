#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/files.h"

namespace quorvel {

/// What a file was, its size and its time of change, for a later run; as a text, for not every program keeps so large
/// numbers.
std::string stamp_text(const FileStamp& stamp);

/// Empty for what is no such text.
std::optional<FileStamp> stamp_in(std::string_view text);

}  // namespace quorvel
