#pragma once

#include <string>
#include <string_view>

namespace quorvel {

/// A text whose order, byte by byte, is the one in which people sort `text`: without regard to case, and numbers by
/// their value, so that "2" comes before "10". Only for comparing with other such texts.
std::string natural_key(std::string_view text);

}  // namespace quorvel
