#include "platform/windows/registry_store.h"

#include "platform/windows/registry.h"
#include "platform/windows/wide.h"
#include "text/failure.h"

namespace quorvel {
namespace {

void require(LSTATUS result) {
  if (result != ERROR_SUCCESS) throw Failure(error_text(static_cast<DWORD>(result)));
}

}  // namespace

std::optional<std::string> RegistryStore::read_string(const std::string& name) const {
  return registry::read_string(HKEY_CURRENT_USER, key_, name);
}

std::optional<std::uint32_t> RegistryStore::read_number(const std::string& name) const {
  return registry::read_number(HKEY_CURRENT_USER, key_, name);
}

void RegistryStore::write(const std::vector<Named>& values) {
  for (const auto& [name, value] : values) {
    const auto* const text = std::get_if<std::string>(&value);
    require(text != nullptr ? registry::write_string(HKEY_CURRENT_USER, key_, name, *text)
                            : registry::write_number(HKEY_CURRENT_USER, key_, name, std::get<std::uint32_t>(value)));
  }
}

void RegistryStore::erase_all() {
  const LSTATUS result = RegDeleteTreeW(HKEY_CURRENT_USER, to_utf16_or_marks(key_).c_str());
  if (result != ERROR_FILE_NOT_FOUND) require(result);
}

}  // namespace quorvel
