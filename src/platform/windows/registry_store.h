#pragma once

#include <string>
#include <utility>

#include "platform/key_value_store.h"

namespace quorvel {

/// Settings as values of one key of the user's part of the registry.
class RegistryStore : public KeyValueStore {
 public:
  /// `key`: "SOFTWARE\" and the program's name. It is made by the first value written.
  explicit RegistryStore(std::string key) : key_(std::move(key)) {}

  std::optional<std::string> trouble() const override { return {}; }
  std::optional<std::string> read_string(const std::string& name) const override;
  std::optional<std::uint32_t> read_number(const std::string& name) const override;
  void write(const std::vector<Named>& values) override;
  void erase_all() override;

 private:
  const std::string key_;
};

}  // namespace quorvel
