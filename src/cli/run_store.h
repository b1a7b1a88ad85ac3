#pragma once

#include <map>
#include <optional>
#include <string>

#include "platform/key_value_store.h"
#include "text/failure.h"

namespace quorvel::cli {

/// The user's settings with some of them replaced for one run.
class RunStore : public KeyValueStore {
 public:
  /// What is written goes to `base`, unless it is to be kept from any change; then it lasts for the run.
  RunStore(KeyValueStore& base, bool keep_base) : base_(base), keep_base_(keep_base) {}

  void replace(const std::vector<Named>& values) {
    for (const auto& [name, value] : values) replaced_[name] = value;
  }

  std::optional<std::string> trouble() const override { return base_.trouble(); }
  std::optional<std::string> read_string(const std::string& name) const override {
    const auto* const text = replacement<std::string>(name);
    return text != nullptr ? *text : base_.read_string(name);
  }
  std::optional<std::uint32_t> read_number(const std::string& name) const override {
    const auto* const number = replacement<std::uint32_t>(name);
    return number != nullptr ? *number : base_.read_number(name);
  }
  void write(const std::vector<Named>& values) override { keep_base_ ? replace(values) : base_.write(values); }
  void erase_all() override { throw Failure("A run does not erase the settings"); }

 private:
  template <typename T>
  const T* replacement(const std::string& name) const {
    const auto found = replaced_.find(name);
    return found == replaced_.end() ? nullptr : std::get_if<T>(&found->second);
  }

  KeyValueStore& base_;
  bool keep_base_;
  std::map<std::string, Value> replaced_;
};

}  // namespace quorvel::cli
