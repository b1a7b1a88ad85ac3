#pragma once

#include <string>
#include <string_view>

namespace quorvel {

/// How the names begin that files have until they are whole.
inline constexpr std::string_view temporary_prefix = ".quorvel-";

/// Six letters and digits, at random.
std::string random_letters();

/// A name for a file that is not whole yet; most likely no other file has it.
inline std::string temporary_name() {
  return std::string(temporary_prefix) + random_letters();
}

}  // namespace quorvel
