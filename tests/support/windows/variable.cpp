#include "variable.h"

#include <windows.h>

#include "platform/windows/wide.h"

namespace quorvel::testing {

std::optional<std::string> Variable::get(const std::string& name) {
  const std::wstring wide = *to_utf16(name);
  const DWORD size = GetEnvironmentVariableW(wide.c_str(), nullptr, 0);
  if (size == 0) return {};
  std::wstring value(size, L'\0');
  value.resize(GetEnvironmentVariableW(wide.c_str(), value.data(), size));
  return to_utf8(value);
}

void Variable::set(const std::string& name, const std::optional<std::string>& value) {
  SetEnvironmentVariableW(to_utf16(name)->c_str(), value ? to_utf16_or_marks(*value).c_str() : nullptr);
}

}  // namespace quorvel::testing
