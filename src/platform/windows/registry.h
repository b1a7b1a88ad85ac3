#pragma once

#include <windows.h>

#include <cstdint>
#include <optional>
#include <string>

/// Values of the registry, below any of its hives. The empty name is a key's unnamed value.
namespace quorvel::registry {

/// Up to its first NUL. Empty when the key or the value is missing or the value is no string.
std::optional<std::string> read_string(HKEY hive, const std::string& key, const std::string& name);
/// Empty when the key or the value is missing or the value is no 32-bit number.
std::optional<std::uint32_t> read_number(HKEY hive, const std::string& key, const std::string& name);

/// Make the key when it is missing. The answer is the system's error code, 0 on success. The text goes without a
/// terminating NUL, up to its first NUL.
LSTATUS write_string(HKEY hive, const std::string& key, const std::string& name, const std::string& text);
LSTATUS write_number(HKEY hive, const std::string& key, const std::string& name, std::uint32_t number);

}  // namespace quorvel::registry
