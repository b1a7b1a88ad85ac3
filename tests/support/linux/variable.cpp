#include "variable.h"

#include <cstdlib>

namespace quorvel::testing {

std::optional<std::string> Variable::get(const std::string& name) {
  const char* const value = std::getenv(name.c_str());
  return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
}

void Variable::set(const std::string& name, const std::optional<std::string>& value) {
  value ? setenv(name.c_str(), value->c_str(), 1) : unsetenv(name.c_str());
}

}  // namespace quorvel::testing
