#pragma once

#include <string>
#include <string_view>

namespace quorvel {

/// The bytes as an address writes them: ASCII letters and digits as they are, every other byte as "%" and its number.
std::string percent_encoded(std::string_view bytes);

/// The same with "+" for a blank, as the query of an address has it.
std::string query_encoded(std::string_view bytes);

}  // namespace quorvel
