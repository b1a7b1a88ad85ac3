#include "platform/system.h"
#include "platform/windows/registry.h"
#include "platform/windows/wide.h"
#include "text/failure.h"

namespace quorvel {
namespace {

void require(LSTATUS result) {
  if (result != ERROR_SUCCESS) throw Failure(error_text(static_cast<DWORD>(result)));
}

/// Settings as values of one key of the user's part of the registry, which the first value written makes.
class RegistryStore : public KeyValueStore {
 public:
  explicit RegistryStore(std::string key) : key_(std::move(key)) {}

  std::optional<std::string> trouble() const override { return {}; }
  std::optional<std::string> read_string(const std::string& name) const override {
    return registry::read_string(HKEY_CURRENT_USER, key_, name);
  }
  std::optional<std::uint32_t> read_number(const std::string& name) const override {
    return registry::read_number(HKEY_CURRENT_USER, key_, name);
  }
  void write(const std::vector<Named>& values) override {
    for (const auto& [name, value] : values) {
      const auto* const text = std::get_if<std::string>(&value);
      require(text != nullptr ? registry::write_string(HKEY_CURRENT_USER, key_, name, *text)
                              : registry::write_number(HKEY_CURRENT_USER, key_, name, std::get<std::uint32_t>(value)));
    }
  }
  void erase_all() override {
    const LSTATUS result = RegDeleteTreeW(HKEY_CURRENT_USER, to_utf16_or_marks(key_).c_str());
    if (result != ERROR_FILE_NOT_FOUND) require(result);
  }

 private:
  const std::string key_;
};

}  // namespace

std::unique_ptr<KeyValueStore> system_key_values(Files&, const std::string& name) {
  return std::make_unique<RegistryStore>("SOFTWARE\\" + name);
}

}  // namespace quorvel
