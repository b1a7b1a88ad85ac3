#pragma once

#include <string>
#include <string_view>

namespace quorvel {

/// Every character in its lower-case form, one for one (Unicode's simple mapping); stray bytes stay.
std::string lower_case(std::string_view text);

}  // namespace quorvel
