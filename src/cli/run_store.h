#pragma once

#include <map>
#include <optional>
#include <string>

#include "platform/key_value_store.h"

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
    return text != nullptr ? *text : erased_ ? std::nullopt : base_.read_string(name);
  }
  std::optional<std::uint32_t> read_number(const std::string& name) const override {
    const auto* const number = replacement<std::uint32_t>(name);
    return number != nullptr ? *number : erased_ ? std::nullopt : base_.read_number(name);
  }
  void write(const std::vector<Named>& values) override { keep_base_ ? replace(values) : base_.write(values); }
  void erase_all() override {
    if (!keep_base_) base_.erase_all();
    replaced_.clear();
    erased_ = keep_base_;
  }

 private:
  template <typename T>
  const T* replacement(const std::string& name) const {
    const auto found = replaced_.find(name);
    return found == replaced_.end() ? nullptr : std::get_if<T>(&found->second);
  }

  KeyValueStore& base_;
  bool keep_base_;
  bool erased_ = false;  // as far as this run can see
  std::map<std::string, Value> replaced_;
};

}  // namespace quorvel::cli
