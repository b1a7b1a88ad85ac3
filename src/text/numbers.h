#pragma once

#include <cstdint>
#include <string_view>

namespace quorvel {

/// A whole decimal number, with a sign and with spaces around it if need be.
/// Throws Failure when the text is anything else or does not fit 32 bits.
std::int32_t to_number(std::string_view text);

/// The value of the digits that `text` starts with, spaces before them skipped; 0 when there are none.
/// Stops growing at 1,000,000, far above every port and status code.
int leading_number(std::string_view text);

}  // namespace quorvel
