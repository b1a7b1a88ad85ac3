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

void RegistryStore::write_string(const std::string& name, const std::string& text) {
  require(registry::write_string(HKEY_CURRENT_USER, key_, name, text));
}

void RegistryStore::write_number(const std::string& name, std::uint32_t number) {
  require(registry::write_number(HKEY_CURRENT_USER, key_, name, number));
}

void RegistryStore::erase_all() {
  const LSTATUS result = RegDeleteTreeW(HKEY_CURRENT_USER, to_utf16_or_marks(key_).c_str());
  if (result != ERROR_FILE_NOT_FOUND) require(result);
}

}  // namespace quorvel
